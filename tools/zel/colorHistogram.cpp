#include "colorHistogram.h"

#include <utility>

namespace zel::tool {
namespace {

constexpr size_t kMaxGroups = size_t{1} << 16;
constexpr unsigned kSlotBits = 17;

} // namespace

ColorHistogram::ColorHistogram() : slots(size_t{1} << kSlotBits) {}

std::uint32_t ColorHistogram::keyOf(std::uint32_t red, std::uint32_t green,
                                    std::uint32_t blue) const {
    return (red >> droppedBits) << 16 | (green >> droppedBits) << 8 | blue >> droppedBits;
}

ColorHistogram::Entry& ColorHistogram::entryFor(std::uint32_t key) {
    // Fibonacci hashing; half of the slots are free, so that the search is short.
    size_t slot = (key * 0x9E3779B1u) >> (32 - kSlotBits);
    while (slots[slot] != 0 && entries[slots[slot] - 1].key != key) {
        slot = (slot + 1) % slots.size();
    }
    if (slots[slot] == 0) {
        entries.push_back({key, 0, {}});
        slots[slot] = static_cast<std::uint32_t>(entries.size());
    }
    return entries[slots[slot] - 1];
}

void ColorHistogram::coarsen() {
    ++droppedBits;
    slots.assign(slots.size(), 0);
    for (const Entry& old : std::exchange(entries, {})) {
        Entry& entry = entryFor((old.key >> 1) & 0x7F7F7Fu);
        entry.pixels += old.pixels;
        for (size_t c = 0; c < 3; ++c) {
            entry.sums[c] += old.sums[c];
        }
    }
}

void ColorHistogram::add(std::span<const std::uint8_t> pixels) {
    for (size_t i = 0; i + 4 <= pixels.size(); i += 4) {
        const std::uint8_t* const pixel = &pixels[i];
        partial = partial || (pixel[3] != 0 && pixel[3] != 255);
        if (pixel[3] < kOpaqueFrom) {
            transparent = true;
            continue;
        }
        Entry& entry = entryFor(keyOf(pixel[0], pixel[1], pixel[2]));
        ++entry.pixels;
        for (size_t c = 0; c < 3; ++c) {
            entry.sums[c] += pixel[c];
        }
        while (entries.size() > kMaxGroups) {
            coarsen();
        }
    }
}

std::vector<ColorGroup> ColorHistogram::groups() const {
    std::vector<ColorGroup> result;
    result.reserve(entries.size());
    for (const Entry& entry : entries) {
        const auto pixels = static_cast<double>(entry.pixels);
        const auto mean = [&](size_t c) { return static_cast<double>(entry.sums[c]) / pixels; };
        result.push_back({{mean(0), mean(1), mean(2)}, pixels});
    }
    return result;
}

} // namespace zel::tool
