#ifndef ZELPNG_LOOSECHUNKS_H
#define ZELPNG_LOOSECHUNKS_H

#include "metadata.h"

namespace zelpng {

/// Adds the texts, the time and the EXIF block, which may stand before or behind the pixels,
/// without decoding these; `name` is the file's in warnings. What is longer than 128 KiB, packed or
/// not, is left out with a warning, and what cannot be read is passed over.
void readLooseChunks(int fd, const char* name, Metadata& metadata);

} // namespace zelpng

#endif
