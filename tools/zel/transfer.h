#ifndef ZEL_TOOL_TRANSFER_H
#define ZEL_TOOL_TRANSFER_H

#include "blockPlan.h"
#include "pixelPipeline.h"
#include "progress.h"

#include <zel/zelFile.h>

#include <string>
#include <vector>

namespace zel::tool {

/// The pixels of one image on their way into another.
struct Transfer {
    zelFile& source;
    std::string sourceName;
    zelFile& target;
    std::string targetName;
    PlaneView view;               ///< what is taken of the source, in the target's orientation
    int firstPlane;               ///< the first plane that is taken
    int planes;                   ///< how many
    std::vector<int> channels;    ///< the source's channels that are taken, in their order
    PixelLayout in;               ///< how they are read
    PixelLayout out;              ///< how they are written
    PixelPipeline& pipeline;      ///< what happens between
    std::string scratchDirectory; ///< for a scratch file, if one is needed
    Progress& progress;           ///< is advanced by the pixels that were moved
};

/// Moves all pixels, in blocks of whole pages, so that memory does not grow with the image. Throws
/// a Failure.
void transferPixels(const Transfer& transfer);

} // namespace zel::tool

#endif
