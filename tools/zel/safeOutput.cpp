#include "safeOutput.h"

#include "interrupts.h"
#include "messages.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

namespace zel::tool {
namespace {

constexpr size_t kKeptNameEnd = 64;
constexpr int kMaxLinks = 40;
constexpr size_t kCopyBytes = 256 * 1024;

/// A descriptor that is closed at the end of its block.
struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
};

/// Where a chain of links ends, whether something is there or not.
std::filesystem::path followLinks(std::filesystem::path path) {
    std::error_code error;
    for (int i = 0; i < kMaxLinks && std::filesystem::is_symlink(path, error); ++i) {
        const std::filesystem::path next = std::filesystem::read_symlink(path, error);
        if (error) {
            break;
        }
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    return path;
}

mode_t defaultMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

SafeOutput::SafeOutput(const std::string& file, std::string name) : shownName(std::move(name)) {
    const std::filesystem::path path = followLinks(file);
    target = path.string();
    directory = path.parent_path().empty() ? "." : path.parent_path().string();
    inspectFormer();
    makeTemporary();
}

SafeOutput::~SafeOutput() {
    if (!temporary.empty()) {
        unlink(temporary.c_str());
        removeOnInterrupt("");
    }
}

void SafeOutput::fail(const std::string& what, int error) const {
    throw Failure{shownName, what + (what.empty() ? "" : ": ") + std::strerror(error)};
}

void SafeOutput::inspectFormer() {
    struct stat info {};
    if (stat(target.c_str(), &info) != 0) {
        if (errno != ENOENT) {
            fail("", errno);
        }
        return;
    }
    if (!S_ISREG(info.st_mode)) {
        throw Failure{shownName, S_ISDIR(info.st_mode) ? "is a directory" : "is no regular file"};
    }
    // Replacing needs leave from the directory only, but a file that may not be written is not to
    // be replaced either.
    if (access(target.c_str(), W_OK) != 0) {
        fail("", errno);
    }
    former = Former{info.st_mode & 07777, info.st_uid, info.st_gid};
}

void SafeOutput::makeTemporary() {
    std::string end = std::filesystem::path(target).filename().string();
    if (end.size() > kKeptNameEnd) {
        end.erase(0, end.size() - kKeptNameEnd);
    }
    std::string path = directory + "/.zel-XXXXXX-" + end;
    const InterruptsBlocked blocked;
    const Descriptor made{mkstemps(path.data(), static_cast<int>(end.size()) + 1)};
    if (made.fd < 0) {
        fail("cannot write in " + directory, errno);
    }
    temporary = path;
    if (!removeOnInterrupt(path)) {
        unlink(path.c_str());
        fail("", ENAMETOOLONG);
    }
}

void SafeOutput::settlePermissions(int fd) const {
    mode_t mode = defaultMode();
    if (former) {
        const bool owned = fchown(fd, former->owner, former->group) == 0;
        // Without the old owner, the bits that lend the owner's rights would lend ours.
        mode = former->mode & (owned ? 07777u : 0777u);
    }
    if (fchmod(fd, mode) != 0) {
        fail("", errno);
    }
}

// std::filesystem::copy_file calls a full disk an input/output error.
void SafeOutput::copyFrom(const std::string& source) const {
    const Descriptor from{open(source.c_str(), O_RDONLY | O_CLOEXEC)};
    if (from.fd < 0) {
        fail("", errno);
    }
    const Descriptor to{open(temporary.c_str(), O_WRONLY | O_CLOEXEC)};
    if (to.fd < 0) {
        fail("", errno);
    }
    std::vector<char> buffer(kCopyBytes);
    ssize_t got = 0;
    while ((got = ::read(from.fd, buffer.data(), buffer.size())) != 0) {
        if (got < 0 && errno != EINTR) {
            fail("", errno);
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t n = ::write(to.fd, buffer.data() + done, static_cast<size_t>(got - done));
            if (n < 0 && errno != EINTR) {
                fail("", errno);
            }
            done += n > 0 ? n : 0;
        }
    }
}

void SafeOutput::commit() {
    {
        Descriptor file{open(temporary.c_str(), O_RDWR | O_CLOEXEC)};
        if (file.fd < 0 || fsync(file.fd) != 0) {
            fail("", errno);
        }
        settlePermissions(file.fd);
        if (::close(std::exchange(file.fd, -1)) != 0) {
            fail("", errno);
        }
    }
    if (rename(temporary.c_str(), target.c_str()) != 0) {
        fail("", errno);
    }
    removeOnInterrupt("");
    temporary.clear();
    // The new file is in place; that its name outlives a power failure is more than can be
    // demanded of every file system.
    const Descriptor folder{open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (folder.fd >= 0) {
        fsync(folder.fd);
    }
}

} // namespace zel::tool
