#ifndef ZELTIFF_YCC_H
#define ZELTIFF_YCC_H

#include "layout.h"

#include <cstdint>
#include <vector>

namespace zeltiff {

/// Turns luma and chroma of 8 bits, stored in clumps of pixels that share their chroma, into RGB.
class YccToRgb {
public:
    /// Reads coefficients and reference values of the current directory.
    /// Fails with zelCORRUPTED if they make no conversion.
    zelStatus init(TIFF* tiff);

    /// Turns `rows` rows, stored from the start of a group on, into rows of `rowBytes` bytes.
    void convert(const Layout& layout, const std::uint8_t* stored, int rows, std::uint8_t* rgb,
                 std::size_t rowBytes) const;

private:
    TIFFYCbCrToRGB* tables() const;
    void convertClump(const Layout& layout, const std::uint8_t* clump, int columns, int rows,
                      std::uint8_t* rgb, std::size_t rowBytes) const;

    /// libtiff's tables lie behind the structure that points into them.
    mutable std::vector<std::max_align_t> memory_;
};

} // namespace zeltiff

#endif
