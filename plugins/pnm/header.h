#ifndef ZELPNM_HEADER_H
#define ZELPNM_HEADER_H

#include "tokens.h"

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>

#include <cstdint>
#include <string>

namespace zelpnm {

/// The formats of the family.
enum class Kind {
    pbm,
    pgm,
    ppm,
    pam,
    pfm
};

/// What stands in front of an image's samples.
struct Header {
    Kind kind = Kind::pgm;
    bool plain = false; ///< samples as text; PBM, PGM and PPM only
    int width = 0;
    int height = 0;
    int channels = 1;
    int maxval = 255; ///< 1 to 65535; a PFM has none
    zelColorModel colorModel = zelLuminance;
    bool littleEndian = true;      ///< of a PFM
    double scale = 1;              ///< of a PFM: the number that stands for full intensity
    std::int64_t rasterOffset = 0; ///< where in the file the samples begin

    /// The element type of the samples: a PFM holds floats, and a maxval of 1 means bits.
    zelDataType type() const {
        if (kind == Kind::pfm)
            return zelFloat;
        return maxval == 1 ? zelBit : maxval <= 255 ? zelUChar : zelUShort;
    }
};

/// Reads the header that begins at the reader's position, and leaves the reader behind it.
/// Every number is at least 1. Fails with zelBADMAGIC if no format of the family begins there, with
/// zelCORRUPTED on a header that makes no sense, with zelPREMATUREEOF if the file ends in it.
zelStatus readHeader(ByteReader& reader, Header& header);

/// The header's text. `rasterOffset` does not count.
std::string formatHeader(const Header& header);

} // namespace zelpnm

#endif
