#ifndef ZEL_TOOL_COLORSURVEY_H
#define ZEL_TOOL_COLORSURVEY_H

#include "colorHistogram.h"
#include "sourceImage.h"

namespace zel::tool {

/// How pixels are read to be reduced to a palette.
constexpr PixelLayout kReducibleLayout{zelUChar, zelRGBA, 4};

/// Counts the colours of what is taken of an image, as 8-bit numbers, in a pass of its own. Throws
/// a Failure.
ColorHistogram surveyColors(const SourceImage& source, const PixelPipeline::Options& options,
                            const std::string& targetName);

} // namespace zel::tool

#endif
