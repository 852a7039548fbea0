#include "codec.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <cstring>

namespace zelpng {

namespace {

constexpr std::size_t bufferBytes = 64 * 1024;

// A damaged file may draw a warning from each of its chunks.
constexpr int mostReports = 8;

} // namespace

Codec::Codec(int fd, const char* name, bool quiet)
    : fd_(fd), name_(name), reportsLeft_(quiet ? 0 : mostReports) {
    if (zelkit::getFileLength(fd, length_) == zelOKAY)
        buffer_.allocate(bufferBytes);
}

bool Codec::setInput(std::span<const std::uint8_t> bytes) {
    if (!buffer_.allocate(bytes.size()))
        return false;
    std::ranges::copy(bytes, buffer_.data());
    held_ = bytes.size();
    position_ = length_;
    hasInput_ = true;
    return true;
}

void Codec::report(const char* message) {
    if (reportsLeft_ > 0) {
        zelError(zelSevWarning, "%.100s: libpng: %.100s", name_.c_str(), message);
        reportsLeft_--;
    }
}

zelStatus Codec::failure() {
    const zelStatus status = status_ != zelOKAY ? status_ : zelStatusEncode(zelCORRUPTED);
    status_ = zelOKAY;
    return status;
}

void Codec::onError(png_structp png, png_const_charp message) {
    Codec& codec = *static_cast<Codec*>(png_get_error_ptr(png));
    codec.report(message);
    codec.guard_.jump();
}

void Codec::onWarning(png_structp png, png_const_charp message) {
    static_cast<Codec*>(png_get_error_ptr(png))->report(message);
}

zelStatus Codec::fill() {
    const zelStatus status =
        zelkit::readSome(fd_, buffer_.data(), buffer_.size(), position_, held_);
    at_ = 0;
    position_ += static_cast<std::int64_t>(held_);
    if (status == zelOKAY && held_ == 0)
        return zelStatusEncode(zelPREMATUREEOF);
    return status;
}

void Codec::read(png_structp png, png_bytep data, std::size_t bytes) {
    Codec& codec = *static_cast<Codec*>(png_get_io_ptr(png));
    while (bytes > 0) {
        if (codec.at_ == codec.held_) {
            codec.status_ = codec.fill();
            if (codec.status_ != zelOKAY)
                png_error(png, "the file cannot be read, or ends too early");
        }
        const std::size_t count = std::min(bytes, codec.held_ - codec.at_);
        std::memcpy(data, codec.buffer_.data() + codec.at_, count);
        codec.at_ += count;
        data += count;
        bytes -= count;
    }
}

zelStatus Codec::writeOut() {
    const zelStatus status = zelkit::writeExact(fd_, buffer_.data(), at_, position_);
    position_ += static_cast<std::int64_t>(at_);
    at_ = 0;
    return status;
}

void Codec::write(png_structp png, png_bytep data, std::size_t bytes) {
    Codec& codec = *static_cast<Codec*>(png_get_io_ptr(png));
    while (bytes > 0) {
        if (codec.at_ == codec.buffer_.size()) {
            codec.status_ = codec.writeOut();
            if (codec.status_ != zelOKAY)
                png_error(png, "the file cannot be written");
        }
        const std::size_t count = std::min(bytes, codec.buffer_.size() - codec.at_);
        std::memcpy(codec.buffer_.data() + codec.at_, data, count);
        codec.at_ += count;
        data += count;
        bytes -= count;
    }
}

// The buffer is written when it is full and at the end.
void Codec::flush(png_structp) {}

} // namespace zelpng
