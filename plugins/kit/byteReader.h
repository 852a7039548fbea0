#ifndef ZELKIT_BYTEREADER_H
#define ZELKIT_BYTEREADER_H

#include <zel/zelError.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace zelkit {

/// Reads a file byte by byte from an offset on, without moving the descriptor's position.
class ByteReader {
public:
    ByteReader(int fd, std::int64_t offset) : fd_(fd), bufferOffset_(offset) {}

    /// The next byte, or -1 at the file's end and after a failure; `peek` stays in front of it.
    int peek() { return at_ < filled_ || refill() ? buffer_[at_] : -1; }
    int next() {
        const int byte = peek();
        at_ += byte >= 0;
        return byte;
    }

    /// The next `bytes` bytes. Fails as `endStatus` says.
    zelStatus read(std::uint8_t* data, std::size_t bytes);

    /// Where in the file the next byte lies.
    std::int64_t position() const { return bufferOffset_ + static_cast<std::int64_t>(at_); }

    /// What a -1 means: zelPREMATUREEOF, or zelREADFAILED with errno.
    zelStatus endStatus() const;

private:
    bool refill();

    int fd_;
    std::int64_t bufferOffset_;
    std::size_t at_ = 0;
    std::size_t filled_ = 0;
    zelStatus failure_ = zelOKAY;
    std::array<unsigned char, 4096> buffer_; // filled by `refill`
};

} // namespace zelkit

#endif
