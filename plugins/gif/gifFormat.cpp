#include "gifFile.h"

#include "kit/tableFormat.h"

namespace zelgif {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGBPalette, 1}, {zelLuminance, 1}};

constexpr zelkit::Capabilities gifCapabilities = {
    .types = zelBit | zelUChar,
    .orders = zelInterleaved,
    .orientations = maskOf({zelUpperLeftOrigin}),
    .compressions = maskOf({zelLZW}),
    .colorModels = colorModels,
    .maxWidth = 65535,
    .maxHeight = 65535,
    .maxChannels = 1,
    .preferredCompression = zelLZW,
    .randomAccessWrite = false,
};

zelkit::FormatOf<GifFile> registration("GIF", gifCapabilities, tagTable());

} // namespace

} // namespace zelgif
