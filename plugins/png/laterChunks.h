#ifndef ZELPNG_LATERCHUNKS_H
#define ZELPNG_LATERCHUNKS_H

#include "metadata.h"

namespace zelpng {

/// Adds the texts, the time and the EXIF block that stand behind the pixels, without decoding
/// these; `name` is the file's in warnings. Chunks of more than 2 MiB together are passed over, and
/// so is what cannot be read.
void readLaterChunks(int fd, const char* name, Metadata& metadata);

} // namespace zelpng

#endif
