#ifndef ZEL_CONVERT_RELAYOUT_H
#define ZEL_CONVERT_RELAYOUT_H

// Changes of layout, in pieces that fit the processor's first cache.

#include <zel/zelDataSize.h>

#include <cstddef>
#include <span>

namespace zel::convert {

/// Slots that a side may have here.
constexpr int maxSlots = 64;

/// One side of a change. Steps count bytes and may be negative.
template <class Byte>
struct Side {
    Byte* first; ///< slot 0 of the box's corner
    std::ptrdiff_t x, y, z, slot;
    int slots;
    bool interleaved; ///< the slots of a pixel are neighbours; otherwise those of a row are
    bool transposed;  ///< rows in memory run along y
    zelDataType type;
};

/// A slot of the destination, and the slot of the source that feeds it.
struct Feed {
    int to;
    int from;
};

struct Change {
    Side<std::byte> to;
    Side<const std::byte> from;
    int nx, ny, nz;
    std::span<const Feed> feeds; ///< in rising order of the destination's slots
};

/// Converts the box, or answers false and does nothing if these loops don't serve: for packed
/// bits, many slots, pixels of which only some slots are written, and boxes too small to gain.
bool relayout(const Change& change);

} // namespace zel::convert

#endif
