#ifndef ZELGIF_ENCODER_H
#define ZELGIF_ENCODER_H

#include "kit/fields.h"

#include <zel/zelColormap.h>

#include <array>
#include <cstdint>
#include <gif_lib.h>
#include <string>
#include <vector>

namespace zelgif {

/// Writes the images of a file one after the other, all of the screen's size.
class Encoder {
public:
    explicit Encoder(int fd) : fd_(fd) {}
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    struct Image {
        int width;
        int height;
        const zelColormap& palette; ///< of bytes
        bool isBits;                ///< all indexes are 0 or 1
        int delay;                  ///< in hundredths of a second
    };

    /// For the file's first image: what stands before it.
    zelStatus begin(const Image& first, const std::string* comment, int loopCount);
    zelStatus beginImage(const Image& image);
    /// zelBADPARAMS for an index that the palette lacks.
    zelStatus writeRow(const std::uint8_t* indexes);
    /// Writes the file's end. What was encoded is in the file then.
    zelStatus finish();

private:
    using Colors = std::vector<GifColorType>;
    static Colors colorsOf(const Image& image);
    void mapTransparent(const Image& image, int transparent);
    static int writeBytes(GifFileType* gif, const GifByteType* data, int bytes);
    int write(const std::uint8_t* data, int bytes);
    zelStatus statusOf(int result);

    int fd_;
    GifFileType* gif_ = nullptr;
    std::int64_t position_ = 0;
    std::vector<std::uint8_t> buffer_;
    zelStatus status_ = zelOKAY; ///< of the first write that failed
    Colors screenColors_;
    int entries_ = 0;                        ///< of the palette of the image in writing
    std::array<std::uint8_t, 256> stored_{}; ///< an index to each that is given
    std::vector<std::uint8_t> row_;
};

} // namespace zelgif

#endif
