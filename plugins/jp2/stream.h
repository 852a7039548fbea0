#ifndef ZELJP2_STREAM_H
#define ZELJP2_STREAM_H

#include <zel/zelError.h>

#include <cstdint>
#include <memory>
#include <openjpeg.h>
#include <string>

namespace zeljp2 {

/// A codestream in a file, as OpenJPEG reads and writes it, and what it complains of. It must not
/// move while OpenJPEG uses it.
class Stream {
public:
    /// `bytes` is the codestream's length, which grows as it is written. `name` is the file's in
    /// warnings.
    Stream(int fd, std::int64_t offset, std::int64_t bytes, const char* name)
        : fd_(fd), offset_(offset), bytes_(bytes), name_(name) {}
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    /// Null if there is no memory.
    opj_stream_t* make(bool forReading);
    /// Has a codec report its warnings and errors as warnings.
    void listenTo(opj_codec_t* codec);

    /// zelOKAY if a call succeeded; else why reading or writing failed, or `otherwise`.
    zelStatus check(bool success, zelMainStatus otherwise);
    std::int64_t bytes() const { return bytes_; }

private:
    static OPJ_SIZE_T read(void* data, OPJ_SIZE_T count, void* self);
    static OPJ_SIZE_T write(void* data, OPJ_SIZE_T count, void* self);
    static OPJ_OFF_T skip(OPJ_OFF_T count, void* self);
    static OPJ_BOOL seek(OPJ_OFF_T position, void* self);
    static void report(const char* message, void* self);

    int fd_;
    std::int64_t offset_;
    std::int64_t bytes_;
    std::string name_;
    std::int64_t position_ = 0;
    bool reading_ = true;
    int complaints_ = 0;
    zelStatus status_ = zelOKAY;
};

struct DestroyStream {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct DestroyCodec {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct DestroyImage {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using StreamHandle = std::unique_ptr<opj_stream_t, DestroyStream>;
using CodecHandle = std::unique_ptr<opj_codec_t, DestroyCodec>;
using ImageHandle = std::unique_ptr<opj_image_t, DestroyImage>;

} // namespace zeljp2

#endif
