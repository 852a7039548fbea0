#include "hdrFile.h"

#include "kit/tableFormat.h"

namespace zelhdr {

namespace {

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3}, {zelMultiSpectral, 3}};

constexpr zelkit::Capabilities hdrCapabilities = {
    .types = zelFloat,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    // Run lengths of the format's own, which have no name.
    .compressions = zelkit::maskOf({zelUnknownCompression}),
    .colorModels = colorModels,
    .maxChannels = 3,
    .preferredType = zelFloat,
    .preferredCompression = zelUnknownCompression,
    .randomAccessWrite = false,
};

zelkit::FormatOf<HdrFile> registration("HDR", hdrCapabilities, tagTable());

} // namespace

} // namespace zelhdr
