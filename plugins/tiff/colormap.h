#ifndef ZELTIFF_COLORMAP_H
#define ZELTIFF_COLORMAP_H

#include "layout.h"

#include <zel/zelColormap.h>

#include <memory>

namespace zeltiff {

/// The colour map of the current directory, null if there is none: 3 channels for each of the
/// 2^bits indexes, zelUShort, or zelUChar if no value of the file passes 8 bits.
std::unique_ptr<zelColormap> readColormap(TIFF* tiff, const Layout& layout);

/// Stores a map of 1 or at least 3 channels. The values of 8-bit maps and of floats from 0 to 1 are
/// spread over 16 bits; others are clamped to them.
/// Fails with zelBADPARAMS for a map without entries, and with zelBADFIELDSET.
zelStatus writeColormap(Handle& handle, const Layout& layout, const zelColormap& map);

} // namespace zeltiff

#endif
