#ifndef ZELEXR_STREAMS_H
#define ZELEXR_STREAMS_H

#include "kit/fileIo.h"

#include <OpenEXR/ImfIO.h>
#include <array>
#include <cstdint>

namespace zelexr {

/// Reads a descriptor for OpenEXR, at a position of its own. What fails is thrown through OpenEXR,
/// as it asks, and kept as a status.
class FdInput final : public Imf::IStream {
public:
    explicit FdInput(int fd) : IStream("image"), fd_(fd) {}

    bool read(char* data, int count) override;
    std::uint64_t tellg() override { return position_; }
    void seekg(std::uint64_t position) override { position_ = position; }

    zelStatus status() const { return status_; }
    void forgetFailure() { status_ = zelOKAY; }

private:
    std::size_t buffered(char* data, std::size_t count);
    void readAt(char* data, std::size_t count, std::size_t& got);

    int fd_;
    std::uint64_t position_ = 0;
    zelStatus status_ = zelOKAY;
    // Headers are read in pieces of a few bytes.
    std::array<char, 4096> buffer_;
    std::uint64_t bufferStart_ = 0;
    std::size_t bufferBytes_ = 0;
};

/// Writes a descriptor, likewise.
class FdOutput final : public Imf::OStream {
public:
    explicit FdOutput(int fd) : OStream("image"), fd_(fd) {}

    void write(const char* data, int count) override;
    std::uint64_t tellp() override { return position_; }
    void seekp(std::uint64_t position) override { position_ = position; }

    zelStatus status() const { return status_; }

private:
    int fd_;
    std::uint64_t position_ = 0;
    zelStatus status_ = zelOKAY;
};

} // namespace zelexr

#endif
