#ifndef ZELWEBP_ASSEMBLY_H
#define ZELWEBP_ASSEMBLY_H

#include "encoder.h"

#include <span>
#include <vector>

namespace zelwebp {

/// What a file holds: one image, or several as an animation.
struct Assembly {
    std::vector<EncodedImage> images;
    std::vector<std::uint8_t> iccProfile; ///< empty if there is none, as is the next
    std::vector<std::uint8_t> exif;
    int loopCount = 0; ///< how often an animation is shown; 0 for ever

    zelStatus write(int fd) const;
};

} // namespace zelwebp

#endif
