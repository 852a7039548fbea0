#include "kit/packedPixels.h"

#include <zel/zelConverter.h>

#include <algorithm>
#include <bit>

namespace zelkit {

namespace {

std::uint8_t spread(std::uint64_t value, std::uint64_t highest) {
    return highest == 0 ? std::uint8_t{0}
                        : static_cast<std::uint8_t>((value * 255 + highest / 2) / highest);
}

} // namespace

bool PackedPixels::isMask(std::uint32_t mask, int pixelBytes) {
    if (mask == 0)
        return true;
    const std::uint64_t run = std::uint64_t{mask} >> std::countr_zero(mask);
    return (run & (run + 1)) == 0 && std::bit_width(mask) <= static_cast<unsigned>(pixelBytes * 8);
}

PackedPixels::Channel PackedPixels::makeChannel(std::uint32_t mask) {
    Channel channel;
    channel.mask = mask;
    channel.shift = mask ? std::countr_zero(mask) : 0;
    channel.highest = mask >> channel.shift;
    for (std::uint32_t value = 0; value <= channel.highest && value < 256; value++)
        channel.bytes[value] = spread(value, channel.highest);
    return channel;
}

PackedPixels::PackedPixels(int pixelBytes, const Masks& masks)
    : pixelBytes_(pixelBytes), channels_(masks[3] ? 4 : 3), wholeBytes_(true) {
    for (std::size_t c = 0; c < parts_.size(); c++) {
        parts_[c] = makeChannel(masks[c]);
        if (static_cast<int>(c) < channels_)
            wholeBytes_ = wholeBytes_ && parts_[c].highest == 255 && parts_[c].shift % 8 == 0;
    }
}

// The bytes of a stored pixel are channels to the library's conversion, which is faster than a
// loop.
void PackedPixels::pickBytes(const std::uint8_t* stored, std::uint8_t* elements, int pixels) const {
    std::array<int, 4> places{};
    for (std::size_t c = 0; c < static_cast<std::size_t>(channels_); c++)
        places[c] = parts_[c].shift / 8;
    zelConverter from(const_cast<std::uint8_t*>(stored), zelUChar, zelInterleaved, pixelBytes_,
                      nullptr, pixels, 1, 1, 0, 0, 0, 0);
    zelConverter to(elements, zelUChar, zelInterleaved, channels_, places.data(), pixels, 1, 1, 0,
                    0, 0, 0);
    to = from;
}

void PackedPixels::decode(const std::uint8_t* stored, std::uint8_t* elements,
                          std::int64_t pixels) const {
    const auto channels = static_cast<std::size_t>(channels_);
    constexpr std::int64_t most = 1 << 24; // such that the conversion's numbers of bytes fit an int
    while (wholeBytes_ && pixels > 0) {
        const std::int64_t count = std::min(pixels, most);
        pickBytes(stored, elements, static_cast<int>(count));
        stored += count * pixelBytes_;
        elements += count * channels_;
        pixels -= count;
    }
    for (; pixels > 0; pixels--, stored += pixelBytes_) {
        std::uint32_t pixel = 0;
        for (int i = 0; i < pixelBytes_; i++)
            pixel |= std::uint32_t{stored[i]} << 8 * i;
        for (std::size_t c = 0; c < channels; c++) {
            const Channel& part = parts_[c];
            const std::uint32_t value = (pixel & part.mask) >> part.shift;
            *elements++ = part.highest < 256 ? part.bytes[value] : spread(value, part.highest);
        }
    }
}

void PackedPixels::encode(const std::uint8_t* elements, std::uint8_t* stored,
                          std::int64_t pixels) const {
    for (; pixels > 0; pixels--, stored += pixelBytes_)
        for (std::size_t c = 0; c < static_cast<std::size_t>(channels_); c++)
            stored[parts_[c].shift / 8] = *elements++;
}

} // namespace zelkit
