#ifndef ZEL_TOOL_CONVERTIMAGE_H
#define ZEL_TOOL_CONVERTIMAGE_H

#include "convertOptions.h"

#include <string>

namespace zel::tool {

/// Converts an image, or all images of a file, to a new file. Both are full names. The old file of
/// the output's name is untouched unless all goes well. Throws a Failure or a UsageError.
void convertImage(const std::string& in, const std::string& out, const ConvertOptions& options);

} // namespace zel::tool

#endif
