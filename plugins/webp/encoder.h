#ifndef ZELWEBP_ENCODER_H
#define ZELWEBP_ENCODER_H

#include <zel/zelError.h>

#include <cstdint>
#include <utility>
#include <webp/encode.h>
#include <webp/mux_types.h>

namespace zelwebp {

struct Options {
    bool lossless = true;
    int quality = 75;
    int effort = 4;
};

/// An image as libwebp encoded it.
struct EncodedImage {
    EncodedImage() { WebPMemoryWriterInit(&output); }
    EncodedImage(EncodedImage&& other) noexcept
        : output(std::exchange(other.output, {})), duration(other.duration) {}
    EncodedImage& operator=(EncodedImage&&) = delete;
    ~EncodedImage() { WebPMemoryWriterClear(&output); }

    WebPData data() const { return {output.mem, output.size}; }

    WebPMemoryWriter output;
    int duration = 0; ///< in milliseconds, in an animation
};

/// Collects the rows of an image, which libwebp encodes at once.
class Encoder {
public:
    Encoder() = default;
    ~Encoder() { WebPPictureFree(&picture_); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    zelStatus begin(int width, int height, int channels);
    void addRow(const std::uint8_t* row);
    /// Encodes the image. One that libwebp refuses draws a warning, and zelWRITEFAILED; `name` is
    /// for that.
    zelStatus encode(const char* name, const Options& options, EncodedImage& image);

private:
    WebPPicture picture_{};
    int channels_ = 0;
    int row_ = 0;
};

} // namespace zelwebp

#endif
