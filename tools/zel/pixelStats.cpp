#include "pixelStats.h"

#include "blockPlan.h"
#include "imageFile.h"
#include "progress.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace zel::tool {
namespace {

constexpr std::int64_t kBlockSamples = std::int64_t{1} << 20;

/// Spreads the bits of a number over all 64 (the finaliser of SplitMix64).
std::uint64_t mix(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

/// Equal numbers have equal bits: there is one zero and one NaN.
std::uint64_t bitsOf(double value) {
    if (std::isnan(value)) {
        value = std::numeric_limits<double>::quiet_NaN();
    }
    return std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
}

/// Each sample is hashed with its place in the upright image, and the hashes are added: so the
/// order in which they come does not count.
std::uint64_t hashBlock(const std::vector<double>& samples, const zelTile2D<int>& tile, int z,
                        const zelSize& size) {
    const auto wide = [](int n) { return static_cast<std::uint64_t>(n); };
    const double* value = samples.data();
    std::uint64_t sum = 0;
    for (int y = tile.y; y < tile.y + tile.ny; ++y) {
        std::uint64_t place =
            ((wide(z) * wide(size.y) + wide(y)) * wide(size.x) + wide(tile.x)) * wide(size.c);
        for (size_t i = 0; i < wide(tile.nx) * wide(size.c); ++i) {
            sum += mix(mix(place++) ^ bitsOf(*value++));
        }
    }
    return sum;
}

std::uint64_t hashSize(const zelSize& size) {
    std::uint64_t hash = 0;
    for (const int extent : {size.x, size.y, size.z, size.c}) {
        hash = mix(hash ^ static_cast<std::uint64_t>(extent));
    }
    return hash;
}

} // namespace

void ChannelStats::add(const double* values, size_t number, size_t step) {
    finite.clear();
    for (size_t i = 0; i < number; ++i) {
        const double value = values[i * step];
        if (std::isfinite(value)) {
            finite.push_back(value);
        } else {
            ++(std::isnan(value) ? nanCount : infinityCount);
        }
    }
    if (finite.empty()) {
        return;
    }
    // Runs are summed by themselves and then joined, so that large images lose no digits.
    const auto [low, high] = std::minmax_element(finite.begin(), finite.end());
    const auto n = static_cast<double>(finite.size());
    double sum = 0;
    for (const double value : finite) {
        sum += value;
    }
    const double runMean = sum / n;
    double runSquares = 0;
    for (const double value : finite) {
        runSquares += (value - runMean) * (value - runMean);
    }
    const auto before = static_cast<double>(count);
    const double distance = runMean - average;
    lowest = count == 0 ? *low : std::min(lowest, *low);
    highest = count == 0 ? *high : std::max(highest, *high);
    average += distance * n / (before + n);
    squares += runSquares + distance * distance * before * n / (before + n);
    count += finite.size();
}

double ChannelStats::deviation() const {
    return count == 0 ? 0 : std::sqrt(squares / static_cast<double>(count));
}

ImageStats measure(zelFile& file, const std::string& name) {
    zelSize size;
    file.getSize(size, zelUpperLeftOrigin);
    const auto channels = static_cast<size_t>(size.c);
    ImageStats stats;
    stats.channels.resize(channels);
    stats.hash = hashSize(size);
    const zelConfig config(zelDouble, zelInterleaved, 0, nullptr, 0, zelUpperLeftOrigin);
    const PlaneView whole{zelUpperLeftOrigin, {0, 0, size.x, size.y}};
    const auto blocks = pageGrid(file, whole, kBlockSamples / std::max(1, size.c)).blocks();
    Progress progress(name, static_cast<double>(size.x) * size.y * size.z);
    std::vector<double> samples;
    for (int z = 0; z < size.z; ++z) {
        for (const zelTile2D<int>& tile : blocks) {
            const size_t pixels = static_cast<size_t>(tile.nx) * static_cast<size_t>(tile.ny);
            samples.resize(pixels * channels);
            require(name,
                    file.getTile(tile.x, tile.y, z, tile.nx, tile.ny, 1, samples.data(), &config));
            for (size_t c = 0; c < channels; ++c) {
                stats.channels[c].add(samples.data() + c, pixels, channels);
            }
            stats.hash += hashBlock(samples, tile, z, size);
            progress.advance(static_cast<double>(pixels));
        }
    }
    return stats;
}

} // namespace zel::tool
