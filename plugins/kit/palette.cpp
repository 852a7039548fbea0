#include "kit/palette.h"

#include <algorithm>
#include <climits>
#include <vector>

namespace zelkit {

namespace {

double byteFactor(zelDataType type) {
    switch (type) {
    case zelBit:
    case zelFloat:
    case zelDouble:
        return 255;
    case zelUShort:
        return 1 / 257.0;
    default:
        return 1;
    }
}

std::uint8_t toByte(double value) {
    // Not a number counts as 0.
    return static_cast<std::uint8_t>(value > 0 ? std::min(value, 255.0) + 0.5 : 0);
}

} // namespace

std::unique_ptr<zelColormap> makePalette(std::span<const std::uint8_t> colors, int channels,
                                         int most) {
    const auto entries = static_cast<int>(
        std::min<std::size_t>(colors.size() / static_cast<unsigned>(channels), INT_MAX));
    if (entries < 1 || entries > most)
        return nullptr;
    auto map = std::make_unique<zelColormap>(channels, zelUChar, 0, entries - 1);
    if (map->getLength() != entries || !map->getData())
        return nullptr;
    for (int c = 0; c < channels; c++) {
        auto* const values = static_cast<std::uint8_t*>(map->getChan(c));
        const std::uint8_t* color = colors.data() + c;
        for (int i = 0; i < entries; i++, color += channels)
            values[i] = *color;
    }
    return map;
}

std::unique_ptr<zelColormap> paletteOf(const zelColormap& map) {
    const int given = map.getNumChans();
    const double last = std::max(map.getDomainMin(), map.getDomainMax());
    if (map.getLength() < 1 || given < 1 || given == 2 || !(last >= 0))
        return nullptr;
    const int entries = static_cast<int>(std::min(last + 1, double{largestPalette}));
    const int channels = given == 4 ? 4 : 3;
    const double factor = byteFactor(map.getDataType());
    std::vector<std::uint8_t> colors;
    for (int i = 0; i < entries; i++)
        for (int c = 0; c < channels; c++)
            colors.push_back(toByte(map.getVal(i, given == 1 ? 0 : c) * factor));
    return makePalette(colors, channels);
}

std::unique_ptr<zelColormap> greyPalette(int entries) {
    std::vector<std::uint8_t> colors;
    for (int i = 0; i < entries; i++)
        colors.insert(colors.end(), 3, toByte(entries > 1 ? i * 255.0 / (entries - 1) : 0));
    return makePalette(colors, 3);
}

std::uint8_t paletteByte(const zelColormap& palette, int index, int channel) {
    if (channel == 3 && palette.getNumChans() < 4)
        return 255;
    const auto* const values = static_cast<const std::uint8_t*>(palette.getChan(channel));
    return values && index >= 0 && index < palette.getLength() ? values[index] : std::uint8_t{0};
}

std::vector<std::uint8_t> paletteBytes(const zelColormap& palette, int entries, int channels) {
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < entries; i++)
        for (int c = 0; c < channels; c++)
            bytes.push_back(paletteByte(palette, i, c));
    return bytes;
}

} // namespace zelkit
