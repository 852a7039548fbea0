#ifndef ZELWEBP_ENCODER_H
#define ZELWEBP_ENCODER_H

#include <zel/zelError.h>

#include <cstdint>
#include <span>
#include <vector>
#include <webp/encode.h>

namespace zelwebp {

struct Options {
    bool lossless = true;
    int quality = 75;
    int effort = 4;
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
    /// Encodes the image and writes the file, with the profile and the EXIF block that are not
    /// empty. An image that libwebp refuses draws a warning, and zelWRITEFAILED; `name` is for
    /// that.
    zelStatus write(int fd, const char* name, const Options& options,
                    std::span<const std::uint8_t> iccProfile, std::span<const std::uint8_t> exif);

private:
    zelStatus encode(const char* name, const Options& options, WebPMemoryWriter& output);

    WebPPicture picture_{};
    int channels_ = 0;
    int row_ = 0;
};

} // namespace zelwebp

#endif
