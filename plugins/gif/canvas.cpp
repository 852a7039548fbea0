#include "canvas.h"

#include "frameDecoder.h"

#include "kit/sizes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace zelgif {

namespace {

// 64 Mi pixels, which take 256 MiB.
constexpr std::int64_t largestCanvas = std::int64_t{64} << 20;
// A larger canvas has to be one that the frames fill to some part.
constexpr std::int64_t smallCanvas = std::int64_t{4} << 20;
constexpr std::int64_t leastPart = 64;

zelStatus noMemory() {
    return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
}

} // namespace

Canvas::Box Canvas::boxOf(const Frame& frame) const {
    const int left = std::min(frame.left, contents_.width);
    const int top = std::min(frame.top, contents_.height);
    return {left, top, std::min(frame.width, contents_.width - left),
            std::min(frame.height, contents_.height - top)};
}

zelStatus Canvas::makePixels() {
    const std::int64_t pixels = std::int64_t{contents_.width} * contents_.height;
    std::int64_t drawn = 0;
    for (const Frame& frame : contents_.frames)
        drawn += std::min(std::int64_t{frame.width} * frame.height, mostPixels(frame.dataBytes));
    if (pixels > largestCanvas || (pixels > smallCanvas && pixels / leastPart > drawn))
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    const auto bytes = static_cast<std::size_t>(pixels) * 4;
    if (pixels_.size() == bytes) {
        std::memset(pixels_.data(), 0, bytes);
        return zelOKAY;
    }
    return pixels_.allocate(bytes) ? zelOKAY : noMemory();
}

zelStatus Canvas::show(int index) {
    if (drawn_ == index)
        return zelOKAY;
    int first = index;
    const auto frameAt = [this](int i) -> const Frame& {
        return contents_.frames[static_cast<std::size_t>(i)];
    };
    while (first > 0 && first != drawn_ + 1 && !frameAt(first).beginsBlank)
        first--;
    const bool goesOn = drawn_ >= 0 && first == drawn_ + 1;
    zelStatus status = goesOn ? zelOKAY : makePixels();
    if (goesOn)
        dispose(frameAt(drawn_));
    for (int i = first; i <= index && status == zelOKAY; i++) {
        if (i > first)
            dispose(frameAt(i - 1));
        if (frameAt(i).disposal == DISPOSE_PREVIOUS)
            status = save(frameAt(i));
        if (status == zelOKAY)
            status = draw(frameAt(i));
    }
    drawn_ = status == zelOKAY ? index : -1;
    return status;
}

zelStatus Canvas::save(const Frame& frame) {
    const Box box = boxOf(frame);
    const std::size_t rowBytes = static_cast<std::size_t>(box.width) * 4;
    if (!saved_.allocate(rowBytes * static_cast<std::size_t>(box.height)))
        return noMemory();
    for (int y = 0; y < box.height; y++)
        std::memcpy(saved_.data() + rowBytes * static_cast<std::size_t>(y),
                    pixels_.data() + offsetOf(box.left, box.top + y), rowBytes);
    return zelOKAY;
}

void Canvas::dispose(const Frame& frame) {
    const Box box = boxOf(frame);
    const std::size_t rowBytes = static_cast<std::size_t>(box.width) * 4;
    for (int y = 0; y < box.height; y++) {
        std::uint8_t* const row = pixels_.data() + offsetOf(box.left, box.top + y);
        if (frame.disposal == DISPOSE_BACKGROUND)
            std::memset(row, 0, rowBytes);
        else if (frame.disposal == DISPOSE_PREVIOUS)
            std::memcpy(row, saved_.data() + rowBytes * static_cast<std::size_t>(y), rowBytes);
    }
}

zelStatus Canvas::draw(const Frame& frame) {
    const Box box = boxOf(frame);
    if (box.width < 1 || box.height < 1)
        return zelOKAY;
    FrameDecoder decoder(fd_);
    const zelStatus status = decoder.open(frame);
    if (status != zelOKAY)
        return status;
    const std::span<const std::uint8_t> colors = decoder.colors();
    std::vector<std::uint8_t> indexes(static_cast<std::size_t>(frame.width));
    return forEachStoredRow(frame, [&](int y) {
        const zelStatus read = decoder.nextRow(indexes.data());
        if (read != zelOKAY || y >= box.height)
            return read;
        std::uint8_t* pixel = pixels_.data() + offsetOf(box.left, box.top + y);
        for (int x = 0; x < box.width; x++, pixel += 4) {
            const std::uint8_t index = indexes[static_cast<std::size_t>(x)];
            if (index == frame.transparentIndex)
                continue;
            const std::size_t at = std::size_t{index} * 3;
            for (std::size_t c = 0; c < 3; c++)
                pixel[c] = at + c < colors.size() ? colors[at + c] : std::uint8_t{0};
            pixel[3] = 255;
        }
        return read;
    });
}

} // namespace zelgif
