#ifndef ZELKIT_EXIF_H
#define ZELKIT_EXIF_H

#include "kit/fields.h"

#include <zel/zelOrientation.h>

#include <cstdint>
#include <span>
#include <vector>

namespace zelkit {

/// Fields by the numbers that EXIF and TIFF give them; the others of the kit's table are known by
/// number alone.
enum ExifTag : int {
    exifImageDescription = 270,
    exifOrientation = 274,
    exifXResolution = 282,
    exifYResolution = 283,
    exifResolutionUnit = 296,
    exifSoftware = 305,
    exifArtist = 315,
    exifCopyright = 33432
};

/// Units of resolution, the values of exifResolutionUnit.
enum ResolutionUnit : int {
    resolutionNone = 1,
    resolutionPerInch = 2,
    resolutionPerCentimeter = 3
};

/// Reads the fields that the kit knows from an EXIF block, which begins with its byte order or with
/// "Exif" and two zeros. What is damaged is passed over. Any block is safe.
void readExif(std::span<const std::uint8_t> block, Fields& fields);

/// An EXIF block, from its byte order on, of those fields that EXIF has; empty if there is none.
std::vector<std::uint8_t> writeExif(const Fields& fields);

/// The orientation that the fields state; without one, zelUpperLeftOrigin.
zelOrientation orientationOf(const Fields& fields);

/// The tags that EXIF holds but for the orientation, which is an attribute of the file.
std::span<const zelTagDescription> exifTagDescriptions();

/// Those of them that tell the resolution.
std::span<const zelTagDescription> resolutionTagDescriptions();

} // namespace zelkit

#endif
