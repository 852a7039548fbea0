#include "imageComparison.h"

#include "blockPlan.h"
#include "colorConverter.h"
#include "imageFile.h"
#include "progress.h"
#include "valueMap.h"

#include <zel/zelColormap.h>
#include <zel/zelTypeNames.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace zel::tool {
namespace {

constexpr std::int64_t kBlockSamples = std::int64_t{1} << 20;

/// The channels of a model in the order of the model that is its mirror, if it has one.
struct CommonModel {
    zelColorModel model;
    std::vector<int> channels; ///< empty for all, in their order
};

CommonModel commonModel(const zelFile& file) {
    switch (file.getColorModel()) {
    case zelBGR:
        return {zelRGB, {2, 1, 0}};
    case zelABGR:
        return {zelRGBA, {3, 2, 1, 0}};
    default:
        return {file.getColorModel(), {}};
    }
}

std::string sizeText(const zelSize& size) {
    return std::to_string(size.x) + "x" + std::to_string(size.y) + "x" + std::to_string(size.z) +
           " with " + std::to_string(size.c) + (size.c == 1 ? " channel" : " channels");
}

/// A file may fill its table up with colours that no pixel has, so that only the common entries
/// count.
bool sameColors(const zelColormap& a, const zelColormap& b) {
    const Palette colorsOfA(a);
    const Palette colorsOfB(b);
    for (int i = 0; i < std::min(a.getLength(), b.getLength()); ++i) {
        const double index = a.getDomainMin() + i;
        if (colorsOfA.color(index) != colorsOfB.color(index)) {
            return false;
        }
    }
    return colorsOfA.colorType() == colorsOfB.colorType();
}

bool sameColormaps(zelFile& a, zelFile& b) {
    const zelColormap* mapA = nullptr;
    const zelColormap* mapB = nullptr;
    const bool haveA = a.getColormap(mapA) == zelOKAY && mapA;
    const bool haveB = b.getColormap(mapB) == zelOKAY && mapB;
    return haveA == haveB && (!haveA || sameColors(*mapA, *mapB));
}

std::optional<std::string> findMismatch(zelFile& a, zelFile& b) {
    zelSize sizeA;
    zelSize sizeB;
    a.getSize(sizeA, zelUpperLeftOrigin);
    b.getSize(sizeB, zelUpperLeftOrigin);
    if (sizeA != sizeB) {
        return "sizes " + sizeText(sizeA) + " and " + sizeText(sizeB);
    }
    const zelColorModel modelA = commonModel(a).model;
    const zelColorModel modelB = commonModel(b).model;
    if (modelA != modelB) {
        return std::string("colour models ") + zelColorModelName(modelA) + " and " +
               zelColorModelName(modelB);
    }
    if (modelA == zelRGBPalette && !sameColormaps(a, b)) {
        return "colour maps";
    }
    return std::nullopt;
}

double difference(double a, double b) {
    if (a == b || (std::isnan(a) && std::isnan(b))) {
        return 0;
    }
    const double distance = std::fabs(a - b);
    return std::isnan(distance) ? std::numeric_limits<double>::infinity() : distance;
}

double spanOf(const zelFile& file) {
    const ValueRange range = fullRange(file.getDataType());
    return range.high - range.low;
}

/// Reads tiles of one image, upright and as doubles.
class Reader {
public:
    Reader(zelFile& imageFile, std::string imageName)
        : file(imageFile), name(std::move(imageName)), channels(commonModel(imageFile).channels) {}

    const std::vector<double>& read(const zelTile2D<int>& tile, int z) {
        const WorkingOn working(name);
        samples.resize(static_cast<size_t>(tile.nx) * static_cast<size_t>(tile.ny) *
                       static_cast<size_t>(file.getCsize()));
        const zelConfig config(zelDouble, zelInterleaved, static_cast<int>(channels.size()),
                               channels.empty() ? nullptr : channels.data(), 0, zelUpperLeftOrigin);
        require(name,
                file.getTile(tile.x, tile.y, z, tile.nx, tile.ny, 1, samples.data(), &config));
        return samples;
    }

private:
    zelFile& file;
    std::string name;
    std::vector<int> channels;
    std::vector<double> samples;
};

/// Blocks that suit the pages of both: those of the first, or squares if the pages of the second
/// lie across them.
std::vector<zelTile2D<int>> commonBlocks(const zelFile& a, const zelFile& b, const zelSize& size) {
    const PlaneView whole{zelUpperLeftOrigin, {0, 0, size.x, size.y}};
    const std::int64_t maxPixels = std::max<std::int64_t>(1, kBlockSamples / size.c);
    const BlockPlan plan = planBlocks(b, whole, a, maxPixels);
    return plan.throughScratch ? squareGrid(size.x, size.y, maxPixels).blocks()
                               : plan.grid.blocks();
}

/// Takes in one block; returns its sums.
class Differences {
public:
    void add(const std::vector<double>& a, const std::vector<double>& b, const zelTile2D<int>& tile,
             int z, int channels, Comparison& result) {
        for (size_t i = 0; i < a.size(); ++i) {
            const double d = difference(a[i], b[i]);
            sum += d;
            squares += d * d;
            if (d > result.largest) {
                const size_t pixel = i / static_cast<size_t>(channels);
                const auto width = static_cast<size_t>(tile.nx);
                result.largest = d;
                result.x = tile.x + static_cast<int>(pixel % width);
                result.y = tile.y + static_cast<int>(pixel / width);
                result.z = z;
                result.channel = static_cast<int>(i % static_cast<size_t>(channels));
                result.valueA = a[i];
                result.valueB = b[i];
            }
        }
        count += static_cast<double>(a.size());
    }

    void finish(Comparison& result) const {
        result.meanError = count > 0 ? sum / count : 0;
        result.rms = count > 0 ? std::sqrt(squares / count) : 0;
    }

private:
    double sum = 0;
    double squares = 0;
    double count = 0;
};

} // namespace

double Comparison::psnr() const {
    return 20 * std::log10(peak / rms);
}

Comparison compareImages(zelFile& a, const std::string& nameA, zelFile& b,
                         const std::string& nameB) {
    Comparison result;
    result.mismatch = findMismatch(a, b);
    if (result.mismatch) {
        return result;
    }
    zelSize size;
    a.getSize(size, zelUpperLeftOrigin);
    result.peak = std::max(spanOf(a), spanOf(b));
    Reader readA(a, nameA);
    Reader readB(b, nameB);
    Differences differences;
    Progress progress(nameA, static_cast<double>(size.x) * size.y * size.z);
    const auto blocks = commonBlocks(a, b, size);
    for (int z = 0; z < size.z; ++z) {
        for (const zelTile2D<int>& tile : blocks) {
            differences.add(readA.read(tile, z), readB.read(tile, z), tile, z, size.c, result);
            progress.advance(static_cast<double>(tile.nx) * tile.ny);
        }
    }
    differences.finish(result);
    return result;
}

} // namespace zel::tool
