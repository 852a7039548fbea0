#ifndef ZEL_CONVERT_EXCHANGE_LOOPS_H
#define ZEL_CONVERT_EXCHANGE_LOOPS_H

// Rows become columns, for the processor that the including file is compiled for.

#include "convert/lanes.h"
#include "convert/moves.h"

#include <bit>
#include <cstdint>

namespace {

using zel::convert::ConstRows;
using zel::convert::Rows;

/// All vectors of this file: they are native to every processor that is served.
constexpr int blockBytes = 16;

/// Units of any size, one by one. All but the last of a row on either side are moved as a whole
/// power of two, since the bytes behind a unit are written by the next one anyway.
template <int size>
void exchangeUnits(Rows to, ConstRows from, int firstRow, int rows, int firstUnit, int length) {
    constexpr int wide = static_cast<int>(std::bit_ceil(static_cast<unsigned>(size)));
    for (int i = firstUnit; i < length; ++i) {
        std::byte* target = to.first + i * to.step;
        const std::byte* source = from.first + std::ptrdiff_t{i} * size;
        int k = firstRow;
        for (; i < length - 1 && k < rows - 1; ++k)
            std::memcpy(target + std::ptrdiff_t{k} * size, source + k * from.step, wide);
        for (; k < rows; ++k)
            std::memcpy(target + std::ptrdiff_t{k} * size, source + k * from.step, size);
    }
}

/// Blocks of elements that fill a vector without a rest.
template <class Element>
void exchangeElements(Rows to, ConstRows from, int rows, int length) {
    constexpr int size = sizeof(Element);
    constexpr int width = blockBytes / size;
    using Lanes = typename LanesOf<Element, blockBytes>::Type;
    const int wholeRows = rows - rows % width;
    const int wholeUnits = length - length % width;
    for (int i = 0; i < wholeUnits; i += width) {
        for (int k = 0; k < wholeRows; k += width) {
            Several<Lanes, width> block;
            for (int n = 0; n < width; ++n)
                block[static_cast<std::size_t>(n)] =
                    loadLanes<Lanes>(from.first + (k + n) * from.step + std::ptrdiff_t{i} * size);
            block = zip<Element, std::countr_zero(static_cast<unsigned>(width))>(block);
            for (int n = 0; n < width; ++n)
                storeLanes(to.first + (i + n) * to.step + std::ptrdiff_t{k} * size,
                           block[static_cast<std::size_t>(n)]);
        }
    }
    exchangeUnits<size>(to, from, wholeRows, rows, 0, wholeUnits);
    exchangeUnits<size>(to, from, 0, rows, wholeUnits, length);
}

/// From pixels of three elements to lanes of four.
struct WidenPlaces {
    static constexpr int of(int lane) { return lane / 4 * 3 + lane % 4 % 3; }
};

/// Pixels of three elements, some to a vector. A vector reaches beyond them; the blocks end early
/// enough for what is there to belong to the same row, and the next ones write it.
template <class Element, class Pixel>
void exchangeTriples(Rows to, ConstRows from, int rows, int length) {
    using Elements = typename LanesOf<Element, blockBytes>::Type;
    using Pixels = typename LanesOf<Pixel, blockBytes>::Type;
    constexpr int size = 3 * sizeof(Element);
    constexpr int width = blockBytes / static_cast<int>(sizeof(Pixel));
    constexpr int lanes = 4 * width;
    constexpr int beyond = (blockBytes + size - 1) / size - width;
    const int wholeRows = rows > beyond ? (rows - beyond) / width * width : 0;
    const int wholeUnits = length > beyond ? (length - beyond) / width * width : 0;
    for (int i = 0; i < wholeUnits; i += width) {
        for (int k = 0; k < wholeRows; k += width) {
            Several<Pixels, width> block;
            for (int n = 0; n < width; ++n) {
                const auto in = loadLanes<Elements>(from.first + (k + n) * from.step + i * size);
                const Elements wide = rearrange<WidenPlaces, lanes>(in, in);
                std::memcpy(&block[static_cast<std::size_t>(n)], &wide, sizeof wide);
            }
            block = zip<Pixel, std::countr_zero(static_cast<unsigned>(width))>(block);
            for (int n = 0; n < width; ++n) {
                Elements wide;
                std::memcpy(&wide, &block[static_cast<std::size_t>(n)], sizeof wide);
                storeLanes(to.first + (i + n) * to.step + k * size,
                           rearrange<NarrowPlaces<3, 4, lanes>, lanes>(wide, wide));
            }
        }
    }
    exchangeUnits<size>(to, from, wholeRows, rows, 0, wholeUnits);
    exchangeUnits<size>(to, from, 0, rows, wholeUnits, length);
}

template <class Target, int size>
void exchange(Rows to, ConstRows from, int rows, int length) {
    if constexpr (size == 1)
        exchangeElements<std::uint8_t>(to, from, rows, length);
    else if constexpr (size == 2)
        exchangeElements<std::uint16_t>(to, from, rows, length);
    else if constexpr (size == 4)
        exchangeElements<std::uint32_t>(to, from, rows, length);
    else if constexpr (size == 8)
        exchangeElements<std::uint64_t>(to, from, rows, length);
    else if constexpr (size == 3 && Target::template laneBytes<1> > 0)
        exchangeTriples<std::uint8_t, std::uint32_t>(to, from, rows, length);
    else if constexpr (size == 6 && Target::template laneBytes<2> > 0)
        exchangeTriples<std::uint16_t, std::uint64_t>(to, from, rows, length);
    else
        exchangeUnits<size>(to, from, 0, rows, 0, length);
}

} // namespace

#endif
