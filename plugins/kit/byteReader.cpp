#include "kit/byteReader.h"

#include "kit/fileIo.h"

#include <algorithm>

namespace zelkit {

bool ByteReader::refill() {
    if (failure_ != zelOKAY)
        return false;
    bufferOffset_ = position();
    at_ = 0;
    failure_ = zelkit::readSome(fd_, buffer_.data(), buffer_.size(), bufferOffset_, filled_);
    return filled_ > 0;
}

zelStatus ByteReader::endStatus() const {
    return failure_ == zelOKAY ? zelStatusEncode(zelPREMATUREEOF) : failure_;
}

zelStatus ByteReader::read(std::uint8_t* data, std::size_t bytes) {
    while (bytes > 0) {
        if (peek() < 0)
            return endStatus();
        const std::size_t step = std::min(bytes, filled_ - at_);
        std::copy_n(buffer_.data() + at_, step, data);
        at_ += step;
        data += step;
        bytes -= step;
    }
    return zelOKAY;
}

} // namespace zelkit
