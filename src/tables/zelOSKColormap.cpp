#include <zel/zelOSKColormap.h>

#include <array>
#include <cstddef>

namespace {

constexpr int firstIndex = 32;
constexpr int lastIndex = 255;
constexpr std::size_t entries = lastIndex - firstIndex + 1;
constexpr std::size_t greys = 24;
constexpr std::size_t redLevels = 5, greenLevels = 8, blueLevels = 5;
static_assert(greys + redLevels * greenLevels * blueLevels == entries);

constexpr unsigned char share(std::size_t part, std::size_t whole) {
    return static_cast<unsigned char>(part * 255 / whole);
}

// All reds, then all greens, then all blues.
constexpr std::array<unsigned char, 3 * entries> makeMap() {
    std::array<unsigned char, 3 * entries> map{};
    for (std::size_t e = 0; e < entries; ++e) {
        unsigned char& red = map[e];
        unsigned char& green = map[entries + e];
        unsigned char& blue = map[2 * entries + e];
        if (e < greys) {
            red = green = blue = share(e + 1, greys + 1);
            continue;
        }
        const std::size_t k = e - greys;
        red = share(k / greenLevels % redLevels, redLevels - 1);
        green = share(k % greenLevels, greenLevels - 1);
        blue = share(k / (greenLevels * redLevels), blueLevels - 1);
    }
    return map;
}

constexpr std::array<unsigned char, 3 * entries> oskMap = makeMap();

// The base class takes storage that may be written; that of this map is only read.
unsigned char* sharedMap() {
    return const_cast<unsigned char*>(oskMap.data());
}

} // namespace

zelOSKColormap::zelOSKColormap() : zelColormap(sharedMap(), 3, zelUChar, firstIndex, lastIndex) {}

zelOSKColormap::zelOSKColormap(const zelOSKColormap& from) = default;

zelOSKColormap::~zelOSKColormap() = default;

void zelOSKColormap::operator=(const zelOSKColormap& from) {
    zelColormap::operator=(from);
}
