#include "transfer.h"

#include "colorSurvey.h"
#include "scratchFile.h"

#include <algorithm>
#include <cstring>

namespace zel::tool {
namespace {

using Tile = zelTile2D<int>;
using Bytes = std::vector<std::byte>;

/// What one block takes in memory, at most; a page may force more.
constexpr size_t kBlockBytes = size_t{8} << 20;

size_t pixelsOf(const Tile& tile) {
    return static_cast<size_t>(tile.nx) * static_cast<size_t>(tile.ny);
}

/// Copies the rows of `part` between a block and a buffer that holds the part alone.
template <bool intoPart>
void copyRows(std::byte* block, const Tile& blockTile, std::byte* part, const Tile& partTile,
              size_t pixelBytes) {
    const size_t rowBytes = static_cast<size_t>(partTile.nx) * pixelBytes;
    const size_t pitch = static_cast<size_t>(blockTile.nx) * pixelBytes;
    block += static_cast<size_t>(partTile.y - blockTile.y) * pitch +
             static_cast<size_t>(partTile.x - blockTile.x) * pixelBytes;
    for (int row = 0; row < partTile.ny; ++row) {
        if constexpr (intoPart) {
            std::memcpy(part, block, rowBytes);
        } else {
            std::memcpy(block, part, rowBytes);
        }
        block += pitch;
        part += rowBytes;
    }
}

class PlaneMover {
public:
    explicit PlaneMover(const Transfer& all) : t(all) {
        const size_t mappedBytes = t.mapper ? kReducibleLayout.bytesPerPixel() : 0;
        const size_t pixelBytes =
            std::max({t.source.layout.bytesPerPixel(), t.out.bytesPerPixel(), mappedBytes});
        const auto maxPixels = static_cast<std::int64_t>(kBlockBytes / pixelBytes);
        plan = planBlocks(t.source.file, t.view, t.target, maxPixels);
    }

    void move(int planeIndex) {
        plane = planeIndex;
        if (plan.throughScratch) {
            moveThroughScratch();
        } else {
            moveDirectly();
        }
    }

private:
    void moveDirectly() {
        for (const Tile& tile : plan.grid.blocks()) {
            read(tile);
            write(tile);
            t.progress.advance(static_cast<double>(pixelsOf(tile)));
        }
    }

    // The scratch file holds the blocks to write one after the other, and each of them in the parts
    // that the blocks of the source have in it: so both ways go by large pieces.
    void moveThroughScratch() {
        ScratchFile scratch(t.scratchDirectory, t.targetName);
        const std::vector<Tile> targets = plan.grid.blocks();
        const std::vector<Tile> sources = plan.sourceGrid.blocks();
        for (const Tile& source : sources) {
            read(source);
            spread(source, targets, scratch);
            t.progress.advance(static_cast<double>(pixelsOf(source)) / 2);
        }
        std::uint64_t offset = 0;
        for (const Tile& target : targets) {
            gather(target, offset, sources, scratch);
            write(target);
            offset += pixelsOf(target) * t.source.layout.bytesPerPixel();
            t.progress.advance(static_cast<double>(pixelsOf(target)) / 2);
        }
    }

    /// Where the part of a block of the target lies in the block's place of the scratch file: all
    /// parts of higher rows lie before it, then those to its left.
    std::uint64_t partOffset(const Tile& block, const Tile& piece) const {
        const auto above =
            static_cast<std::uint64_t>(piece.y - block.y) * static_cast<std::uint64_t>(block.nx);
        const auto left =
            static_cast<std::uint64_t>(piece.x - block.x) * static_cast<std::uint64_t>(piece.ny);
        return (above + left) * t.source.layout.bytesPerPixel();
    }

    void spread(const Tile& source, const std::vector<Tile>& targets, ScratchFile& scratch) {
        std::uint64_t offset = 0;
        for (const Tile& target : targets) {
            const Tile common(source, target);
            if (common.nx > 0 && common.ny > 0) {
                part.resize(pixelsOf(common) * t.source.layout.bytesPerPixel());
                copyRows<true>(in.data(), source, part.data(), common,
                               t.source.layout.bytesPerPixel());
                scratch.write(part, offset + partOffset(target, common));
            }
            offset += pixelsOf(target) * t.source.layout.bytesPerPixel();
        }
    }

    void gather(const Tile& target, std::uint64_t offset, const std::vector<Tile>& sources,
                const ScratchFile& scratch) {
        in.resize(pixelsOf(target) * t.source.layout.bytesPerPixel());
        for (const Tile& source : sources) {
            const Tile common(source, target);
            if (common.nx > 0 && common.ny > 0) {
                part.resize(pixelsOf(common) * t.source.layout.bytesPerPixel());
                scratch.read(part, offset + partOffset(target, common));
                copyRows<false>(in.data(), target, part.data(), common,
                                t.source.layout.bytesPerPixel());
            }
        }
    }

    void read(const Tile& tile) {
        in.resize(pixelsOf(tile) * t.source.layout.bytesPerPixel());
        readBlock(t.source, t.view, plane, tile, in.data());
    }

    void write(const Tile& tile) {
        const WorkingOn name(t.targetName, t.target.getFileName());
        // What needs no more than the library's own conversion is written as it was read.
        const bool plain = t.pipeline.isPlain() && !t.mapper;
        if (!plain) {
            convertBlock(tile);
        }
        const std::byte* const data = plain ? in.data() : out.data();
        const zelConfig config((plain ? t.source.layout : t.out).memoryType(), zelInterleaved,
                               t.out.channels, nullptr, 0, t.view.orientation);
        require(t.targetName,
                t.target.setTile(tile.x, tile.y, plane, tile.nx, tile.ny, 1, data, &config));
    }

    void convertBlock(const Tile& tile) {
        const size_t pixels = pixelsOf(tile);
        out.resize(pixels * t.out.bytesPerPixel());
        if (!t.mapper) {
            t.pipeline.convert(in.data(), out.data(), pixels);
            return;
        }
        colors.resize(pixels * kReducibleLayout.bytesPerPixel());
        t.pipeline.convert(in.data(), colors.data(), pixels);
        t.mapper->map(reinterpret_cast<const std::uint8_t*>(colors.data()), tile,
                      reinterpret_cast<std::uint8_t*>(out.data()));
    }

    const Transfer& t;
    BlockPlan plan;
    int plane = 0;
    Bytes in;
    Bytes out;
    Bytes colors;
    Bytes part;
};

} // namespace

void transferPixels(const Transfer& transfer) {
    PlaneMover mover(transfer);
    for (int plane = 0; plane < transfer.source.region.nz; ++plane) {
        mover.move(plane);
    }
}

} // namespace zel::tool
