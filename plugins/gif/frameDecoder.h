#ifndef ZELGIF_FRAMEDECODER_H
#define ZELGIF_FRAMEDECODER_H

#include "input.h"
#include "scan.h"

#include <span>
#include <vector>

namespace zelgif {

/// The pixels that compressed data of this length can stand for: a code has 2 bits at least, and
/// stands for no more pixels than codes came before it or 4096.
std::int64_t mostPixels(std::int64_t dataBytes);

/// Decodes the rows of one frame once, in the order in which they are stored.
class FrameDecoder {
public:
    explicit FrameDecoder(int fd) : input_(fd) {}

    /// Goes to the frame. zelPREMATUREEOF if its data cannot hold its pixels.
    zelStatus open(const Frame& frame);

    /// Red, green and blue of each index; a frame without any colours has greys.
    std::span<const std::uint8_t> colors() const { return colors_; }

    /// Decodes the next row, of the frame's width.
    zelStatus nextRow(std::uint8_t* indexes);

private:
    void takeColors(const ColorMapObject* map);

    Input input_;
    DecoderHandle gif_;
    int width_ = 0;
    std::vector<std::uint8_t> colors_;
};

/// Calls `body(y)` for each row of a frame in the order in which the rows are stored, until that
/// gives another status than zelOKAY.
template <typename Body>
zelStatus forEachStoredRow(const Frame& frame, Body body) {
    struct Pass {
        int first;
        int step;
    };
    static constexpr Pass straight[] = {{0, 1}};
    static constexpr Pass interlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    const std::span<const Pass> passes =
        frame.interlaced ? std::span<const Pass>(interlaced) : std::span<const Pass>(straight);
    for (const Pass& pass : passes)
        for (int y = pass.first; y < frame.height; y += pass.step) {
            const zelStatus status = body(y);
            if (status != zelOKAY)
                return status;
        }
    return zelOKAY;
}

} // namespace zelgif

#endif
