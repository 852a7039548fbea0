#include "picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zel::check {

namespace {

// Calls `visit` with a value of the C type that holds an element; bits are not visited.
template <typename Visitor>
auto withType(zelDataType type, const Visitor& visit) {
    switch (type) {
    case zelChar:
        return visit(static_cast<signed char>(0));
    case zelUShort:
        return visit(static_cast<unsigned short>(0));
    case zelShort:
        return visit(static_cast<short>(0));
    case zelUInt:
        return visit(0u);
    case zelInt:
        return visit(0);
    case zelFloat:
        return visit(0.0f);
    case zelDouble:
        return visit(0.0);
    default:
        return visit(static_cast<unsigned char>(0));
    }
}

bool isReal(zelDataType type) {
    return type == zelFloat || type == zelDouble;
}

double lowest(zelDataType type) {
    return isReal(type) ? 0 : zelDataMin(type);
}

double span(zelDataType type) {
    return isReal(type) ? 1 : zelDataMax(type) - zelDataMin(type);
}

std::size_t elementsOf(const zelSize& size) {
    return static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y) *
           static_cast<std::size_t>(size.z) * static_cast<std::size_t>(size.c);
}

// Whether the element belongs to a pixel that is to be like the one before it: runs of up to 16
// pixels in two rows of three.
bool isInRun(std::size_t element, const zelSize& size) {
    const std::size_t pixel = element / static_cast<std::size_t>(size.c);
    const std::size_t x = pixel % static_cast<std::size_t>(size.x);
    const std::size_t y = pixel / static_cast<std::size_t>(size.x);
    return x > 0 && y % 3 > 0 && x % 23 > 6 - y % 3;
}

std::size_t bytesOf(zelDataType type, std::size_t elements) {
    return type == zelBit ? (elements + 7) / 8 : elements * zelDataSize(type, 1);
}

} // namespace

Picture::Picture(zelDataType type, const zelSize& size)
    : type_(type), size_(size), bytes_(bytesOf(type, elementsOf(size))) {}

Picture Picture::noise(zelDataType type, const zelSize& size, unsigned seed) {
    Picture picture(type, size);
    std::mt19937 random(seed);
    for (std::size_t i = 0; i < elementsOf(size); i++) {
        const auto number = static_cast<double>(random());
        // Small multiples of a power of two for floats, the whole range for integers.
        const double scaled = isReal(type)     ? std::fmod(number, 65536) / 64 - 512
                              : type == zelBit ? std::fmod(number, 2)
                                               : std::fmod(number, span(type) + 1) + lowest(type);
        picture.set(i,
                    isInRun(i, size) ? picture.at(i - static_cast<std::size_t>(size.c)) : scaled);
    }
    return picture;
}

Picture Picture::ramp(zelDataType type, const zelSize& size) {
    Picture picture(type, size);
    std::size_t i = 0;
    for (int z = 0; z < size.z; z++)
        for (int y = 0; y < size.y; y++)
            for (int x = 0; x < size.x; x++)
                for (int c = 0; c < size.c; c++) {
                    const double share = 0.1 + 0.3 * x / size.x + 0.2 * y / size.y + 0.1 * (c % 4);
                    picture.set(i++, std::floor((lowest(type) + share * span(type)) * 1024) / 1024);
                }
    return picture;
}

double Picture::rampTolerance(zelDataType type) {
    return 0.08 * span(type);
}

double Picture::at(std::size_t index) const {
    if (type_ == zelBit)
        return bytes_[index / 8] >> (7 - index % 8) & 1;
    return withType(type_, [&](auto element) {
        std::memcpy(&element, bytes_.data() + index * sizeof element, sizeof element);
        return static_cast<double>(element);
    });
}

void Picture::set(std::size_t index, double value) {
    if (type_ == zelBit) {
        const int mask = 0x80 >> index % 8;
        unsigned char& byte = bytes_[index / 8];
        byte = static_cast<unsigned char>(value != 0 ? byte | mask : byte & ~mask);
        return;
    }
    withType(type_, [&](auto element) {
        element = static_cast<decltype(element)>(value);
        std::memcpy(bytes_.data() + index * sizeof element, &element, sizeof element);
    });
}

std::size_t Picture::indexOf(int x, int y, int z, int c) const {
    const auto wide = [](int number) { return static_cast<std::size_t>(number); };
    return ((wide(z) * wide(size_.y) + wide(y)) * wide(size_.x) + wide(x)) * wide(size_.c) +
           wide(c);
}

Picture Picture::cut(const Box& box) const {
    Picture part(type_, zelSize(box.nx, box.ny, box.nz, size_.c));
    for (int z = 0; z < box.nz; z++)
        for (int y = 0; y < box.ny; y++)
            for (int x = 0; x < box.nx; x++)
                for (int c = 0; c < size_.c; c++)
                    part.set(part.indexOf(x, y, z, c),
                             at(indexOf(box.x + x, box.y + y, box.z + z, c)));
    return part;
}

void Picture::paste(const Picture& part, const Box& box) {
    for (int z = 0; z < box.nz; z++)
        for (int y = 0; y < box.ny; y++)
            for (int x = 0; x < box.nx; x++)
                for (int c = 0; c < size_.c; c++)
                    set(indexOf(box.x + x, box.y + y, box.z + z, c),
                        part.at(part.indexOf(x, y, z, c)));
}

zelConfig Picture::config() const {
    return zelConfig(type_, zelInterleaved, size_.c, nullptr, 0, zelUpperLeftOrigin);
}

zelStatus Picture::read(zelFile* file, const Box& box) {
    const zelConfig layout = config();
    return file->getTile(box.x, box.y, box.z, box.nx, box.ny, box.nz, bytes_.data(), &layout);
}

zelStatus Picture::write(zelFile* file, const Box& box) const {
    const zelConfig layout = config();
    return file->setTile(box.x, box.y, box.z, box.nx, box.ny, box.nz, bytes_.data(), &layout);
}

std::string Picture::difference(const Picture& expected, double tolerance, double* worst) const {
    if (type_ != expected.type_ || bytes_.size() != expected.bytes_.size())
        return "another size or type";
    if (bytes_ == expected.bytes_)
        return {};
    const std::size_t row = static_cast<std::size_t>(size_.x) * static_cast<std::size_t>(size_.c);
    std::string first;
    for (std::size_t i = 0; i < elementsOf(size_); i++) {
        const double off = std::fabs(at(i) - expected.at(i));
        if (worst)
            *worst = std::max(*worst, off / span(type_));
        if (off > tolerance && first.empty())
            first = "row " + std::to_string(i / row) + ", element " + std::to_string(i % row) +
                    " is " + std::to_string(at(i)) + ", not " + std::to_string(expected.at(i));
    }
    return first;
}

Box wholeBox(const zelSize& size) {
    return {0, 0, 0, size.x, size.y, size.z};
}

Box randomBox(const zelSize& size, std::mt19937& random) {
    const auto below = [&](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const int x = below(size.x), y = below(size.y), z = below(size.z);
    return {x, y, z, 1 + below(size.x - x), 1 + below(size.y - y), 1 + below(size.z - z)};
}

std::string boxText(const Box& box) {
    return std::to_string(box.nx) + " x " + std::to_string(box.ny) + " x " +
           std::to_string(box.nz) + " pixels at " + std::to_string(box.x) + ", " +
           std::to_string(box.y) + ", " + std::to_string(box.z);
}

} // namespace zel::check
