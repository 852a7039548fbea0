#ifndef ZEL_TOOL_PROGRESS_H
#define ZEL_TOOL_PROGRESS_H

#include <chrono>
#include <string>

namespace zel::tool {

/// A line on the terminal that says how far a long work has come. It appears once the work has
/// taken a second, is renewed a few times a second, and is gone when the object is. Nothing is
/// written if standard error is no terminal.
class Progress {
public:
    /// `total` is the amount of all steps together.
    Progress(std::string name, double total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void advance(double amount);

private:
    using Clock = std::chrono::steady_clock;

    std::string name;
    double total;
    double done = 0;
    bool onTerminal;
    Clock::time_point next;
};

/// Wipes the line, if one stands there, so that a message can take its place.
void wipeProgress();

} // namespace zel::tool

#endif
