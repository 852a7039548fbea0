#include "tgaFile.h"

#include "kit/tableFormat.h"

namespace zeltga {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelLuminance, 1}, {zelRGBPalette, 1}, {zelLuminanceAlpha, 2}, {zelRGB, 3}, {zelRGBA, 4}};

constexpr zelkit::Capabilities tgaCapabilities = {
    .types = zelUChar,
    .orders = zelInterleaved,
    .orientations =
        maskOf({zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin}),
    .compressions = maskOf({zelNoCompression}),
    .colorModels = colorModels,
    .maxWidth = 65535,
    .maxHeight = 65535,
    .maxChannels = 4,
    .preferredOrientation = zelLowerLeftOrigin,
    .randomAccessWrite = false,
};

zelkit::FormatOf<TgaFile> registration("TGA", tgaCapabilities);

} // namespace

} // namespace zeltga
