#include "webpFile.h"

#include "kit/tableFormat.h"

#include <webp/encode.h>

namespace zelwebp {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3}, {zelRGBA, 4}};

// The two compressions of WebP go by the names of their nearest relations: zelZIP loses nothing,
// zelJPEG does.
constexpr zelkit::Capabilities webpCapabilities = {
    .types = zelUChar,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .compressions = maskOf({zelZIP, zelJPEG}),
    .colorModels = colorModels,
    .maxWidth = WEBP_MAX_DIMENSION,
    .maxHeight = WEBP_MAX_DIMENSION,
    .maxChannels = 4,
    .preferredCompression = zelZIP,
    .randomAccessWrite = false,
};

zelkit::FormatOf<WebpFile> registration("WEBP", webpCapabilities, tagTable());

} // namespace

} // namespace zelwebp
