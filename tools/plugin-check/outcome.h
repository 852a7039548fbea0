#ifndef ZEL_PLUGINCHECK_OUTCOME_H
#define ZEL_PLUGINCHECK_OUTCOME_H

#include <string>

namespace zel::check {

/// How long a case, and what is done between two, may take if it is not told otherwise.
constexpr unsigned mostSeconds = 180;

/// What a check has found so far. It lies in memory that the child shares with the program, so that
/// it is known up to the moment at which a plug-in brings the child down.
struct Outcome {
    int cases = 0;
    int failures = 0;
    bool finished = false;
    char doing[300] = "";   ///< the case in hand
    char failure[600] = ""; ///< the first that failed
    char note[300] = "";

    bool held() const { return failures == 0; }
    bool applicable() const { return cases > 0 || failures > 0; }
};

/// Ends a case that does not hold.
struct Failed {
    std::string why;
};

void require(bool condition, const std::string& why);

/// Counts the cases of a check.
class Tally {
public:
    explicit Tally(Outcome& outcome) : outcome_(outcome) {}

    /// Runs a case, which throws Failed if it does not hold. A report of an error fails it too: a
    /// client with the handler of the library's choice would have ended there. A case that takes
    /// longer than `seconds` ends the process.
    template <typename Action>
    void run(const std::string& title, const Action& action, unsigned seconds = mostSeconds) {
        begin(title, seconds);
        try {
            action();
            end();
        } catch (const Failed& failed) {
            fail(failed.why);
        }
    }

    /// Words beside the result: why nothing applied, or how well it held.
    void note(const std::string& text);

private:
    void begin(const std::string& title, unsigned seconds);
    void end();
    void fail(const std::string& why);

    Outcome& outcome_;
};

/// Notes the case that was in hand as the one that failed.
void failCaseInHand(Outcome& outcome, const std::string& why);

/// Takes over the library's reports; warnings are dropped.
void watchReports();

} // namespace zel::check

#endif
