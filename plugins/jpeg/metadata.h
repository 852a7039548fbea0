#ifndef ZELJPEG_METADATA_H
#define ZELJPEG_METADATA_H

#include "kit/fields.h"

#include <cstdint>
#include <span>
#include <vector>

namespace zeljpeg {

/// What a file says of its image, apart from its pixels.
struct Metadata {
    zelkit::Fields fields;
    std::vector<std::uint8_t> iccProfile;
};

constexpr int commentTag = 0x10000; ///< above the numbers of EXIF

/// The tags: those of EXIF, and the comment.
std::span<const zelTagDescription> tagTable();

/// The resolution of a JFIF header: pixels in x and y by a unit of 0 (none), 1 (inch) or 2
/// (centimetre).
struct Density {
    int unit = 0;
    int x = 1;
    int y = 1;
};

/// Sets the fields of resolution that EXIF has not set; a density of 1 x 1 without unit says
/// nothing.
void takeDensity(const Density& density, zelkit::Fields& fields);
/// The resolution in whole numbers, as near as JFIF comes.
Density densityOf(const zelkit::Fields& fields);
/// Whether that is less than the fields say.
bool losesResolution(const zelkit::Fields& fields);

} // namespace zeljpeg

#endif
