#ifndef ZEL_TOOL_MESSAGES_H
#define ZEL_TOOL_MESSAGES_H

#include <string>
#include <utility>
#include <vector>

namespace zel::tool {

/// Ends a command: what went wrong with which file. The main program prints it and exits with 1.
struct Failure {
    std::string name;
    std::string reason;
};

/// Ends a command that was called wrongly. The main program prints it and exits with 2.
struct UsageError {
    std::string reason;
};

/// Lines on standard error: "zel: NAME: TEXT". An empty name leaves out its part. A progress line
/// on the terminal is wiped first.
void printMessage(const std::string& name, const std::string& text);
void printFailure(const Failure& failure);

/// The name that the library's reports belong to while the object lives. Reports call the file by
/// its path, which is left out of them: `path`, or the one in the name.
class WorkingOn {
public:
    explicit WorkingOn(std::string name, const std::string& path = {});
    ~WorkingOn();
    WorkingOn(const WorkingOn&) = delete;
    WorkingOn& operator=(const WorkingOn&) = delete;

private:
    std::pair<std::string, std::string> former;
};

/// Holds the library's warnings back while it lives, for an attempt that may be given up.
class HeldWarnings {
public:
    HeldWarnings();
    ~HeldWarnings();
    HeldWarnings(const HeldWarnings&) = delete;
    HeldWarnings& operator=(const HeldWarnings&) = delete;

    /// What was held back so far, each with the name that it belongs to.
    std::vector<std::pair<std::string, std::string>> take();

private:
    std::vector<std::pair<std::string, std::string>> warnings;
};

/// Prints a warning, unless it was printed before.
void printWarning(const std::string& name, const std::string& text);

/// Takes over the library's reports from now on: warnings are printed at once, each text once for a
/// name, and errors are kept until `takeReportedErrors`.
void collectReports();

/// The errors that the library reported since the last call, a line break between two; empty if
/// there were none.
std::string takeReportedErrors();

} // namespace zel::tool

#endif
