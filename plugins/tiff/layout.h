#ifndef ZELTIFF_LAYOUT_H
#define ZELTIFF_LAYOUT_H

#include "handle.h"
#include "samples.h"

#include <zel/zelColor.h>
#include <zel/zelCoord.h>
#include <zel/zelOrientation.h>

#include <cstdint>

namespace zeltiff {

/// What zelFile holds of an image.
struct Attributes {
    zelSize size;
    zelSize pageSize;
    zelDataType type = zelUChar;
    zelOrder order = zelInterleaved;
    zelColorModel model = zelLuminance;
    zelOrientation orientation = zelUpperLeftOrigin;
    zelCompression compression = zelNoCompression;
};

/// How libtiff's current directory stores its image, and how that becomes pages. A block is a strip
/// or a tile; with separate planes it holds one channel.
struct Layout {
    Attributes attributes;
    SampleFormat samples;
    int storedBits = 8;
    bool palette = false;

    bool tiled = false;
    bool separate = false;
    std::uint32_t blockWidth = 0;
    std::uint32_t blockHeight = 0; ///< no more than the image has, if a strip
    int blockChannels = 1;
    std::uint32_t blockCount = 0;

    /// Rows are stored together in groups of `groupRows`, `groupBytes` each. A group is one row
    /// unless chroma is subsampled in y.
    int groupRows = 1;
    int groupColumns = 1;
    std::int64_t groupBytes = 0;
    bool sharedTables = false; ///< JPEG tables that lie outside the blocks
    bool ycc = false;          ///< luma and chroma, to be turned into RGB here

    bool raw = false;     ///< not compressed: rows are read straight from the file
    bool banded = false;  ///< compressed strips that are decoded row by row into several pages
    bool direct = false;  ///< rows lie in the page as they come out of the file
    bool swap = false;    ///< raw samples are in the other byte order
    bool reverse = false; ///< raw bytes have their bits in the other order

    std::int64_t bytesOf(std::int64_t rows) const {
        return (rows + groupRows - 1) / groupRows * groupBytes;
    }
    /// Elements in a row of a page.
    std::size_t pageRowElements() const {
        return static_cast<std::size_t>(attributes.pageSize.x) *
               static_cast<std::size_t>(attributes.pageSize.c);
    }
};

/// How a file is going to be used.
enum class Use {
    Read,   ///< an existing file, to read
    Update, ///< an existing file, to change
    Create, ///< a file made here: its sizes need no justification by its length
};

/// Reads the layout of the current directory, and sets libtiff's codec up for it.
/// Fails with zelCORRUPTED for what contradicts itself or the file's length, and with
/// zelUNSUPPORTEDBYFILE for what has no form in pages.
zelStatus readLayout(Handle& handle, Use use, Layout& layout);

/// The form of compression that has this number in the file.
zelCompression compressionOf(int scheme);

} // namespace zeltiff

#endif
