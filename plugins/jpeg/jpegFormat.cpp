#include "jpegFile.h"

#include "kit/tableFormat.h"

namespace zeljpeg {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3}, {zelLuminance, 1}, {zelCMYK, 4}};

constexpr zelkit::Capabilities jpegCapabilities = {
    .types = zelUChar,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .compressions = maskOf({zelJPEG}),
    .colorModels = colorModels,
    .maxWidth = JPEG_MAX_DIMENSION,
    .maxHeight = JPEG_MAX_DIMENSION,
    .maxChannels = 4,
    .preferredCompression = zelJPEG,
    .randomAccessWrite = false,
};

zelkit::FormatOf<JpegFile> registration("JPEG", jpegCapabilities, tagTable());

} // namespace

} // namespace zeljpeg
