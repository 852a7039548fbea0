#ifndef ZEL_TOOL_TRANSFER_H
#define ZEL_TOOL_TRANSFER_H

#include "paletteMapper.h"
#include "pixelPipeline.h"
#include "progress.h"
#include "sourceImage.h"

#include <zel/zelFile.h>

#include <string>

namespace zel::tool {

/// The pixels of one image on their way into another.
struct Transfer {
    const SourceImage& source;
    zelFile& target;
    std::string targetName;
    PlaneView view;               ///< what is taken of the source, in the target's orientation
    PixelLayout out;              ///< how the pixels are written
    PixelPipeline& pipeline;      ///< what happens between
    PaletteMapper* mapper;        ///< turns what the pipeline gives into indexes, unless null
    std::string scratchDirectory; ///< for a scratch file, if one is needed
    Progress& progress;           ///< is advanced by the pixels that were moved
};

/// Moves all pixels, in blocks of whole pages, so that memory does not grow with the image. Throws
/// a Failure.
void transferPixels(const Transfer& transfer);

} // namespace zel::tool

#endif
