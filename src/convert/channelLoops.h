#ifndef ZEL_CONVERT_CHANNEL_LOOPS_H
#define ZEL_CONVERT_CHANNEL_LOOPS_H

// Pixels to channels and back, for the processor that the including file is compiled for.

#include "convert/lanes.h"

#include <bit>
#include <cstdint>
#include <type_traits>

namespace {

/// One pixel after the other; `channels` is a constant or comes with the call.
template <int size, bool back>
void splitPlainly(std::byte* const* planes, const std::byte* pixels, int channels,
                  std::ptrdiff_t count) {
    for (int c = 0; c < channels; ++c) {
        if (planes[c] == nullptr)
            continue;
        for (std::ptrdiff_t i = 0; i < count; ++i)
            std::memcpy(planes[c] + (back ? count - 1 - i : i) * size,
                        pixels + (i * channels + c) * size, size);
    }
}

template <int size>
void joinPlainly(std::byte* pixels, const std::byte* const* planes, int channels,
                 std::ptrdiff_t count) {
    for (int c = 0; c < channels; ++c) {
        for (std::ptrdiff_t i = 0; i < count; ++i)
            std::memcpy(pixels + (i * channels + c) * size, planes[c] + i * size, size);
    }
}

/// Pixels to channels by zips: the elements begin numbered pixel by pixel, and the bits of the
/// pixel's number rotate to the end. An odd number of channels takes two vectors each, for there to
/// be whole vectors in each half. False if there are too few pixels.
template <class Element, int bytes, int channels, bool back>
bool splitByZips(std::byte* const* planes, const std::byte* pixels, std::ptrdiff_t count) {
    using Lanes = typename LanesOf<Element, bytes>::Type;
    constexpr int size = sizeof(Element);
    constexpr int each = channels % 2 == 0 ? 1 : 2;
    constexpr int rounds = std::countr_zero(static_cast<unsigned>(each * partBytes / size));
    constexpr std::ptrdiff_t group = each * bytes / size;
    // Part by part of the first vectors of all channels, then of the second ones.
    constexpr std::ptrdiff_t partStep = channels * (back ? -partBytes : partBytes);
    constexpr int first = back ? 1 : 0;
    constexpr std::ptrdiff_t firstPart = back ? channels * (bytes - partBytes) : 0;
    if (count < group) {
        if constexpr (bytes > partBytes)
            return splitByZips<Element, bytes / 2, channels, back>(planes, pixels, count);
        return false;
    }
    // The last group takes some pixels again.
    for (std::ptrdiff_t next = 0; next < count; next += group) {
        const std::ptrdiff_t done = next < count - group ? next : count - group;
        const std::byte* from = pixels + done * channels * size + firstPart;
        Several<Lanes, each * channels> in;
        for (int k = 0; k < each * channels; ++k)
            in[static_cast<std::size_t>(k)] = loadParts<Element, bytes>(
                from + k / channels * channels * bytes + k % channels * partBytes, partStep);
        const auto out = zip<Element, rounds, first>(in);
        const std::ptrdiff_t at = (back ? count - group - done : done) * size;
        [&]<std::size_t... k>(std::index_sequence<k...>) {
            ((planes[k / each] != nullptr
                  ? storeLanes(planes[k / each] + at + k % each * bytes, out[k])
                  : void()),
             ...);
        }
        (std::make_index_sequence<each * channels>());
    }
    return true;
}

/// Stores vector `k` of those that hold pixels one by one, in places for `slots` elements. What
/// follows the elements of a pixel there is of no account: the next one is stored over it.
template <class Target, class Element, int channels, int slots, class Lanes>
ZEL_INLINE void storePixels(std::byte* to, int k, const Lanes& lanes) {
    constexpr int size = sizeof(Element);
    constexpr int place = slots * size;
    constexpr int atOnce = partBytes / place;
    constexpr int width = partBytes / size;
    if constexpr (atOnce < 1) {
        const int offset = k * partBytes % place;
        if (offset < channels * size)
            storeLanes(to + k * partBytes / place * channels * size + offset, lanes);
    } else if constexpr (channels == slots || atOnce == 1) {
        storeLanes(to + k * atOnce * channels * size, lanes);
    } else if constexpr (Target::shuffles) {
        storeLanes(to + k * atOnce * channels * size,
                   rearrange<NarrowPlaces<channels, slots, width>, width>(lanes, lanes));
    } else {
        using Pixel = std::conditional_t<place == 8, std::uint64_t, std::uint32_t>;
        typename LanesOf<Pixel, partBytes>::Type pixels;
        std::memcpy(&pixels, &lanes, sizeof lanes);
        for (int i = 0; i < atOnce; ++i) {
            const Pixel pixel = pixels[i];
            std::memcpy(to + (k * atOnce + i) * channels * size, &pixel, sizeof pixel);
        }
    }
}

/// Channels to pixels by zips, first in places for a power of two of them. False if there are
/// too few pixels.
template <class Target, class Element, int bytes, int channels>
bool joinByZips(std::byte* pixels, const std::byte* const* planes, std::ptrdiff_t count) {
    using Lanes = typename LanesOf<Element, bytes>::Type;
    constexpr int size = sizeof(Element);
    constexpr int slots = static_cast<int>(std::bit_ceil(static_cast<unsigned>(channels)));
    constexpr int rounds = std::countr_zero(static_cast<unsigned>(slots));
    constexpr std::ptrdiff_t group = bytes / size;
    constexpr std::ptrdiff_t partPixels = partBytes / size;
    constexpr int beyond = slots == channels ? 0 : partBytes;
    if (count < group) {
        if constexpr (bytes > partBytes)
            return joinByZips<Target, Element, bytes / 2, channels>(pixels, planes, count);
        return false;
    }
    // The last group takes some pixels again.
    for (std::ptrdiff_t next = 0; next < count; next += group) {
        const std::ptrdiff_t done = next < count - group ? next : count - group;
        Several<Lanes, slots> in;
        for (int c = 0; c < slots; ++c)
            in[static_cast<std::size_t>(c)] =
                loadLanes<Lanes>(planes[c < channels ? c : 0] + done * size);
        const auto out = zip<Element, rounds>(in);
        // The last stores reach beyond the group, for which the end of the row has no room.
        std::byte apart[channels * bytes + beyond];
        const bool fits = (count - done - group) * channels * size >= beyond;
        std::byte* to = fits ? pixels + done * channels * size : apart;
        // Part by part, since what follows a pixel is stored over it.
        [&]<int... k>(std::integer_sequence<int, k...>) {
            (storePixels<Target, Element, channels, slots>(
                 to + k / slots * partPixels * channels * size, k % slots,
                 partOf<Element, k / slots>(out[static_cast<std::size_t>(k % slots)])),
             ...);
        }
        (std::make_integer_sequence<int, slots * bytes / partBytes>());
        if (!fits)
            std::memcpy(pixels + done * channels * size, apart, channels * bytes);
    }
    return true;
}

template <class Target, class Element, int channels, bool back>
void split(std::byte* const* planes, const std::byte* pixels, int slots, std::ptrdiff_t count) {
    if constexpr (channels > 0) {
        if (splitByZips<Element, Target::zipBytes, channels, back>(planes, pixels, count))
            return;
    }
    splitPlainly<sizeof(Element), back>(planes, pixels, channels > 0 ? channels : slots, count);
}

template <class Target, class Element, int channels>
void join(std::byte* pixels, const std::byte* const* planes, int slots, std::ptrdiff_t count) {
    if constexpr (channels > 1) {
        if (joinByZips<Target, Element, Target::zipBytes, channels>(pixels, planes, count))
            return;
    }
    joinPlainly<sizeof(Element)>(pixels, planes, channels > 0 ? channels : slots, count);
}

} // namespace

#endif
