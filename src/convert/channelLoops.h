#ifndef ZEL_CONVERT_CHANNEL_LOOPS_H
#define ZEL_CONVERT_CHANNEL_LOOPS_H

// Pixels to channels and back, for the processor that the including file is compiled for.

#include "convert/lanes.h"

#include <cstdint>

namespace {

/// Pixels of `channels` elements lie in as many vectors; out come the channels, one a vector.
template <int channels, int width, bool back>
struct SplitPlaces {
    static constexpr Place of(int out, int lane) {
        const int element = (back ? width - 1 - lane : lane) * channels + out;
        return {element / width, element % width};
    }
};

template <int channels, int width>
struct JoinPlaces {
    static constexpr Place of(int out, int lane) {
        const int element = out * width + lane;
        return {element % channels, element / channels};
    }
};

/// One pixel after the other; `channels` is a constant or comes with the call.
template <int size, bool back>
void splitPlainly(std::byte* const* planes, const std::byte* pixels, int channels,
                  std::ptrdiff_t first, std::ptrdiff_t count) {
    for (int c = 0; c < channels; ++c) {
        if (planes[c] == nullptr)
            continue;
        for (std::ptrdiff_t i = first; i < count; ++i)
            std::memcpy(planes[c] + (back ? count - 1 - i : i) * size,
                        pixels + (i * channels + c) * size, size);
    }
}

template <int size>
void joinPlainly(std::byte* pixels, const std::byte* const* planes, int channels,
                 std::ptrdiff_t first, std::ptrdiff_t count) {
    for (int c = 0; c < channels; ++c) {
        for (std::ptrdiff_t i = first; i < count; ++i)
            std::memcpy(pixels + (i * channels + c) * size, planes[c] + i * size, size);
    }
}

template <class Target, class Element, int channels, bool back>
void split(std::byte* const* planes, const std::byte* pixels, int slots, std::ptrdiff_t count) {
    constexpr int size = sizeof(Element);
    constexpr int bytes = Target::template laneBytes<size>;
    std::ptrdiff_t done = 0;
    if constexpr (channels > 0 && bytes > 0) {
        using Lanes = typename LanesOf<Element, bytes>::Type;
        constexpr int width = bytes / size;
        using Places = SplitPlaces<channels, width, back>;
        for (; done + width <= count; done += width) {
            Several<Lanes, channels> in;
            for (int k = 0; k < channels; ++k)
                in[static_cast<std::size_t>(k)] =
                    loadLanes<Lanes>(pixels + done * channels * size + k * bytes);
            const std::ptrdiff_t at = (back ? count - width - done : done) * size;
            [&]<int... c>(std::integer_sequence<int, c...>) {
                ((planes[c] != nullptr
                      ? storeLanes(planes[c] + at, gather<width, Places, c>(in, in[0]))
                      : void()),
                 ...);
            }
            (std::make_integer_sequence<int, channels>());
        }
    }
    splitPlainly<size, back>(planes, pixels, channels > 0 ? channels : slots, done, count);
}

template <class Target, class Element, int channels>
void join(std::byte* pixels, const std::byte* const* planes, int slots, std::ptrdiff_t count) {
    constexpr int size = sizeof(Element);
    constexpr int bytes = Target::template laneBytes<size>;
    std::ptrdiff_t done = 0;
    if constexpr (channels > 1 && bytes > 0) {
        using Lanes = typename LanesOf<Element, bytes>::Type;
        constexpr int width = bytes / size;
        using Places = JoinPlaces<channels, width>;
        for (; done + width <= count; done += width) {
            Several<Lanes, channels> in;
            for (std::size_t c = 0; c < channels; ++c)
                in[c] = loadLanes<Lanes>(planes[c] + done * size);
            std::byte* to = pixels + done * channels * size;
            [&]<int... k>(std::integer_sequence<int, k...>) {
                (storeLanes(to + k * bytes, gather<width, Places, k>(in, in[0])), ...);
            }
            (std::make_integer_sequence<int, channels>());
        }
    }
    joinPlainly<size>(pixels, planes, channels > 0 ? channels : slots, done, count);
}

} // namespace

#endif
