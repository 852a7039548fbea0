#ifndef ZEL_TOOL_SCRATCHFILE_H
#define ZEL_TOOL_SCRATCHFILE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zel::tool {

/// A file without a name, gone when the object is or the process ends. Failures are thrown as
/// Failure.
class ScratchFile {
public:
    /// `shownName` is the name for messages.
    ScratchFile(std::string directory, std::string shownName);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    void write(std::span<const std::byte> bytes, std::uint64_t offset);
    /// Reads what was written there before.
    void read(std::span<std::byte> bytes, std::uint64_t offset) const;

private:
    [[noreturn]] void fail(int error) const;

    std::string directory;
    std::string shownName;
    int fd;
};

} // namespace zel::tool

#endif
