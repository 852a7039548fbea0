#include "kit/fileIo.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zelkit {

int Descriptor::release() {
    return std::exchange(fd_, -1);
}

void Descriptor::reset(int fd) {
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = fd;
}

zelStatus systemFailure(zelMainStatus main) {
    return zelStatusEncode(main, 1, errno);
}

zelStatus noMemory() {
    return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
}

zelStatus readSome(int fd, void* data, std::size_t bytes, std::int64_t offset, std::size_t& got) {
    got = 0;
    while (got < bytes) {
        const ssize_t count = ::pread(fd, static_cast<char*>(data) + got, bytes - got,
                                      offset + static_cast<std::int64_t>(got));
        if (count == 0)
            return zelOKAY;
        if (count > 0)
            got += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            return systemFailure(zelREADFAILED);
    }
    return zelOKAY;
}

zelStatus readExact(int fd, void* data, std::size_t bytes, std::int64_t offset) {
    std::size_t got = 0;
    const zelStatus status = readSome(fd, data, bytes, offset, got);
    if (status == zelOKAY && got < bytes)
        return zelStatusEncode(zelPREMATUREEOF);
    return status;
}

zelStatus writeExact(int fd, const void* data, std::size_t bytes, std::int64_t offset) {
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t count = ::pwrite(fd, static_cast<const char*>(data) + done, bytes - done,
                                       offset + static_cast<std::int64_t>(done));
        if (count >= 0)
            done += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            return systemFailure(zelWRITEFAILED);
    }
    return zelOKAY;
}

zelStatus getFileLength(int fd, std::int64_t& bytes) {
    struct stat info = {};
    if (::fstat(fd, &info) != 0)
        return systemFailure(zelSTATFAILED);
    bytes = info.st_size;
    return zelOKAY;
}

zelStatus setFileLength(int fd, std::int64_t bytes) {
    while (::ftruncate(fd, bytes) != 0)
        if (errno != EINTR)
            return systemFailure(zelWRITEFAILED);
    return zelOKAY;
}

} // namespace zelkit
