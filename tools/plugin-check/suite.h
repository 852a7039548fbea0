#ifndef ZEL_PLUGINCHECK_SUITE_H
#define ZEL_PLUGINCHECK_SUITE_H

#include "child.h"
#include "outcome.h"
#include "subject.h"

#include <string>
#include <vector>

namespace zel::check {

/// What came of a check.
struct Row {
    std::string name;
    Outcome outcome;

    /// "pass", "FAIL", or "n/a" where no case applied.
    const char* verdict() const;
};

/// The names of all checks, in their order.
std::vector<std::string> checkNames();

/// Puts the plug-in through the checks that the options name, each in a child process that stands
/// in the current directory. Registration and capabilities, on which the others rest, always go
/// first; where the first fails, it is the only one. `shared.kinds` has what can be created.
std::vector<Row> runChecks(const Options& options, Shared& shared);

/// Whether nothing failed.
bool allHeld(const std::vector<Row>& rows);

} // namespace zel::check

#endif
