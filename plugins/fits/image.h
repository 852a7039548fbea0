#ifndef ZELFITS_IMAGE_H
#define ZELFITS_IMAGE_H

#include "kit/fields.h"

#include <zel/zelColor.h>
#include <zel/zelCoord.h>
#include <zel/zelDataSize.h>
#include <zel/zelError.h>

#include <cstdint>
#include <optional>

namespace zelfits {

/// Header and data of each unit fill whole blocks of this many bytes.
constexpr std::int64_t blockBytes = 2880;

/// How the numbers of an image are stored.
struct Storage {
    int bitpix = 8; ///< 8, 16, 32 or 64 bits of integer; -32 or -64 of a float
    double scale = 1;
    double zero = 0;
    std::optional<std::int64_t> blank; ///< the integer that stands for no value

    int bytes() const { return (bitpix < 0 ? -bitpix : bitpix) / 8; }
};

/// One image unit of a file.
struct Image {
    int unit = 1; ///< its number in the file, from 1, other units counted too
    Storage storage;
    zelSize size;
    zelColorModel colorModel = zelLuminance;
    std::int64_t dataOffset = 0;
    std::int64_t dataBytes = 0;
    zelStatus status = zelOKAY; ///< why it cannot be shown
    zelkit::Fields tags;        ///< the keywords that the format shows as tags
};

} // namespace zelfits

#endif
