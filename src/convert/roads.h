#ifndef ZEL_CONVERT_ROADS_H
#define ZEL_CONVERT_ROADS_H

// The 81 roads from one element type to another, each a function that converts one row. Signed and
// unsigned destinations of one width share theirs, since only the low bits are stored.

#include <zel/zelDataSize.h>

namespace zel::convert {

/// What all rows of a walk have in common. Steps count elements and may be 0 or negative.
struct RowShape {
    void* to;
    const void* from;
    int toStep;
    int fromStep;
    int count;
};

/// Converts one row, given the element indexes at which it begins on both sides. It touches the
/// row's own elements and nothing else; of `zelBit` data the neighbours in a byte keep their
/// values. The two rows must not overlap.
using Road = void (*)(const RowShape& row, int to, int from);

/// The road from `from` to a destination, or null if `from` is not one of the nine types.
Road roadToBit(zelDataType from);
Road roadToInteger8(zelDataType from);
Road roadToInteger16(zelDataType from);
Road roadToInteger32(zelDataType from);
Road roadToFloat(zelDataType from);
Road roadToDouble(zelDataType from);

/// The road between any two of the nine types, or null.
Road roadBetween(zelDataType to, zelDataType from);

} // namespace zel::convert

#endif
