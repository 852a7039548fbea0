#ifndef ZEL_TOOL_PALETTEMAPPER_H
#define ZEL_TOOL_PALETTEMAPPER_H

#include "colorReduction.h"

#include <zel/zelTile.h>

namespace zel::tool {

/// Turns colours into the indexes of a palette.
class PaletteMapper {
public:
    /// With `dithers`, the error of a pixel is made up for by its neighbours.
    PaletteMapper(ReducedPalette palette, bool dithers);

    /// Maps a block of red, green, blue and alpha, 8 bits each. The errors of a block go on into
    /// the one below it if that comes next.
    void map(const std::uint8_t* pixels, const zelTile2D<int>& block, std::uint8_t* indexes);

private:
    /// A cube of colours, and where the indexes begin that are nearest to any of them.
    struct Cell {
        std::uint32_t begin = 0;
        std::uint32_t end = 0; ///< equal to `begin` until the cell is needed
    };
    /// What neighbours owe a pixel, in sixteenths.
    using Debt = std::array<int, 3>;

    void mapRow(const std::uint8_t* pixels, std::uint8_t* indexes, size_t count);
    std::uint8_t nearest(const Rgb& color);
    void findCandidates(Cell& cell, const Rgb& inside);

    ReducedPalette palette;
    bool dithers;
    std::vector<Cell> cells;
    std::vector<std::uint8_t> candidates; ///< of all cells
    std::vector<Debt> debts;              ///< of the row to map, with a place more at both ends
    std::vector<Debt> below;              ///< of the row behind it
    zelTile2D<int> last;                  ///< the block mapped last
};

} // namespace zel::tool

#endif
