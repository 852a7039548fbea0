#ifndef ZEL_TESTS_PLUGINS_PIXELS_H
#define ZEL_TESTS_PLUGINS_PIXELS_H

#include <zel/zelFile.h>

#include <cstdint>
#include <vector>

namespace zel::test {

/// A box of pixels in memory: interleaved, seen from the upper left, in a file's element type.
struct Pixels {
    zelDataType type = zelUChar;
    int width = 0;
    int height = 0;
    int channels = 1;
    std::vector<std::uint8_t> bytes;

    /// All elements are 0.
    Pixels(zelDataType elementType, int w, int h, int c);

    std::int64_t count() const { return std::int64_t{width} * height * channels; }
    double at(int x, int y, int c) const;
    void set(int x, int y, int c, double value);
    bool operator==(const Pixels& other) const { return bytes == other.bytes; }

    /// Numbers all over the range of the type, that differ from place to place and from `seed` to
    /// `seed`.
    static Pixels pattern(zelDataType type, int w, int h, int c, unsigned seed);

    Pixels cut(int x, int y, int w, int h) const;
    void paste(const Pixels& part, int x, int y);

    zelConfig config() const;

private:
    std::int64_t indexOf(int x, int y, int c) const {
        return (std::int64_t{y} * width + x) * channels + c;
    }
};

/// Reads the pixels from the place x, y. What is not read for a failure stays as it was.
zelStatus readPixels(zelFile* file, Pixels& pixels, int x = 0, int y = 0);
/// Reads the whole image in its own type, and fails the test if that fails.
Pixels readPixels(zelFile* file);
/// Writes the pixels to the place x, y.
zelStatus writePixels(zelFile* file, const Pixels& pixels, int x = 0, int y = 0);

} // namespace zel::test

#endif
