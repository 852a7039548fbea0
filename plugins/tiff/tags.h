#ifndef ZELTIFF_TAGS_H
#define ZELTIFF_TAGS_H

#include "handle.h"

#include <zel/zelTag.h>

#include <cstdarg>
#include <span>

namespace zeltiff {

/// The tags that clients may read and write, by libtiff's numbers.
std::span<const zelTagDescription> tagTable();

/// Fetches a tag of the current directory through one pointer for each element. Strings stay the
/// file's and are good until the tag is set or another image is shown.
/// Fails with zelBADFIELDGET if the image has no such tag, zelUNSUPPORTEDBYFORMAT for a number that
/// is not in the table.
zelStatus getTag(TIFF* tiff, int tag, va_list arguments);

/// Sets a tag from one value for each element: int, double or char*. A null string takes the tag
/// away. Fails with zelBADFIELDSET for a value that the tag cannot hold.
zelStatus setTag(Handle& handle, int tag, va_list arguments);

} // namespace zeltiff

#endif
