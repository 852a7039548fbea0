#include "plugins/pixels.h"

#include "support/naiveConvert.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zel::test {

namespace {

std::int64_t bytesOf(zelDataType type, std::int64_t count) {
    const std::int64_t bits = type == zelBit                         ? 1
                              : type & (zelUChar | zelChar)          ? 8
                              : type & (zelUShort | zelShort)        ? 16
                              : type & (zelUInt | zelInt | zelFloat) ? 32
                                                                     : 64;
    return (bits * count + 7) / 8;
}

} // namespace

Pixels::Pixels(zelDataType elementType, int w, int h, int c)
    : type(elementType), width(w), height(h), channels(c),
      bytes(static_cast<std::size_t>(bytesOf(elementType, count()))) {}

double Pixels::at(int x, int y, int c) const {
    return naive::readElement(type, bytes.data(), indexOf(x, y, c));
}

void Pixels::set(int x, int y, int c, double value) {
    naive::writeElement(type, bytes.data(), indexOf(x, y, c), value, false);
}

Pixels Pixels::pattern(zelDataType type, int w, int h, int c, unsigned seed) {
    Pixels pixels(type, w, h, c);
    std::uint32_t random = seed * 2654435761u + 1;
    for (std::int64_t i = 0; i < pixels.count(); i++) {
        random ^= random << 13;
        random ^= random >> 17;
        random ^= random << 5;
        // Small multiples of a power of two, which every float holds; the low bits for integers.
        const double number = naive::isReal(type) ? (random % 65536) / 64.0 - 512
                              : type == zelBit    ? random >> 7 & 1
                                                  : random;
        naive::writeElement(type, pixels.bytes.data(), i, number, false);
    }
    return pixels;
}

Pixels Pixels::cut(int x, int y, int w, int h) const {
    Pixels part(type, w, h, channels);
    if (type != zelBit) { // such that every NaN stays what it is
        const std::size_t pixel = static_cast<std::size_t>(bytesOf(type, channels));
        const std::size_t length = pixel * static_cast<std::size_t>(w);
        for (int row = 0; row < h; row++)
            std::memcpy(part.bytes.data() + static_cast<std::size_t>(row) * length,
                        bytes.data() +
                            (static_cast<std::size_t>(y + row) * static_cast<std::size_t>(width) +
                             static_cast<std::size_t>(x)) *
                                pixel,
                        length);
        return part;
    }
    for (int row = 0; row < h; row++)
        for (int column = 0; column < w; column++)
            for (int c = 0; c < channels; c++)
                part.set(column, row, c, at(x + column, y + row, c));
    return part;
}

void Pixels::paste(const Pixels& part, int x, int y) {
    for (int row = 0; row < part.height; row++)
        for (int column = 0; column < part.width; column++)
            for (int c = 0; c < channels; c++)
                set(x + column, y + row, c, part.at(column, row, c));
}

zelConfig Pixels::config() const {
    return zelConfig(type, zelInterleaved, channels, nullptr, 0, zelUpperLeftOrigin);
}

zelStatus readPixels(zelFile* file, Pixels& pixels, int x, int y) {
    const zelConfig config = pixels.config();
    return file->getTile(x, y, 0, pixels.width, pixels.height, 1, pixels.bytes.data(), &config);
}

Pixels readPixels(zelFile* file) {
    zelSize size;
    file->getSize(size, zelUpperLeftOrigin);
    Pixels pixels(file->getDataType(), size.x, size.y, size.c);
    EXPECT_EQ(readPixels(file, pixels), zelOKAY);
    return pixels;
}

zelStatus writePixels(zelFile* file, const Pixels& pixels, int x, int y) {
    const zelConfig config = pixels.config();
    return file->setTile(x, y, 0, pixels.width, pixels.height, 1, pixels.bytes.data(), &config);
}

} // namespace zel::test
