#ifndef ZEL_TOOL_CONVERTOPTIONS_H
#define ZEL_TOOL_CONVERTOPTIONS_H

#include "pixelPipeline.h"

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelOrientation.h>
#include <zel/zelTile.h>

#include <optional>
#include <string>
#include <vector>

namespace zel::tool {

/// What the user asked for; what is empty is left to the library.
struct ConvertOptions {
    std::optional<std::string> format;
    std::optional<zelDataType> type;
    std::optional<zelOrder> order;
    std::optional<zelOrientation> orientation;
    std::optional<zelColorModel> model;
    std::optional<zelCompression> compression;
    std::optional<zelXY<int>> page;
    std::optional<zelTile3D<int>> region; ///< seen upright; an `nz` of 0 means all planes
    std::vector<int> channels;            ///< empty means all
    bool allImages = false;
    bool dithers = true; ///< where colours are reduced to a palette
    bool strip = false;  ///< leave out what is not needed to show the pixels
    PixelPipeline::Options pixels;
};

} // namespace zel::tool

#endif
