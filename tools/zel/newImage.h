#ifndef ZEL_TOOL_NEWIMAGE_H
#define ZEL_TOOL_NEWIMAGE_H

#include "convertOptions.h"
#include "imageFile.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>

#include <functional>
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

/// Makes an image with the attributes given, as zelFile::create and appendImg do.
using MakeImage = std::function<zelStatus(zelFileConfig&)>;

/// Makes an image for the source in the way nearest to what was asked for: what the options leave
/// open is settled by the library from the source, and where the format refuses that, the next
/// colour model, element type and compression that it takes. Throws a Failure, under `name`, that
/// tells what is refused.
void makeImage(const SourceImage& source, const ConvertOptions& options, zelFormat& format,
               const std::string& name, const MakeImage& make);

} // namespace zel::tool

#endif
