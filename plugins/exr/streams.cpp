#include "streams.h"

#include <OpenEXR/IexBaseExc.h>
#include <algorithm>
#include <cstring>

namespace zelexr {

namespace {

constexpr std::uint64_t farthest = INT64_MAX / 2;

} // namespace

void FdInput::readAt(char* data, std::size_t count, std::size_t& got) {
    got = 0;
    if (position_ <= farthest)
        status_ = zelkit::readSome(fd_, data, count, static_cast<std::int64_t>(position_), got);
    if (status_ != zelOKAY)
        throw Iex::InputExc("The file cannot be read.");
}

// What of the bytes the buffer has.
std::size_t FdInput::buffered(char* data, std::size_t count) {
    if (position_ < bufferStart_ || position_ >= bufferStart_ + bufferBytes_)
        return 0;
    const auto at = static_cast<std::size_t>(position_ - bufferStart_);
    const std::size_t bytes = std::min(count, bufferBytes_ - at);
    std::memcpy(data, buffer_.data() + at, bytes);
    return bytes;
}

bool FdInput::read(char* data, int count) {
    if (count < 0)
        throw Iex::InputExc("A block has a negative size.");
    auto left = static_cast<std::size_t>(count);
    while (left > 0) {
        std::size_t got = buffered(data, left);
        if (got == 0 && left < buffer_.size()) {
            bufferStart_ = position_;
            bufferBytes_ = 0;
            readAt(buffer_.data(), buffer_.size(), bufferBytes_);
            got = buffered(data, left);
        } else if (got == 0) {
            readAt(data, left, got);
        }
        if (got == 0) {
            status_ = zelStatusEncode(zelPREMATUREEOF);
            throw Iex::InputExc("Early end of file.");
        }
        data += got;
        left -= got;
        position_ += got;
    }
    // The answer tells whether there is more, which nobody needs to know.
    return true;
}

void FdOutput::write(const char* data, int count) {
    const auto bytes = static_cast<std::size_t>(count);
    status_ = zelkit::writeExact(fd_, data, bytes, static_cast<std::int64_t>(position_));
    if (status_ != zelOKAY)
        throw Iex::ErrnoExc("The file cannot be written.");
    position_ += bytes;
}

} // namespace zelexr
