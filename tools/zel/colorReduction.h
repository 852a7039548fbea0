#ifndef ZEL_TOOL_COLORREDUCTION_H
#define ZEL_TOOL_COLORREDUCTION_H

#include "colorHistogram.h"

#include <zel/zelColormap.h>

namespace zel::tool {

using Rgb = std::array<std::uint8_t, 3>;

/// A palette for indexes of 8 bits.
struct ReducedPalette {
    std::vector<Rgb> colors; ///< those of the indexes from 0 on
    bool hasTransparent;     ///< whether the index behind them stands for no colour at all
    bool exact;              ///< whether it has all colours of the image

    int transparentIndex() const { return static_cast<int>(colors.size()); }
    zelColormap colormap() const;
};

/// The colours of an image if they fit into 256 entries, else those that come nearest to it: the
/// sum of the squared distances is made small.
ReducedPalette reduceColors(const ColorHistogram& histogram);

} // namespace zel::tool

#endif
