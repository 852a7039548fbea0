#include "exrFile.h"
#include "tags.h"

#include "kit/tableFormat.h"

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

zelkit::FormatOf<ExrFile> registration("EXR", exrCapabilities, tagTable());

} // namespace

} // namespace zelexr
