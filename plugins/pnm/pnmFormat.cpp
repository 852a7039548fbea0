#include "pnmFile.h"

#include "kit/tableFormat.h"

namespace zelpnm {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelLuminance, 1}, {zelNegative, 1}, {zelLuminanceAlpha, 2}, {zelRGB, 3},
    {zelRGBA, 4},      {zelCMYK, 4},     {zelMultiSpectral, 0},
};

// What at least one format of the family can store. Not every combination has one: createFile
// refuses the others.
constexpr zelkit::Capabilities pnmCapabilities = {
    .types = zelBit | zelUChar | zelUShort | zelFloat,
    .orders = zelInterleaved,
    .orientations = maskOf({zelUpperLeftOrigin, zelLowerLeftOrigin}),
    .compressions = maskOf({zelNoCompression}),
    .colorModels = colorModels,
};

zelkit::FormatOf<PnmFile> registration("PNM", pnmCapabilities);

} // namespace

} // namespace zelpnm
