#include "paletteMapper.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace zel::tool {
namespace {

// Cells of 8 x 8 x 8 colours have few candidates, and there are not many of them.
constexpr unsigned kCellBits = 3;
constexpr size_t kCellsAlong = 256 >> kCellBits;

/// Squared distances of a palette entry from a cell.
struct Reach {
    int nearest;
    int farthest;
};

Reach reachOf(const Rgb& entry, const Rgb& inside) {
    Reach reach{};
    for (size_t c = 0; c < 3; ++c) {
        const int low = inside[c] >> kCellBits << kCellBits;
        const int high = low + (1 << kCellBits) - 1;
        const int near = std::clamp<int>(entry[c], low, high) - entry[c];
        const int far = std::max(entry[c] - low, high - entry[c]);
        reach.nearest += near * near;
        reach.farthest += far * far;
    }
    return reach;
}

} // namespace

PaletteMapper::PaletteMapper(ReducedPalette colors, bool dithering)
    : palette(std::move(colors)), dithers(dithering && !palette.exact),
      cells(kCellsAlong * kCellsAlong * kCellsAlong), last(0, 0, 0, 0) {}

void PaletteMapper::map(const std::uint8_t* pixels, const zelTile2D<int>& block,
                        std::uint8_t* indexes) {
    const auto width = static_cast<size_t>(block.nx);
    const bool goesOn = block.x == last.x && block.nx == last.nx && block.y == last.y + last.ny;
    if (!goesOn) {
        debts.assign(width + 2, {});
    }
    last = block;
    for (int row = 0; row < block.ny; ++row) {
        mapRow(pixels, indexes, width);
        pixels += 4 * width;
        indexes += width;
    }
}

// Floyd and Steinberg's shares: 7 of 16 to the right, 3, 5 and 1 below.
void PaletteMapper::mapRow(const std::uint8_t* pixels, std::uint8_t* indexes, size_t count) {
    below.assign(count + 2, {});
    for (size_t i = 0; i < count; ++i, pixels += 4) {
        if (pixels[3] < kOpaqueFrom) {
            indexes[i] = static_cast<std::uint8_t>(palette.transparentIndex());
            continue;
        }
        Rgb wanted{pixels[0], pixels[1], pixels[2]};
        if (!dithers) {
            indexes[i] = nearest(wanted);
            continue;
        }
        for (size_t c = 0; c < 3; ++c) {
            wanted[c] = static_cast<std::uint8_t>(
                std::clamp((16 * wanted[c] + debts[i + 1][c] + 8) >> 4, 0, 255));
        }
        indexes[i] = nearest(wanted);
        for (size_t c = 0; c < 3; ++c) {
            const int error = wanted[c] - palette.colors[indexes[i]][c];
            debts[i + 2][c] += 7 * error;
            below[i][c] += 3 * error;
            below[i + 1][c] += 5 * error;
            below[i + 2][c] += error;
        }
    }
    std::swap(debts, below);
}

std::uint8_t PaletteMapper::nearest(const Rgb& color) {
    const auto part = [&](size_t c) { return size_t{color[c]} >> kCellBits; };
    Cell& cell = cells[(part(0) * kCellsAlong + part(1)) * kCellsAlong + part(2)];
    if (cell.begin == cell.end) {
        findCandidates(cell, color);
    }
    int least = INT_MAX;
    std::uint8_t found = 0;
    for (std::uint32_t i = cell.begin; i < cell.end; ++i) {
        const Rgb& entry = palette.colors[candidates[i]];
        int distance = 0;
        for (size_t c = 0; c < 3; ++c) {
            distance += (entry[c] - color[c]) * (entry[c] - color[c]);
        }
        if (distance < least) {
            least = distance;
            found = candidates[i];
        }
    }
    return found;
}

// An entry whose nearest point of the cell is farther off than another entry's farthest is nearest
// to no colour in it.
void PaletteMapper::findCandidates(Cell& cell, const Rgb& inside) {
    std::array<Reach, 256> reaches{};
    int least = INT_MAX;
    for (size_t i = 0; i < palette.colors.size(); ++i) {
        reaches[i] = reachOf(palette.colors[i], inside);
        least = std::min(least, reaches[i].farthest);
    }
    cell.begin = static_cast<std::uint32_t>(candidates.size());
    for (size_t i = 0; i < palette.colors.size(); ++i) {
        if (reaches[i].nearest <= least) {
            candidates.push_back(static_cast<std::uint8_t>(i));
        }
    }
    cell.end = static_cast<std::uint32_t>(candidates.size());
}

} // namespace zel::tool
