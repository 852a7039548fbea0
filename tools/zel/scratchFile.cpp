#include "scratchFile.h"

#include "interrupts.h"
#include "messages.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace zel::tool {
namespace {

int openNameless(const std::string& directory) {
    const int fd = open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0) {
        return fd;
    }
    // Not every file system makes a file without a name.
    std::string path = directory + "/.zel-XXXXXX";
    const InterruptsBlocked blocked;
    const int named = mkstemp(path.data());
    if (named >= 0) {
        unlink(path.c_str());
    }
    return named;
}

} // namespace

ScratchFile::ScratchFile(std::string where, std::string name)
    : directory(std::move(where)), shownName(std::move(name)), fd(openNameless(directory)) {
    if (fd < 0) {
        fail(errno);
    }
}

ScratchFile::~ScratchFile() {
    if (fd >= 0) {
        ::close(fd);
    }
}

void ScratchFile::fail(int error) const {
    throw Failure{shownName, "scratch file in " + directory + ": " + std::strerror(error)};
}

void ScratchFile::write(std::span<const std::byte> bytes, std::uint64_t offset) {
    while (!bytes.empty()) {
        const ssize_t n = pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (n < 0 && errno != EINTR) {
            fail(errno);
        }
        const auto done = static_cast<size_t>(n > 0 ? n : 0);
        bytes = bytes.subspan(done);
        offset += done;
    }
}

void ScratchFile::read(std::span<std::byte> bytes, std::uint64_t offset) const {
    while (!bytes.empty()) {
        const ssize_t n = pread(fd, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (n == 0 || (n < 0 && errno != EINTR)) {
            fail(n == 0 ? EIO : errno);
        }
        const auto done = static_cast<size_t>(n > 0 ? n : 0);
        bytes = bytes.subspan(done);
        offset += done;
    }
}

} // namespace zel::tool
