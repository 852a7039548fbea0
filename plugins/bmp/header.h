#ifndef ZELBMP_HEADER_H
#define ZELBMP_HEADER_H

#include "kit/packedPixels.h"
#include "kit/resolution.h"

#include <zel/zelColor.h>
#include <zel/zelError.h>

#include <cstdint>
#include <vector>

namespace zelbmp {

/// What a file says of its image.
struct Header {
    int width = 0;
    int height = 0;
    bool topDown = false;
    int bits = 0; ///< of a pixel: 1, 2, 4, 8, 16, 24 or 32
    bool runLengths = false;
    zelkit::PackedPixels::Masks masks{}; ///< of pixels of 16 bits and more
    std::vector<std::uint8_t> colors;    ///< red, green, blue of 2^bits indexes; else empty
    std::int64_t dataOffset = 0;
    std::int64_t codedBytes = 0;    ///< of a new file's run lengths
    std::int64_t profileOffset = 0; ///< of an embedded ICC profile
    std::int64_t profileBytes = 0;  ///< 0: none
    zelkit::PerMeter resolution;

    /// Of a row that is stored without run lengths.
    std::int64_t rowBytes() const;
    /// By the palette: black and white, or 256 greys in their order, are no palette.
    zelColorModel colorModel() const;
};

/// Reads the header, and holds the sizes against the file's length.
/// zelBADMAGIC, zelCORRUPTED, zelPREMATUREEOF; zelUNSUPPORTEDBYFILE with a warning that bears
/// `fileName`: an encoding that is not known here.
zelStatus readHeader(int fd, const char* fileName, Header& header);

/// The bytes before the first row of a new file; sets `dataOffset`, and `profileOffset`, which lies
/// behind the last row, for a profile of `profileBytes` bytes. Empty if the file would pass
/// the 4 GiB that the header can state.
std::vector<std::uint8_t> formatHeader(Header& header);

/// Red, green, blue of `entries` indexes: grey levels from 0 to 255.
std::vector<std::uint8_t> greyColors(int entries);

} // namespace zelbmp

#endif
