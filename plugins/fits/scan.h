#ifndef ZELFITS_SCAN_H
#define ZELFITS_SCAN_H

#include "image.h"
#include "tags.h"

#include <vector>

namespace zelfits {

/// The images of a file, and where its last unit ends.
struct Contents {
    std::vector<Image> images;
    std::int64_t end = 0;
};

/// Finds the image units of the file behind `fd`. CFITSIO never sees the file's own name, in which
/// it would find filters, other files and network addresses. What it complains of is reported as
/// warnings for the file `name`.
/// Fails with zelCORRUPTED, zelPREMATUREEOF or zelREADFAILED if the first header cannot be read,
/// and with zelUNSUPPORTEDBYFILE if the file holds no image.
zelStatus scan(int fd, const char* name, Contents& contents);

/// Writes a tag of the image into its header, or takes it away there. The data may move for it.
zelStatus rewriteTag(int fd, const char* name, const Image& image, int tag);

} // namespace zelfits

#endif
