#include "paletteMapper.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace zel::tool {
namespace {

constexpr unsigned kCacheBits = 14;
constexpr std::uint32_t kNoColor = 0xFFFFFFFF;

} // namespace

PaletteMapper::PaletteMapper(ReducedPalette colors, bool dithering)
    : palette(std::move(colors)), dithers(dithering && !palette.exact),
      found(size_t{1} << kCacheBits, {kNoColor, 0}), last(0, 0, 0, 0) {
    for (const Rgb& color : palette.colors) {
        for (size_t c = 0; c < 3; ++c) {
            channels[c].push_back(color[c]);
        }
    }
}

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
    const std::uint32_t key =
        std::uint32_t{color[0]} << 16 | std::uint32_t{color[1]} << 8 | color[2];
    Found& place = found[(key * 0x9E3779B1u) >> (32 - kCacheBits)];
    if (place.color != key) {
        place = {key, search(color)};
    }
    return place.index;
}

std::uint8_t PaletteMapper::search(const Rgb& color) const {
    const size_t count = palette.colors.size();
    std::array<int, 256> distances{};
    for (size_t i = 0; i < count; ++i) {
        const int red = channels[0][i] - color[0];
        const int green = channels[1][i] - color[1];
        const int blue = channels[2][i] - color[2];
        distances[i] = red * red + green * green + blue * blue;
    }
    const auto* const begin = distances.data();
    return static_cast<std::uint8_t>(std::min_element(begin, begin + count) - begin);
}

} // namespace zel::tool
