#ifndef ZELWEBP_FRAMESOURCE_H
#define ZELWEBP_FRAMESOURCE_H

#include "container.h"

#include <cstddef>
#include <memory>

namespace zelwebp {

/// Gives the rows of the images of a file, of 3 or 4 bytes a pixel as the file has alpha or not.
class FrameSource {
public:
    FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;
    virtual ~FrameSource() = default;

    /// Goes to an image. Images before it may have to be decoded.
    virtual zelStatus show(int index) = 0;
    /// Copies one row of it.
    virtual zelStatus copyRow(int y, std::uint8_t* row) = 0;
};

/// The source that suits the file; null if there is no memory. `container` outlives it.
std::unique_ptr<FrameSource> makeFrameSource(const Container& container);

} // namespace zelwebp

#endif
