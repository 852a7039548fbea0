#ifndef ZEL_TOOL_SAFEOUTPUT_H
#define ZEL_TOOL_SAFEOUTPUT_H

#include <sys/types.h>

#include <optional>
#include <string>

namespace zel::tool {

/// A file that is written under a temporary name beside its own and takes its place at the end.
/// Until then the old file, if there is one, is untouched; whatever ends the work before, be it a
/// failure or an interrupt, leaves nothing behind. Failures are thrown as Failure.
///
/// A link is followed: what it points to is replaced, and the link stays. One object at a time.
class SafeOutput {
public:
    /// `file` is a plain path, `shownName` the name for messages.
    SafeOutput(const std::string& file, std::string shownName);
    ~SafeOutput();
    SafeOutput(const SafeOutput&) = delete;
    SafeOutput& operator=(const SafeOutput&) = delete;

    /// The file to write, which exists and is empty. Its name ends as the final one does.
    const std::string& temporaryFile() const { return temporary; }
    /// The directory that it lies in.
    const std::string& folder() const { return directory; }

    /// Fills it with a copy of the file `source`.
    void copyFrom(const std::string& source) const;

    /// Brings the file to the disk and gives it its name and the permissions of the old file.
    void commit();

private:
    struct Former {
        mode_t mode;
        uid_t owner;
        gid_t group;
    };

    void inspectFormer();
    void makeTemporary();
    void settlePermissions(int fd) const;
    [[noreturn]] void fail(const std::string& what, int error) const;

    std::string shownName;
    std::string target;
    std::string directory;
    std::string temporary;
    std::optional<Former> former;
};

} // namespace zel::tool

#endif
