#ifndef ZEL_TESTS_SUPPORT_CHILD_PROCESS_H
#define ZEL_TESTS_SUPPORT_CHILD_PROCESS_H

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zel::test {

/// What a scenario that ran in a child process brought back.
struct ChildResult {
    /// The exit status; 128 and the signal's number if a signal ended the child.
    int status = -1;
    /// What the scenario returned. Empty if the child ended before that.
    std::string text;
    /// Each error report, in order, as "<severity> <message>". They arrive even if the child dies.
    std::vector<std::string> reports;
};

/// Returns the text that the test looks at. It runs in a child process, where GoogleTest's
/// assertions have no effect.
using Scenario = std::function<std::string()>;

enum class Handler {
    /// Records every report and returns.
    recording,
    /// The library's own choice; nothing is recorded.
    builtIn
};

/// Runs a scenario in a child process, for what can happen once in a process only.
ChildResult runInChild(const Scenario& scenario, Handler handler = Handler::recording);

/// The same with ZEL_DATABASE naming this file, which need not exist.
ChildResult runWithDatabaseFile(const std::string& path, const Scenario& scenario,
                                Handler handler = Handler::recording);

/// The same with a database file `database` of this text and other files beside it, by name. The
/// child runs in their directory.
ChildResult runWithDatabase(std::string_view text, const Scenario& scenario,
                            Handler handler = Handler::recording,
                            const std::map<std::string, std::string>& others = {});

} // namespace zel::test

#endif
