#ifndef ZEL_TOOL_COLORHISTOGRAM_H
#define ZEL_TOOL_COLORHISTOGRAM_H

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace zel::tool {

/// How opaque a pixel must be, of 255, to be shown where alpha is all or nothing.
constexpr int kOpaqueFrom = 128;

/// Colours that count as one.
struct ColorGroup {
    std::array<double, 3> mean; ///< red, green and blue, 0 to 255
    double pixels;
};

/// Counts the colours of an image of any size in less than 12 MiB. As long as there are few of them
/// each is a group of its own; later, neighbours share one.
class ColorHistogram {
public:
    ColorHistogram();

    /// Takes in pixels of red, green, blue and alpha, 8 bits each. The colours of those below
    /// `kOpaqueFrom` do not count.
    void add(std::span<const std::uint8_t> pixels);

    bool hasTransparency() const { return transparent; }
    /// Whether alpha was anything but none or all.
    bool hasPartialAlpha() const { return partial; }
    /// Whether each group is a single colour.
    bool isExact() const { return droppedBits == 0; }
    std::vector<ColorGroup> groups() const;

private:
    struct Entry {
        std::uint32_t key;
        std::uint64_t pixels;
        std::array<std::uint64_t, 3> sums;
    };

    Entry& entryFor(std::uint32_t key);
    void coarsen();
    std::uint32_t keyOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) const;

    std::vector<Entry> entries;
    std::vector<std::uint32_t> slots; ///< a hash table of places in `entries`, counted from 1
    unsigned droppedBits = 0;         ///< low bits of a channel that do not tell groups apart
    bool transparent = false;
    bool partial = false;
};

} // namespace zel::tool

#endif
