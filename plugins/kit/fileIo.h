#ifndef ZELKIT_FILEIO_H
#define ZELKIT_FILEIO_H

#include <zel/zelError.h>

#include <cstddef>
#include <cstdint>

namespace zelkit {

/// Owns a file descriptor and closes it at its end. Any negative number counts as none.
class Descriptor {
public:
    Descriptor() = default;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    /// Gives the descriptor away, open.
    int release();
    /// Closes the descriptor in hand and takes `fd`.
    void reset(int fd = -1);

private:
    int fd_ = -1;
};

/// The status of a system call that failed just now: `main`, kind 1, with `errno`.
zelStatus systemFailure(zelMainStatus main);

/// The status of a lack of memory.
zelStatus noMemory();

/// Reads exactly `bytes` bytes from `offset` on; the descriptor's position stays.
/// Fails with zelPREMATUREEOF if the file ends before, with zelREADFAILED and errno otherwise.
zelStatus readExact(int fd, void* data, std::size_t bytes, std::int64_t offset);

/// Reads up to `bytes` bytes from `offset` on; `got` is below `bytes` only at the file's end.
/// Fails with zelREADFAILED and errno.
zelStatus readSome(int fd, void* data, std::size_t bytes, std::int64_t offset, std::size_t& got);

/// Writes exactly `bytes` bytes from `offset` on; the descriptor's position stays.
/// Fails with zelWRITEFAILED and errno.
zelStatus writeExact(int fd, const void* data, std::size_t bytes, std::int64_t offset);

/// Gives the file's length. Fails with zelSTATFAILED and errno.
zelStatus getFileLength(int fd, std::int64_t& bytes);

/// Cuts or extends the file, with bytes of 0. Fails with zelWRITEFAILED and errno.
zelStatus setFileLength(int fd, std::int64_t bytes);

} // namespace zelkit

#endif
