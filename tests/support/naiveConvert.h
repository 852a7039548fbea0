#ifndef ZEL_TESTS_NAIVE_CONVERT_H
#define ZEL_TESTS_NAIVE_CONVERT_H

// A second implementation of pixel conversion to judge the library's by: it takes one element at a
// time, finds its place by nesting the dimensions as they lie in memory, and knows no strides,
// rows or block copies. It shares no code with the library.

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace naive {

struct Box {
    int x = 0, y = 0, z = 0, nx = 0, ny = 0, nz = 0;

    bool contains(int px, int py, int pz) const {
        return px >= x && px < x + nx && py >= y && py < y + ny && pz >= z && pz < z + nz;
    }
    bool empty() const { return nx < 1 || ny < 1 || nz < 1; }
};

/// A block of pixel data, or with `fill` a constant pixel of `channels` elements at `data`.
struct Area {
    unsigned char* data = nullptr;
    zelDataType type = zelUChar;
    zelOrder order = zelSeparate;
    Box box;
    int channels = 1;
    std::vector<int> list; ///< channel of each slot; empty: `firstChannel` + slot
    int firstChannel = 0;
    bool flipX = false, flipY = false, transposeXY = false;
    bool clipped = false;
    Box clip;
    Box mask;
    bool fill = false;

    int channelOf(int slot) const {
        return list.empty() ? firstChannel + slot : list[static_cast<std::size_t>(slot)];
    }
    int slotOf(int channel) const {
        for (int slot = 0; slot < channels; ++slot) {
            if (channelOf(slot) == channel)
                return slot;
        }
        return -1;
    }
    bool takesPart(int x, int y, int z) const {
        return (fill || box.contains(x, y, z)) && (!clipped || clip.contains(x, y, z));
    }
    std::int64_t indexOf(int x, int y, int z, int slot) const {
        if (fill)
            return slot;
        const std::int64_t w = box.nx, h = box.ny, n = channels;
        const std::int64_t px = flipX ? box.x + box.nx - 1 - x : x - box.x;
        const std::int64_t py = flipY ? box.y + box.ny - 1 - y : y - box.y;
        const std::int64_t pz = z - box.z;
        // In memory a row runs along `along`, and rows follow each other along `across`.
        const std::int64_t along = transposeXY ? py : px, across = transposeXY ? px : py;
        const std::int64_t rowLength = transposeXY ? h : w, rows = transposeXY ? w : h;
        if (order == zelInterleaved)
            return ((pz * rows + across) * rowLength + along) * n + slot;
        if (order == zelSequential)
            return ((pz * rows + across) * n + slot) * rowLength + along;
        return ((pz * n + slot) * rows + across) * rowLength + along;
    }
};

inline bool isReal(zelDataType type) {
    return type == zelFloat || type == zelDouble;
}

inline double readElement(zelDataType type, const unsigned char* data, std::int64_t i) {
    const auto get = [&](auto value) {
        std::memcpy(&value, data + i * static_cast<std::int64_t>(sizeof value), sizeof value);
        return static_cast<double>(value);
    };
    switch (type) {
    case zelBit:
        return data[i / 8] >> (7 - i % 8) & 1;
    case zelUChar:
        return get(std::uint8_t{});
    case zelChar:
        return get(std::int8_t{});
    case zelUShort:
        return get(std::uint16_t{});
    case zelShort:
        return get(std::int16_t{});
    case zelUInt:
        return get(std::uint32_t{});
    case zelInt:
        return get(std::int32_t{});
    case zelFloat:
        return get(float{});
    default:
        return get(double{});
    }
}

/// `value` cut toward zero; NaN and what does not fit give the lowest number.
inline std::int64_t cut(double value) {
    return std::fabs(value) < 9223372036854775808.0 ? static_cast<std::int64_t>(value) : INT64_MIN;
}

inline void writeElement(zelDataType type, unsigned char* data, std::int64_t i, double value,
                         bool fromReal) {
    const auto put = [&](auto stored) {
        std::memcpy(data + i * static_cast<std::int64_t>(sizeof stored), &stored, sizeof stored);
    };
    if (type == zelFloat)
        return put(static_cast<float>(value));
    if (type == zelDouble)
        return put(value);
    const auto bits = static_cast<std::uint64_t>(cut(value));
    if (type == zelBit) {
        const bool on = (fromReal ? bits & 0xffffffffU : bits) != 0;
        const auto mask = static_cast<unsigned char>(1U << (7 - i % 8));
        data[i / 8] = static_cast<unsigned char>(on ? data[i / 8] | mask : data[i / 8] & ~mask);
        return;
    }
    if (type == zelUChar || type == zelChar)
        put(static_cast<std::uint8_t>(bits));
    else if (type == zelUShort || type == zelShort)
        put(static_cast<std::uint16_t>(bits));
    else
        put(static_cast<std::uint32_t>(bits));
}

inline void convertElement(const Area& dst, std::int64_t to, const Area& src, std::int64_t from,
                           bool widened) {
    if (dst.type == src.type && isReal(dst.type) && !widened) {
        const auto size = static_cast<std::int64_t>(zelDataSize(dst.type, 1));
        std::memcpy(dst.data + to * size, src.data + from * size, static_cast<std::size_t>(size));
        return;
    }
    const bool fromReal = isReal(src.type) || widened;
    writeElement(dst.type, dst.data, to, readElement(src.type, src.data, from), fromReal);
}

/// What `dst = src` has to do to the memory of `dst`.
inline void convert(const Area& dst, const Area& src) {
    const bool widened = src.fill && src.channels < dst.channels;
    Area from = src;
    if (widened)
        from.channels = dst.channels;
    for (int slot = 0; slot < dst.channels; ++slot) {
        const int channel = dst.channelOf(slot);
        const int source = channel < 0 ? -1 : from.slotOf(channel);
        if (source < 0)
            continue;
        for (int z = dst.box.z; z < dst.box.z + dst.box.nz; ++z) {
            for (int y = dst.box.y; y < dst.box.y + dst.box.ny; ++y) {
                for (int x = dst.box.x; x < dst.box.x + dst.box.nx; ++x) {
                    const bool hole = !src.mask.empty() && src.mask.contains(x, y, z);
                    if (hole || !dst.takesPart(x, y, z) || !src.takesPart(x, y, z))
                        continue;
                    // A pixel with too few channels repeats its last element.
                    const std::int64_t i =
                        src.indexOf(x, y, z, widened ? std::min(source, src.channels - 1) : source);
                    convertElement(dst, dst.indexOf(x, y, z, slot), src, i, widened);
                }
            }
        }
    }
}

} // namespace naive

#endif
