#include "blockPlan.h"

#include <zel/zelFormat.h>

#include <algorithm>
#include <cmath>

namespace zel::tool {
namespace {

/// A source whose pages are read more often than this, on average, is copied to a scratch file
/// first, which costs about two more passes.
constexpr double kMaxReads = 4;

/// Cuts `length` from `start` on at the multiples of `step`. Results count from `start`.
std::vector<Segment> cutAtMultiples(int start, int length, std::int64_t step) {
    std::vector<Segment> segments;
    for (int at = 0; at < length;) {
        const std::int64_t rest = step - (std::int64_t{start} + at) % step;
        const int taken = static_cast<int>(std::min<std::int64_t>(rest, length - at));
        segments.push_back({at, taken});
        at += taken;
    }
    return segments;
}

/// The same stretches counted from the other end, in the same order.
std::vector<Segment> mirrored(std::vector<Segment> segments, int length) {
    for (Segment& segment : segments) {
        segment.start = length - segment.start - segment.length;
    }
    return segments;
}

struct Extent {
    std::int64_t x;
    std::int64_t y;
};

/// Multiples of the page: as wide as may be, then as high.
Extent blockExtent(const zelSize& page, int nx, int ny, std::int64_t maxPixels) {
    const auto grown = [maxPixels](std::int64_t pageExtent, int wanted, std::int64_t across) {
        const std::int64_t all = (wanted + pageExtent - 1) / pageExtent;
        const std::int64_t fitting = maxPixels / (pageExtent * across);
        return pageExtent * std::clamp<std::int64_t>(fitting, 1, std::max<std::int64_t>(all, 1));
    };
    const std::int64_t width = grown(page.x, nx, std::min(page.y, ny));
    return {width, width >= nx ? grown(page.y, ny, nx) : page.y};
}

struct Turn {
    zelFlip flip;
    int transposed;
};

Turn turnBetween(zelOrientation from, zelOrientation to) {
    Turn turn{};
    zelMapFlipTrans(from, turn.flip, turn.transposed, to);
    return turn;
}

/// Takes a grid from the file's frame to the frame of the view; the order of visit stays.
BlockGrid turned(BlockGrid grid, const Turn& turn, const zelTile2D<int>& tile) {
    if (turn.transposed) {
        std::swap(grid.x, grid.y);
        grid.xOuter = !grid.xOuter;
    }
    if (turn.flip & zelXFlip) {
        grid.x = mirrored(std::move(grid.x), tile.nx);
    }
    if (turn.flip & zelYFlip) {
        grid.y = mirrored(std::move(grid.y), tile.ny);
    }
    return grid;
}

/// How many stretches of `pages` the stretches of `blocks` touch, each by itself, against how many
/// they touch together.
double readsAlong(const std::vector<Segment>& blocks, const std::vector<Segment>& pages) {
    double touched = 0;
    for (const Segment& block : blocks) {
        touched +=
            static_cast<double>(std::count_if(pages.begin(), pages.end(), [&](const Segment& page) {
                return page.start < block.start + block.length &&
                       block.start < page.start + page.length;
            }));
    }
    return pages.empty() ? 1 : touched / static_cast<double>(pages.size());
}

/// Whether pages are met in the order in which they lie in the source. Pages that are as wide as
/// the image are, if only left and right change places.
bool keepsOrder(const Turn& turn, const BlockGrid& pages) {
    const bool sideways = (turn.flip & zelXFlip) != 0 && pages.x.size() > 1;
    return !turn.transposed && !(turn.flip & zelYFlip) && !sideways;
}

/// Many formats give their pages in any order, but decode from the first row on for it. Those that
/// write in any order as well have their pages where each is found.
bool readsBackAtNoCost(zelFormat& format) {
    return format.randomAccessReadIsSupported() && format.randomAccessWriteIsSupported();
}

} // namespace

std::vector<zelTile2D<int>> BlockGrid::blocks() const {
    std::vector<zelTile2D<int>> tiles;
    tiles.reserve(x.size() * y.size());
    const std::vector<Segment>& outer = xOuter ? x : y;
    const std::vector<Segment>& inner = xOuter ? y : x;
    for (const Segment& a : outer) {
        for (const Segment& b : inner) {
            const Segment& alongX = xOuter ? a : b;
            const Segment& alongY = xOuter ? b : a;
            tiles.emplace_back(alongX.start, alongY.start, alongX.length, alongY.length);
        }
    }
    return tiles;
}

BlockGrid pageGrid(const zelFile& file, const PlaneView& view, std::int64_t maxPixels) {
    const zelOrientation own = file.getOrientation();
    zelSize size;
    zelSize page;
    file.getSize(size, own);
    file.getPageSize(page, own);
    zelTile2D<int> tile = view.tile;
    zelMapTile(view.orientation, tile, own, size);
    const Extent extent = blockExtent(page, tile.nx, tile.ny, maxPixels);
    const BlockGrid grid{cutAtMultiples(tile.x, tile.nx, extent.x),
                         cutAtMultiples(tile.y, tile.ny, extent.y)};
    return turned(grid, turnBetween(own, view.orientation), view.tile);
}

BlockGrid squareGrid(int nx, int ny, std::int64_t maxPixels) {
    const auto side = static_cast<std::int64_t>(std::sqrt(static_cast<double>(maxPixels)));
    const std::int64_t step = std::max<std::int64_t>(1, side);
    return {cutAtMultiples(0, nx, step), cutAtMultiples(0, ny, step)};
}

BlockPlan planBlocks(const zelFile& source, const PlaneView& view, const zelFile& target,
                     std::int64_t maxPixels) {
    const PlaneView whole{view.orientation, {0, 0, view.tile.nx, view.tile.ny}};
    BlockPlan plan{pageGrid(target, whole, maxPixels), false, {}};
    const BlockGrid pages = pageGrid(source, view, 1);
    const double reads = readsAlong(plan.grid.x, pages.x) * readsAlong(plan.grid.y, pages.y);
    const Turn turn = turnBetween(source.getOrientation(), view.orientation);
    const bool writesAnywhere = target.getFormat()->randomAccessWriteIsSupported() != 0;
    const bool readsForward = keepsOrder(turn, pages) || readsBackAtNoCost(*source.getFormat());
    if (reads > kMaxReads || (!readsForward && !writesAnywhere)) {
        plan.throughScratch = true;
        plan.sourceGrid = pageGrid(source, view, maxPixels);
    } else if (writesAnywhere) {
        // The order of the source: what can only be decoded forward is decoded once.
        if (turn.flip & zelXFlip) {
            std::reverse(plan.grid.x.begin(), plan.grid.x.end());
        }
        if (turn.flip & zelYFlip) {
            std::reverse(plan.grid.y.begin(), plan.grid.y.end());
        }
        plan.grid.xOuter = turn.transposed != 0;
    }
    return plan;
}

} // namespace zel::tool
