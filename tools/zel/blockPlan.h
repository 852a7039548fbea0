#ifndef ZEL_TOOL_BLOCKPLAN_H
#define ZEL_TOOL_BLOCKPLAN_H

#include <zel/zelFile.h>
#include <zel/zelTile.h>

#include <cstdint>
#include <vector>

namespace zel::tool {

/// A stretch along one axis.
struct Segment {
    int start;
    int length;
};

/// A plane cut into blocks. They are visited in the order of the segments, with rows of blocks
/// outermost unless `xOuter` says otherwise.
struct BlockGrid {
    std::vector<Segment> x;
    std::vector<Segment> y;
    bool xOuter = false;

    /// The blocks in the order of their visit.
    std::vector<zelTile2D<int>> blocks() const;
};

/// A rectangle of an image, in the frame of an orientation.
struct PlaneView {
    zelOrientation orientation;
    zelTile2D<int> tile;
};

/// Blocks of whole pages of a file, at most about `maxPixels` pixels each but a page at least, in
/// the order in which the pages lie in the file. The view is that of the part to cover; the blocks
/// are counted from its origin.
BlockGrid pageGrid(const zelFile& file, const PlaneView& view, std::int64_t maxPixels);

/// Squares of at most `maxPixels` pixels.
BlockGrid squareGrid(int nx, int ny, std::int64_t maxPixels);

/// How the blocks of an image are to be moved into another.
struct BlockPlan {
    BlockGrid grid;       ///< the blocks to write
    bool throughScratch;  ///< whether reading them directly would read the source over and over
    BlockGrid sourceGrid; ///< the blocks to read, if through a scratch file
};

/// Plans for moving the view of `source` into all of `target`. The view is in the orientation of
/// the target.
BlockPlan planBlocks(const zelFile& source, const PlaneView& view, const zelFile& target,
                     std::int64_t maxPixels);

} // namespace zel::tool

#endif
