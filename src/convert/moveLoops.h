#ifndef ZEL_CONVERT_MOVE_LOOPS_H
#define ZEL_CONVERT_MOVE_LOOPS_H

// The table of loops for one kind of processor. A source file for each kind instantiates it with a
// `Target`: `laneBytes<size>` says how wide vectors of elements of that size are where they are
// turned around, 0 meaning plain loops; `zipBytes` how wide those are that are zipped; `shuffles`
// whether the lanes of 16 bytes take any places in one step.

#include "convert/channelLoops.h"
#include "convert/exchangeLoops.h"
#include "convert/mirrorLoops.h"
#include "convert/moves.h"

namespace {

using zel::convert::Exchange;
using zel::convert::Join;
using zel::convert::Mirror;
using zel::convert::Moves;
using zel::convert::Split;
using zel::convert::unrolledChannels;

template <class Target, class Element, bool back, int... channels>
constexpr std::array<Split, sizeof...(channels)> splits(std::integer_sequence<int, channels...>) {
    return {split<Target, Element, channels, back>...};
}

template <class Target, class Element, int... channels>
constexpr std::array<Join, sizeof...(channels)> joins(std::integer_sequence<int, channels...>) {
    return {join<Target, Element, channels>...};
}

template <class Target, class Element, int zero, int... channels>
constexpr std::array<Mirror, 1 + sizeof...(channels)>
mirrors(bool ofPixels, std::integer_sequence<int, zero, channels...>) {
    if (ofPixels)
        return {nullptr, mirrorPixels<Target, Element, channels>...};
    return {nullptr, mirrorChannels<Target, Element, channels>...};
}

/// Whether an element or a pixel of up to `unrolledChannels` elements takes that many bytes.
constexpr bool isUnit(std::size_t bytes) {
    for (std::size_t size = 1; size <= 8; size *= 2) {
        if (bytes > 0 && bytes % size == 0 && bytes / size <= unrolledChannels)
            return true;
    }
    return false;
}

template <class Target, std::size_t size>
constexpr Exchange exchangeOf() {
    if constexpr (isUnit(size))
        return exchange<Target, static_cast<int>(size)>;
    else
        return nullptr;
}

template <class Target, std::size_t... size>
constexpr std::array<Exchange, sizeof...(size)> exchanges(std::index_sequence<size...>) {
    return {exchangeOf<Target, size>()...};
}

template <class Target>
constexpr Moves makeMoves() {
    constexpr auto channels = std::make_integer_sequence<int, unrolledChannels + 1>();
    return {{splits<Target, std::uint8_t, false>(channels),
             splits<Target, std::uint16_t, false>(channels),
             splits<Target, std::uint32_t, false>(channels),
             splits<Target, std::uint64_t, false>(channels)},
            {splits<Target, std::uint8_t, true>(channels),
             splits<Target, std::uint16_t, true>(channels),
             splits<Target, std::uint32_t, true>(channels),
             splits<Target, std::uint64_t, true>(channels)},
            {joins<Target, std::uint8_t>(channels), joins<Target, std::uint16_t>(channels),
             joins<Target, std::uint32_t>(channels), joins<Target, std::uint64_t>(channels)},
            {mirrors<Target, std::uint8_t>(true, channels),
             mirrors<Target, std::uint16_t>(true, channels),
             mirrors<Target, std::uint32_t>(true, channels),
             mirrors<Target, std::uint64_t>(true, channels)},
            {mirrors<Target, std::uint8_t>(false, channels),
             mirrors<Target, std::uint16_t>(false, channels),
             mirrors<Target, std::uint32_t>(false, channels),
             mirrors<Target, std::uint64_t>(false, channels)},
            exchanges<Target>(std::make_index_sequence<8 * unrolledChannels + 1>())};
}

} // namespace

#endif
