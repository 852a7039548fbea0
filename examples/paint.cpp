// Paints a lit ball on a checkered floor and writes it, in the format that the name asks for.
//   paint FILE [WIDTH HEIGHT]
//
// It shows how a file is made: say what is known of it (here the size, the type and the colour
// model), leave the rest to the format, and hand over bands of rows.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>
#include <zel/zel.h>

namespace {

struct Colour {
    double red, green, blue;
};

Colour scaled(Colour c, double factor) {
    return {c.red * factor, c.green * factor, c.blue * factor};
}

// The floor and the sky, seen along a line that rises by `rise` and goes aside by `aside`.
Colour background(double aside, double rise) {
    if (rise >= -0.05)
        return scaled({0.55, 0.75, 1.0}, 1.0 - 0.5 * std::max(rise, 0.0));
    const double distance = 1.0 / -rise;
    const int square = static_cast<int>(std::floor(aside * distance) + std::floor(distance));
    const double light = 1.0 / (1.0 + 0.08 * distance);
    return scaled(square % 2 == 0 ? Colour{0.9, 0.85, 0.75} : Colour{0.35, 0.2, 0.15}, light);
}

// The colour at a place in the picture; (0, 0) is its middle and the height goes from -1 to 1.
Colour look(double x, double y) {
    const double inside = 0.49 - x * x - y * y;
    if (inside < 0)
        return background(x, y);
    const double z = std::sqrt(inside);
    const double facing = std::max(0.0, (-0.5 * x + 0.7 * y + 0.5 * z) / 0.7);
    const Colour body = scaled({0.85, 0.2, 0.15}, 0.15 + 0.85 * facing);
    const double shine = 0.8 * std::pow(facing, 40.0);
    return {body.red + shine, body.green + shine, body.blue + shine};
}

unsigned char byte(double value) {
    return static_cast<unsigned char>(std::lround(255 * std::clamp(value, 0.0, 1.0)));
}

void paintRow(unsigned char* row, int y, int width, int height) {
    for (int x = 0; x < width; ++x) {
        const Colour c = look((2.0 * x + 1 - width) / height, (height - 2.0 * y - 1) / height);
        row[3 * x] = byte(c.red);
        row[3 * x + 1] = byte(c.green);
        row[3 * x + 2] = byte(c.blue);
    }
}

zelStatus paint(zelFile* file, int width, int height) {
    constexpr int bandRows = 64;
    const zelConfig layout(zelUChar, zelInterleaved, 3, nullptr, 0, zelUpperLeftOrigin);
    std::vector<unsigned char> band(3 * static_cast<std::size_t>(width) * bandRows);
    zelStatus status = zelOKAY;
    for (int y = 0; y < height && status == zelOKAY; y += bandRows) {
        const int rows = std::min(bandRows, height - y);
        for (int row = 0; row < rows; ++row)
            paintRow(band.data() + 3 * static_cast<std::size_t>(width) * row, y + row, width,
                     height);
        status = file->setTile(0, y, 0, width, rows, 1, band.data(), &layout);
    }
    return status;
}

int complain(const char* name, zelStatus status) {
    char reason[128];
    std::fprintf(stderr, "paint: %s: %s\n", name, zelStatusToString(status, reason, sizeof reason));
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    const int width = argc > 3 ? std::atoi(argv[2]) : 640;
    const int height = argc > 3 ? std::atoi(argv[3]) : 480;
    if ((argc != 2 && argc != 4) || width < 1 || height < 1 || width > 30000) {
        std::fprintf(stderr, "usage: paint FILE [WIDTH HEIGHT]\n");
        return 2;
    }
    const zelSize size(width, height, 1, 3);
    const zelFileConfig wish(&size, zelUChar, zelInterleaved, zelRGB);
    zelStatus status = zelOKAY;
    zelFile* file = zelFile::create(argv[1], nullptr, &wish, nullptr, &status);
    if (!file)
        return complain(argv[1], status);

    status = paint(file, width, height);
    const zelStatus closed = file->close(0);
    if (status == zelOKAY)
        status = closed;
    return status == zelOKAY ? 0 : complain(argv[1], status);
}
