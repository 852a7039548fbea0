#ifndef ZELPNM_BYTEREADER_H
#define ZELPNM_BYTEREADER_H

#include <zel/zelError.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace zelpnm {

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

/// White space as the format knows it, whatever the locale: blank, tab, newline, vertical tab, form
/// feed, carriage return.
inline bool isSpace(int byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

inline bool isDigit(int byte) {
    return byte >= '0' && byte <= '9';
}

/// Skips white space, and comments from a '#' to the end of the line.
void skipSpace(ByteReader& reader);

/// Reads the byte behind a number or a word of the header: white space, or a comment that stands in
/// for it. Fails with zelCORRUPTED if it is anything else.
zelStatus readSeparator(ByteReader& reader);

/// Skips white space and comments and reads a decimal number from 0 to `highest`.
/// Fails with zelPREMATUREEOF at the file's end and with zelCORRUPTED if there is no such number.
zelStatus readNumber(ByteReader& reader, int highest, int& number);

} // namespace zelpnm

#endif
