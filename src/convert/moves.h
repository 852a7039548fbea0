#ifndef ZEL_CONVERT_MOVES_H
#define ZEL_CONVERT_MOVES_H

// Loops that move elements without changing them: pixels taken apart into channels, channels put
// together to pixels, and x and y exchanged. Elements are told apart by their size alone.

#include <array>
#include <cstddef>

namespace zel::convert {

/// Channels up to which pixels have a loop of their own; loop 0 of each row below takes any number.
constexpr int unrolledChannels = 8;

/// Takes `count` pixels of `channels` elements apart: element c of pixel i goes to element i of
/// `planes[c]`. A null plane is left out.
using Split = void (*)(std::byte* const* planes, const std::byte* pixels, int channels,
                       std::ptrdiff_t count);

/// The inverse of a split; every plane is there.
using Join = void (*)(std::byte* pixels, const std::byte* const* planes, int channels,
                      std::ptrdiff_t count);

/// Turns `count` pixels around: their order along the row, or that of the elements in each. The
/// two runs must not overlap.
using Mirror = void (*)(std::byte* to, const std::byte* from, std::ptrdiff_t count);

/// Where rows begin and how many bytes further the next one does, possibly backwards.
struct Rows {
    std::byte* first;
    std::ptrdiff_t step;
};
struct ConstRows {
    const std::byte* first;
    std::ptrdiff_t step;
};

/// Unit i of row k of `from` goes to unit k of row i of `to`, for `rows` rows of `length` units.
/// Nothing else is touched.
using Exchange = void (*)(Rows to, ConstRows from, int rows, int length);

/// The loops for one kind of processor. The first index is the base-2 logarithm of an element's
/// size, the second the number of channels.
struct Moves {
    template <class Loop>
    using ByChannels = std::array<std::array<Loop, unrolledChannels + 1>, 4>;

    ByChannels<Split> split;
    ByChannels<Split> splitBack; ///< pixel i goes to element `count` - 1 - i
    ByChannels<Join> join;
    ByChannels<Mirror> mirrorPixels; ///< null for loop 0, as is the next
    ByChannels<Mirror> mirrorChannels;
    /// By the size of a unit in bytes; null where no pixel has that size.
    std::array<Exchange, 8 * unrolledChannels + 1> exchange;
};

extern const Moves plainMoves;
extern const Moves moves256;
extern const Moves moves512;

/// The loops that suit the processor at hand.
const Moves& movesHere();

} // namespace zel::convert

#endif
