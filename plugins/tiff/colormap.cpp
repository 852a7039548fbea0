#include "colormap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace zeltiff {

namespace {

using Channels = std::array<std::uint16_t*, 3>;

int entriesOf(const Layout& layout) {
    return 1 << layout.storedBits;
}

bool holdsBytes(const Channels& channels, int entries) {
    return std::all_of(channels.begin(), channels.end(), [entries](const std::uint16_t* values) {
        return std::all_of(values, values + entries, [](int value) { return value < 256; });
    });
}

template <typename Element>
void copyEntries(const Channels& channels, int entries, zelColormap& map) {
    for (int c = 0; c < 3; c++)
        std::transform(channels[static_cast<std::size_t>(c)],
                       channels[static_cast<std::size_t>(c)] + entries,
                       static_cast<Element*>(map.getChan(c)),
                       [](std::uint16_t value) { return static_cast<Element>(value); });
}

double spreadFactor(zelDataType type) {
    switch (type) {
    case zelBit:
    case zelFloat:
    case zelDouble:
        return 65535;
    case zelUChar:
        return 257;
    default:
        return 1;
    }
}

} // namespace

std::unique_ptr<zelColormap> readColormap(TIFF* tiff, const Layout& layout) {
    Channels channels{};
    if (!layout.palette || layout.storedBits > 16 ||
        !TIFFGetField(tiff, TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]))
        return nullptr;
    const int entries = entriesOf(layout);
    const bool bytes = holdsBytes(channels, entries);
    auto map = std::make_unique<zelColormap>(3, bytes ? zelUChar : zelUShort, 0, entries - 1);
    if (map->getLength() != entries || !map->getData())
        return nullptr;
    if (bytes)
        copyEntries<std::uint8_t>(channels, entries, *map);
    else
        copyEntries<std::uint16_t>(channels, entries, *map);
    return map;
}

zelStatus writeColormap(Handle& handle, const Layout& layout, const zelColormap& map) {
    const int channels = map.getNumChans();
    if (map.getLength() < 1 || (channels != 1 && channels < 3))
        return zelStatusEncode(zelBADPARAMS);
    const int entries = entriesOf(layout);
    const double factor = spreadFactor(map.getDataType());
    std::array<std::vector<std::uint16_t>, 3> values;
    for (int c = 0; c < 3; c++)
        for (int i = 0; i < entries; i++) {
            const double value = map.getVal(i, channels == 1 ? 0 : c) * factor;
            // Not a number counts as 0.
            const double inRange = value > 0 ? std::min(value, 65535.0) : 0;
            values[static_cast<std::size_t>(c)].push_back(
                static_cast<std::uint16_t>(std::lround(inRange)));
        }
    return handle.check(TIFFSetField(handle.get(), TIFFTAG_COLORMAP, values[0].data(),
                                     values[1].data(), values[2].data()) == 1,
                        zelBADFIELDSET);
}

} // namespace zeltiff
