#ifndef ZELTGA_HEADER_H
#define ZELTGA_HEADER_H

#include "kit/packedPixels.h"

#include <zel/zelColor.h>
#include <zel/zelError.h>
#include <zel/zelOrientation.h>

#include <cstdint>
#include <vector>

namespace zeltga {

/// What a file says of its image.
struct Header {
    int width = 0;
    int height = 0;
    zelColorModel colorModel = zelLuminance;
    int pixelBytes = 1; ///< of a pixel as it is stored
    bool runLengths = false;
    zelOrientation orientation = zelLowerLeftOrigin;
    std::vector<std::uint8_t> colors; ///< of a palette: for every index of one byte
    int colorChannels = 3;            ///< of an entry: red, green, blue and perhaps alpha
    std::int64_t dataOffset = 0;

    std::int64_t rowBytes() const { return std::int64_t{width} * pixelBytes; }
    /// The form of pixels of zelRGB and zelRGBA.
    zelkit::PackedPixels packing() const;
};

/// Reads the header, and holds the sizes against the file's length.
/// zelBADMAGIC: no such file; zelPREMATUREEOF; zelUNSUPPORTEDBYFILE with a warning that bears
/// `fileName`: interleaved rows.
zelStatus readHeader(int fd, const char* fileName, Header& header);

/// The bytes before the first row of a new file; sets `dataOffset`.
std::vector<std::uint8_t> formatHeader(Header& header);

} // namespace zeltga

#endif
