#include "sourceImage.h"

#include <numeric>

namespace zel::tool {
namespace {

zelTile3D<int> regionOf(const zelFile& file, const std::string& name,
                        const ConvertOptions& options) {
    zelSize size;
    file.getSize(size, zelUpperLeftOrigin);
    const zelTile3D<int> whole(0, 0, 0, size.x, size.y, size.z);
    if (!options.region) {
        return whole;
    }
    zelTile3D<int> region = *options.region;
    if (region.nz == 0) {
        region.nz = size.z;
    }
    if (!whole.contains(region)) {
        throw Failure{name, "the region is not wholly inside the image of " +
                                std::to_string(size.x) + "x" + std::to_string(size.y) + "x" +
                                std::to_string(size.z)};
    }
    return region;
}

std::vector<int> channelsOf(const zelFile& file, const std::string& name,
                            const ConvertOptions& options) {
    std::vector<int> channels = options.channels;
    if (channels.empty()) {
        channels.resize(static_cast<size_t>(file.getCsize()));
        std::iota(channels.begin(), channels.end(), 0);
    }
    for (const int channel : channels) {
        if (channel < 0 || channel >= file.getCsize()) {
            throw Failure{name, "there is no channel " + std::to_string(channel) +
                                    "; the image has " + std::to_string(file.getCsize()) +
                                    ", counted from 0"};
        }
    }
    return channels;
}

std::optional<Palette> paletteOf(zelFile& file, const std::string& name) {
    const zelColormap* map = nullptr;
    const zelStatus status = file.getColormap(map);
    if (status == zelOKAY && map) {
        return Palette(*map);
    }
    throw Failure{name, "the image is a palette of colours, but its colour map cannot be read"};
}

} // namespace

SourceImage describeSource(zelFile& file, const std::string& name, const ConvertOptions& options) {
    const std::vector<int> channels = channelsOf(file, name, options);
    const int count = static_cast<int>(channels.size());
    const zelColorModel own = file.getColorModel();
    const int ownChannels = zelColorModelChans(own);
    const bool sameCount = own == zelMultiSpectral || count == ownChannels;
    const zelColorModel model = sameCount ? own : zelColorModelFromChans(count);
    return {file,
            name,
            regionOf(file, name, options),
            channels,
            {file.getDataType(), model, count},
            model == zelRGBPalette ? paletteOf(file, name) : std::nullopt};
}

std::optional<ValueRange> shownRange(const SourceImage& source) {
    ValueRange range{};
    const zelDataType type = source.layout.type;
    const ValueRange full = fullRange(type);
    if (source.palette || source.file.getScaleMinMax(range.low, range.high) != zelOKAY ||
        !(range.low < range.high) || range.low < zelDataMin(type) ||
        range.high > zelDataMax(type) || (range.low == full.low && range.high == full.high)) {
        return std::nullopt;
    }
    return range;
}

bool hasAlpha(const SourceImage& source) {
    return zelColorModelHasAlpha(source.layout.model) ||
           (source.palette && source.palette->hasAlpha());
}

bool canBecome(zelColorModel from, zelColorModel to) {
    return ColorConverter::isPossible(from, to == zelRGBPalette ? zelRGBA : to);
}

PlaneView viewOf(const SourceImage& source, zelOrientation orientation) {
    zelSize size;
    source.file.getSize(size, orientation);
    zelTile2D<int> tile = source.region;
    zelMapTile(zelUpperLeftOrigin, tile, orientation, size);
    return {orientation, tile};
}

void readBlock(const SourceImage& source, const PlaneView& view, int plane,
               const zelTile2D<int>& block, std::byte* pixels) {
    const WorkingOn working(source.name);
    std::vector<int> channels = source.channels;
    const zelConfig config(source.layout.memoryType(), zelInterleaved,
                           static_cast<int>(channels.size()), channels.data(), 0, view.orientation);
    require(source.name,
            source.file.getTile(view.tile.x + block.x, view.tile.y + block.y,
                                source.region.z + plane, block.nx, block.ny, 1, pixels, &config));
}

} // namespace zel::tool
