#ifndef ZELWEBP_CONTAINER_H
#define ZELWEBP_CONTAINER_H

#include "kit/buffer.h"

#include <zel/zelError.h>

#include <cstdint>
#include <vector>
#include <webp/mux_types.h>

namespace zelwebp {

struct Frame {
    int duration = 0; ///< in milliseconds
    bool lossless = false;
};

/// A WebP file in memory, still compressed, and what it says of its images.
class Container {
public:
    /// zelPREMATUREEOF if the file is shorter than it says, zelCORRUPTED if its parts are damaged.
    zelStatus load(int fd);

    WebPData data() const { return {bytes_.data(), bytes_.size()}; }

    int width = 0;
    int height = 0;
    bool hasAlpha = false;
    bool isAnimation = false;
    int loopCount = 0;
    std::vector<Frame> frames;
    std::vector<std::uint8_t> iccProfile; ///< empty if there is none, as is the next
    std::vector<std::uint8_t> exif;

private:
    zelStatus readBytes(int fd);
    zelStatus describe();

    zelkit::Buffer bytes_;
};

} // namespace zelwebp

#endif
