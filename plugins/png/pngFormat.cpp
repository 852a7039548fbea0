#include "pngFile.h"

#include "kit/tableFormat.h"

namespace zelpng {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelRGB, 3}, {zelLuminance, 1}, {zelLuminanceAlpha, 2}, {zelRGBA, 4}, {zelRGBPalette, 1}};

// Bits go with luminance and palettes alone, and palettes not with 16 bits: createFile refuses.
constexpr zelkit::Capabilities pngCapabilities = {
    .types = zelBit | zelUChar | zelUShort,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .compressions = maskOf({zelZIP}),
    .colorModels = colorModels,
    .maxChannels = 4,
    .preferredCompression = zelZIP,
    .randomAccessWrite = false,
};

zelkit::FormatOf<PngFile> registration("PNG", pngCapabilities, tagTable());

} // namespace

} // namespace zelpng
