#ifndef ZEL_PLUGINCHECK_PICTURE_H
#define ZEL_PLUGINCHECK_PICTURE_H

#include <zel/zelFile.h>
#include <zel/zelTile.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace zel::check {

using Box = zelTile3D<int>;

/// A box of pixels in memory: interleaved, seen from the upper left.
class Picture {
public:
    /// All elements are 0. `size` is counted from the upper left.
    Picture(zelDataType type, const zelSize& size);

    /// Any numbers, such that every float holds them, with runs of equal pixels.
    static Picture noise(zelDataType type, const zelSize& size, unsigned seed);
    /// Numbers that rise evenly, by a different start for each channel: what a lossy compression
    /// keeps nearly. They tell all corners and the first four channels from each other.
    static Picture ramp(zelDataType type, const zelSize& size);
    /// How far an element may be off after a lossy compression of a ramp.
    static double rampTolerance(zelDataType type);

    const zelSize& size() const { return size_; }
    double at(std::size_t index) const;
    void set(std::size_t index, double value);

    Picture cut(const Box& box) const;
    void paste(const Picture& part, const Box& box);

    /// Moves the pixels between the file and here, where `box` is the place in the file.
    zelStatus read(zelFile* file, const Box& box);
    zelStatus write(zelFile* file, const Box& box) const;

    /// Where the first element lies that is further off than `tolerance`; empty if there is none.
    /// Keeps the largest difference in `worst`, if that is not null.
    std::string difference(const Picture& expected, double tolerance,
                           double* worst = nullptr) const;
    bool operator==(const Picture& other) const { return difference(other, 0).empty(); }

private:
    std::size_t indexOf(int x, int y, int z, int c) const;
    zelConfig config() const;

    zelDataType type_;
    zelSize size_;
    std::vector<unsigned char> bytes_;
};

Box wholeBox(const zelSize& size);
/// A box inside the image of at least a pixel.
Box randomBox(const zelSize& size, std::mt19937& random);
std::string boxText(const Box& box);

} // namespace zel::check

#endif
