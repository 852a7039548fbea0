#ifndef ZEL_TOOL_METADATA_H
#define ZEL_TOOL_METADATA_H

#include "newImage.h"
#include "pixelPipeline.h"

#include <string>
#include <vector>

namespace zel::tool {

/// Gives a new image what the source has beside its pixels, as far as both formats can: statistics
/// and scale values (as the new image's numbers), ICC profile, and tags by name. The result names
/// what could not be carried.
std::vector<std::string> carryMetadata(const SourceImage& source, zelFile& target,
                                       const ValueMap& values);

} // namespace zel::tool

#endif
