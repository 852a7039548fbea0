#include "stream.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zeljp2 {

namespace {

constexpr OPJ_SIZE_T bufferBytes = 64 * 1024;
constexpr auto failed = static_cast<OPJ_SIZE_T>(-1);
// A damaged file can draw one for every block.
constexpr int mostComplaints = 20;

} // namespace

opj_stream_t* Stream::make(bool forReading) {
    opj_stream_t* const stream = opj_stream_create(bufferBytes, forReading);
    if (!stream)
        return nullptr;
    reading_ = forReading;
    position_ = 0;
    opj_stream_set_user_data(stream, this, nullptr);
    opj_stream_set_user_data_length(stream, static_cast<OPJ_UINT64>(bytes_));
    opj_stream_set_read_function(stream, read);
    opj_stream_set_write_function(stream, write);
    opj_stream_set_skip_function(stream, skip);
    opj_stream_set_seek_function(stream, seek);
    return stream;
}

void Stream::listenTo(opj_codec_t* codec) {
    complaints_ = 0;
    opj_set_warning_handler(codec, report, this);
    opj_set_error_handler(codec, report, this);
}

zelStatus Stream::check(bool success, zelMainStatus otherwise) {
    const zelStatus status = std::exchange(status_, zelOKAY);
    if (success)
        return zelOKAY;
    return status != zelOKAY ? status : zelStatusEncode(otherwise);
}

OPJ_SIZE_T Stream::read(void* data, OPJ_SIZE_T count, void* self) {
    Stream& stream = *static_cast<Stream*>(self);
    const std::int64_t left = stream.bytes_ - stream.position_;
    const auto wanted = std::min(count, static_cast<OPJ_SIZE_T>(std::max<std::int64_t>(left, 0)));
    std::size_t got = 0;
    const zelStatus status =
        zelkit::readSome(stream.fd_, data, wanted, stream.offset_ + stream.position_, got);
    if (status != zelOKAY)
        stream.status_ = status;
    stream.position_ += static_cast<std::int64_t>(got);
    return got > 0 ? got : failed;
}

OPJ_SIZE_T Stream::write(void* data, OPJ_SIZE_T count, void* self) {
    Stream& stream = *static_cast<Stream*>(self);
    const zelStatus status =
        zelkit::writeExact(stream.fd_, data, count, stream.offset_ + stream.position_);
    if (status != zelOKAY) {
        stream.status_ = status;
        return failed;
    }
    stream.position_ += static_cast<std::int64_t>(count);
    stream.bytes_ = std::max(stream.bytes_, stream.position_);
    return count;
}

OPJ_OFF_T Stream::skip(OPJ_OFF_T count, void* self) {
    Stream& stream = *static_cast<Stream*>(self);
    std::int64_t target = 0;
    if (__builtin_add_overflow(stream.position_, count, &target) || target < 0)
        return -1;
    return seek(target, self) ? count : -1;
}

OPJ_BOOL Stream::seek(OPJ_OFF_T position, void* self) {
    Stream& stream = *static_cast<Stream*>(self);
    if (position < 0 || (stream.reading_ && position > stream.bytes_))
        return OPJ_FALSE;
    stream.position_ = position;
    return OPJ_TRUE;
}

void Stream::report(const char* message, void* self) {
    Stream& stream = *static_cast<Stream*>(self);
    if (++stream.complaints_ > mostComplaints)
        return;
    const auto length = static_cast<int>(std::min<std::size_t>(std::strcspn(message, "\n"), 300));
    zelError(zelSevWarning, "%s: %.*s", stream.name_.c_str(), length, message);
}

} // namespace zeljp2
