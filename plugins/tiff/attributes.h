#ifndef ZELTIFF_ATTRIBUTES_H
#define ZELTIFF_ATTRIBUTES_H

#include "layout.h"

namespace zeltiff {

/// What the format arguments in a file's name ask for.
struct Options {
    bool bigTiff = false;
    int predictor = 1;
    int quality = 90;
    int level = 6;
    int rowsPerStrip = 0; ///< 0: what the page size says
};

/// Makes a new image's attributes such that the format can store them: compression that does not
/// suit the samples becomes deflate, with a warning that names the file, and the page size follows
/// order, compression and options.
/// Fails with zelUNSUPPORTEDBYFORMAT for what has no form in a file, and zelBADPARAMS for a
/// predictor that does not suit.
zelStatus settleAttributes(Attributes& image, const Options& options, const char* fileName);

/// True if a new file with this first image has to be a BigTIFF to be sure to hold it.
bool needsBigTiff(const Attributes& image);

/// Describes the image in libtiff's current directory, which is new, and writes the directory.
zelStatus writeDirectory(Handle& handle, const Attributes& image, const Options& options);

/// Sets what the current directory's codec takes from the options.
void setUpCodec(TIFF* tiff, const Options& options);

} // namespace zeltiff

#endif
