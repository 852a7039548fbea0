#ifndef ZELHDR_HEADER_H
#define ZELHDR_HEADER_H

#include "kit/fields.h"

#include <zel/zelOrientation.h>
#include <zel/zelTag.h>

#include <cstdint>
#include <span>
#include <string>

namespace zelhdr {

/// What a file says of its image.
struct Header {
    int width = 0;  ///< pixels of a scanline, whichever way it runs
    int height = 0; ///< scanlines
    zelOrientation orientation = zelUpperLeftOrigin;
    bool xyz = false; ///< CIE X, Y, Z instead of red, green, blue
    zelkit::Fields fields;
    std::int64_t dataOffset = 0;
};

/// The tags, in `fields`.
std::span<const zelTagDescription> tagTable();

/// Reads the header, and holds the sizes against the file's length.
/// zelBADMAGIC, zelCORRUPTED, zelPREMATUREEOF; zelUNSUPPORTEDBYFILE with a warning that bears
/// `fileName`: pixels of another form.
zelStatus readHeader(int fd, const char* fileName, Header& header);

/// The bytes before the first scanline of a new file.
std::string formatHeader(const Header& header);

} // namespace zelhdr

#endif
