#ifndef ZEL_BENCH_CONVERT_CASES_H
#define ZEL_BENCH_CONVERT_CASES_H

// What the tables of conversions hold.

#include <zel/zelConverter.h>

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

/// One side of a case: a square of pixels.
struct Layout {
    zelDataType type = zelUChar;
    zelOrder order = zelInterleaved;
    int channels = 3;
    const int* list = nullptr;
    int flip = zelNoFlip;
    int transpose = 0;

    std::size_t bytes(int side) const { return zelDataSize(type, side * side * channels); }

    zelConverter describe(void* data, int side) const {
        zelConverter area(data, type, order, channels, list, side, side, 1, 0, 0, 0, 0);
        area.setTransposeXY(transpose);
        area.setFlip(static_cast<zelFlip>(flip));
        return area;
    }
};

struct Case {
    std::string name;
    Layout from;
    Layout to;
};

/// All 81 roads between types, in one layout.
std::vector<Case> roads();
/// Changes of layout.
std::vector<Case> layouts();

/// Ordinary values: small numbers with fractions as reals, anything as integers.
std::vector<std::byte> sourceData(zelDataType type, std::size_t size);

} // namespace bench

#endif
