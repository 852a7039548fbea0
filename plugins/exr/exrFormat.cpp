#include "exrFile.h"
#include "tags.h"

#include "kit/tableFormat.h"

#include <algorithm>

namespace zelexr {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelRGB, 3}, {zelLuminance, 1}, {zelLuminanceAlpha, 2}, {zelRGBA, 4}, {zelMultiSpectral, 0}};

// OpenEXR's coordinates stay below 2^30.
constexpr int longestEdge = (1 << 30) - 1;

constexpr zelkit::Capabilities exrCapabilities = {
    .types = zelFloat | zelUInt,
    .orders = zelInterleaved,
    .orientations = maskOf({zelUpperLeftOrigin}),
    .compressions = maskOf({zelNoCompression, zelZIP}),
    .colorModels = colorModels,
    .maxWidth = longestEdge,
    .maxHeight = longestEdge,
    .maxChannels = 1024,
    .preferredType = zelFloat,
    .preferredCompression = zelZIP,
    .randomAccessWrite = false,
};

// Pages are bands, or tiles that are not too small to pay for their own header.
class ExrFormat : public zelkit::TableFormat {
public:
    using TableFormat::TableFormat;

    int pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ, int pageC,
                            zelOrientation at) override {
        constexpr int smallestTile = 16;
        const bool tiles = pageX < x && pageX >= smallestTile && pageY >= std::min(y, smallestTile);
        return TableFormat::pageSizeIsSupported(tiles ? pageX : x, y, z, c, pageX, pageY, pageZ,
                                                pageC, at);
    }
};

zelkit::FormatOf<ExrFile, ExrFormat> registration("EXR", exrCapabilities, tagTable());

} // namespace

} // namespace zelexr
