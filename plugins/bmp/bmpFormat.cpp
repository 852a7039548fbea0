#include "bmpFile.h"

#include "kit/exif.h"
#include "kit/tableFormat.h"

namespace zelbmp {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelLuminance, 1}, {zelNegative, 1}, {zelRGBPalette, 1}, {zelRGB, 3}, {zelRGBA, 4}};

// Not every combination has a form: createFile refuses the others.
constexpr zelkit::Capabilities bmpCapabilities = {
    .types = zelBit | zelUChar,
    .orders = zelInterleaved,
    .orientations = maskOf({zelUpperLeftOrigin, zelLowerLeftOrigin}),
    .compressions = maskOf({zelNoCompression}),
    .colorModels = colorModels,
    .maxChannels = 4,
    .preferredOrientation = zelLowerLeftOrigin,
    .randomAccessWrite = false,
};

zelkit::FormatOf<BmpFile> registration("BMP", bmpCapabilities, zelkit::resolutionTagDescriptions());

} // namespace

} // namespace zelbmp
