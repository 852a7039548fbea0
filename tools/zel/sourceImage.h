#ifndef ZEL_TOOL_SOURCEIMAGE_H
#define ZEL_TOOL_SOURCEIMAGE_H

#include "blockPlan.h"
#include "convertOptions.h"
#include "imageFile.h"

#include <optional>
#include <string>
#include <vector>

namespace zel::tool {

/// The part of an image that is to become a new one.
struct SourceImage {
    zelFile& file;
    std::string name;
    zelTile3D<int> region;     ///< seen upright
    std::vector<int> channels; ///< the channels that are taken
    PixelLayout layout;        ///< how these are read
    std::optional<Palette> palette;
};

/// Finds out what of the current image of `file` is taken. Throws a Failure if there is no such
/// part.
SourceImage describeSource(zelFile& file, const std::string& name, const ConvertOptions& options);

/// The numbers that the image is to be shown by, where it names others than its type's full range.
std::optional<ValueRange> shownRange(const SourceImage& source);

bool hasAlpha(const SourceImage& source);

/// Whether there is a way from one colour model to another, be it by a reduction of the colours.
bool canBecome(zelColorModel from, zelColorModel to);

/// The part that is taken, in an orientation.
PlaneView viewOf(const SourceImage& source, zelOrientation orientation);

/// Reads a block of the view, which is counted from the view's origin, of a plane that is counted
/// from the first one taken. Throws a Failure.
void readBlock(const SourceImage& source, const PlaneView& view, int plane,
               const zelTile2D<int>& block, std::byte* pixels);

} // namespace zel::tool

#endif
