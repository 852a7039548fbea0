#ifndef ZEL_CONVERT_MIRROR_LOOPS_H
#define ZEL_CONVERT_MIRROR_LOOPS_H

// Rows of pixels and the channels of pixels turned around, for the processor that the including
// file is compiled for.

#include "convert/lanes.h"

namespace {

/// As many whole pixels as fit a vector, at its end before and at its start afterwards; what is
/// behind them there is of no account.
template <int channels, int width>
struct MirrorPixelPlaces {
    static constexpr int pixels = width / channels;
    static constexpr int of(int lane) {
        const int pixel = lane / channels;
        return pixel < pixels ? width - (pixel + 1) * channels + lane % channels : 0;
    }
};

/// As many whole pixels as fit a vector, at its start.
template <int channels, int width>
struct MirrorChannelPlaces {
    static constexpr int pixels = width / channels;
    static constexpr int of(int lane) {
        const int first = lane / channels * channels;
        return first < pixels * channels ? first + channels - 1 - lane % channels : 0;
    }
};

/// Vectors overlap in memory: each stores some bytes that belong to the next, as long as there are
/// enough pixels left for that.
template <class Target, class Element, int channels>
void mirrorPixels(std::byte* to, const std::byte* from, std::ptrdiff_t count) {
    constexpr int size = sizeof(Element) * channels;
    constexpr int bytes = Target::template laneBytes<sizeof(Element)>;
    std::ptrdiff_t done = 0;
    if constexpr (bytes >= 2 * size) {
        using Lanes = typename LanesOf<Element, bytes>::Type;
        constexpr int width = bytes / static_cast<int>(sizeof(Element));
        using Places = MirrorPixelPlaces<channels, width>;
        for (; (count - done) * size >= bytes; done += Places::pixels) {
            const auto in = loadLanes<Lanes>(from + (count - done) * size - bytes);
            storeLanes(to + done * size, rearrange<Places, width>(in, in));
        }
    }
    for (; done < count; ++done)
        std::memcpy(to + done * size, from + (count - 1 - done) * size, size);
}

template <class Target, class Element, int channels>
void mirrorChannels(std::byte* to, const std::byte* from, std::ptrdiff_t count) {
    constexpr int element = sizeof(Element);
    constexpr int size = element * channels;
    constexpr int bytes = Target::template laneBytes<element>;
    std::ptrdiff_t done = 0;
    if constexpr (bytes >= size) {
        using Lanes = typename LanesOf<Element, bytes>::Type;
        constexpr int width = bytes / element;
        using Places = MirrorChannelPlaces<channels, width>;
        for (; (count - done) * size >= bytes; done += Places::pixels) {
            const auto in = loadLanes<Lanes>(from + done * size);
            storeLanes(to + done * size, rearrange<Places, width>(in, in));
        }
    }
    for (; done < count; ++done) {
        for (int c = 0; c < channels; ++c)
            std::memcpy(to + done * size + c * element,
                        from + done * size + (channels - 1 - c) * element, element);
    }
}

} // namespace

#endif
