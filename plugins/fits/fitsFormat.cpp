#include "fitsFile.h"

#include "kit/tableFormat.h"

namespace zelfits {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelLuminance, 1}, {zelRGB, 3}, {zelRGBA, 4}, {zelMultiSpectral, 0}};

constexpr zelkit::Capabilities fitsCapabilities = {
    .types = zelUChar | zelChar | zelUShort | zelShort | zelUInt | zelInt | zelFloat | zelDouble,
    .orders = zelSeparate,
    .orientations = maskOf({zelLowerLeftOrigin}),
    .compressions = maskOf({zelNoCompression}),
    .colorModels = colorModels,
    .maxWidth = INT_MAX / static_cast<int>(sizeof(double)),
    .maxDepth = INT_MAX,
    .preferredType = zelUChar,
    .preferredOrder = zelSeparate,
    .preferredOrientation = zelLowerLeftOrigin,
};

// Pages are bands of rows of one channel of one plane.
class FitsFormat : public zelkit::TableFormat {
public:
    using TableFormat::TableFormat;

    int pageSizeIsSupported(int x, int y, int z, int /*c*/, int pageX, int pageY, int pageZ,
                            int pageC, zelOrientation at) override {
        return TableFormat::pageSizeIsSupported(x, y, z, 1, pageX, pageY, pageZ, pageC, at);
    }
    void getPreferredPageSize(int x, int y, int z, int /*c*/, int& pageX, int& pageY, int& pageZ,
                              int& pageC, zelOrientation at) override {
        TableFormat::getPreferredPageSize(x, y, z, 1, pageX, pageY, pageZ, pageC, at);
    }
};

zelkit::FormatOf<FitsFile, FitsFormat> registration("FITS", fitsCapabilities, tagTable());

} // namespace

} // namespace zelfits
