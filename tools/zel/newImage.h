#ifndef ZEL_TOOL_NEWIMAGE_H
#define ZEL_TOOL_NEWIMAGE_H

#include "sourceImage.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>

#include <functional>
#include <string>

namespace zel::tool {

/// Whether a palette image of `type` can have the palette and the indexes of the source, so that
/// its colours need no new ones.
bool keepsIndexes(const SourceImage& source, const ConvertOptions& options, zelDataType type);

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
