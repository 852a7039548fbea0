#ifndef ZELGIF_CANVAS_H
#define ZELGIF_CANVAS_H

#include "scan.h"

#include "kit/buffer.h"

namespace zelgif {

/// The screen, as it is seen while a frame is shown: 4 bytes a pixel, red, green, blue and alpha.
/// Where no frame has drawn, all are 0.
class Canvas {
public:
    Canvas(int fd, const Contents& contents) : fd_(fd), contents_(contents) {}

    /// Draws all frames up to `index` that can be seen there. zelUNSUPPORTEDBYFILE for a screen
    /// that is too large to be held.
    zelStatus show(int index);

    const std::uint8_t* row(int y) const { return pixels_.data() + offsetOf(0, y); }

private:
    /// The part of a frame that lies on the screen.
    struct Box {
        int left, top, width, height;
    };

    Box boxOf(const Frame& frame) const;
    std::size_t offsetOf(int x, int y) const {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(contents_.width) +
                static_cast<std::size_t>(x)) *
               4;
    }
    zelStatus makePixels();
    zelStatus save(const Frame& frame);
    void dispose(const Frame& frame);
    zelStatus draw(const Frame& frame);

    int fd_;
    const Contents& contents_;
    zelkit::Buffer pixels_;
    zelkit::Buffer saved_; ///< what the last frame covers, if it is to be brought back
    int drawn_ = -1;       ///< the last frame drawn; -1: none
};

} // namespace zelgif

#endif
