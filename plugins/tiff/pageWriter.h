#ifndef ZELTIFF_PAGEWRITER_H
#define ZELTIFF_PAGEWRITER_H

#include "pageReader.h"

namespace zeltiff {

/// False if pages cannot be written to the image: its samples are not those of the page, its strips
/// are too large to be made anew, or its blocks share JPEG tables.
bool canWritePages(const Layout& layout);

/// Writes the area's part of a page, given in full-page layout. What a tile holds beyond the image
/// repeats the last pixels. Fails with zelWRITEFAILED and errno, or as a read.
zelStatus writePage(Handle& handle, const Layout& layout, const PageArea& area,
                    const std::uint8_t* page);

/// True if some block of the image was never written.
bool hasUnwrittenBlocks(TIFF* tiff, const Layout& layout);

/// Gives every block that was never written zeros, so that any reader can read the image.
zelStatus writeMissingBlocks(Handle& handle, const Layout& layout);

} // namespace zeltiff

#endif
