#ifndef ZEL_TOOL_IMAGECOMPARISON_H
#define ZEL_TOOL_IMAGECOMPARISON_H

#include <zel/zelFile.h>

#include <optional>
#include <string>

namespace zel::tool {

/// How far two images are apart, upright and channel by channel.
struct Comparison {
    /// What keeps the images from being compared by their numbers, such as another size.
    std::optional<std::string> mismatch;

    double meanError = 0; ///< of the absolute differences
    double rms = 0;       ///< root of the mean square
    double peak = 0;      ///< the distance from black to white, for the PSNR

    // The largest difference, the first if there are several. A NaN against a number, and an
    // infinity against anything else, differs infinitely.
    double largest = 0;
    int x = 0, y = 0, z = 0, channel = 0;
    double valueA = 0, valueB = 0;

    /// Peak signal-to-noise ratio in decibels; infinite for equal images.
    double psnr() const;
};

/// Compares in blocks. Throws a Failure under the name of the image that cannot be read.
Comparison compareImages(zelFile& a, const std::string& nameA, zelFile& b,
                         const std::string& nameB);

} // namespace zel::tool

#endif
