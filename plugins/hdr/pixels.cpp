#include "pixels.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>

namespace zelhdr {

namespace {

constexpr int bias = 136;
constexpr int highestExponent = 255;

// Powers of two, down to some that are subnormal as floats and still exact.
std::array<float, 256> makeScales() {
    std::array<float, 256> scales{};
    for (int exponent = 1; exponent <= highestExponent; exponent++)
        scales[static_cast<std::size_t>(exponent)] = std::ldexp(1.0F, exponent - bias);
    return scales;
}

double powerOfTwo(int exponent) {
    return std::ldexp(1.0, exponent);
}

void encodePixel(const float* elements, std::uint8_t* stored) {
    double largest = 0;
    std::array<double, 3> values{};
    for (std::size_t c = 0; c < values.size(); c++) {
        const float value = elements[c];
        values[c] = value > 0 ? std::min(value, FLT_MAX) : 0.0F;
        largest = std::max(largest, values[c]);
    }
    int exponent = 0;
    std::frexp(largest, &exponent);
    exponent += bias - 8; // the largest mantissa is 128 or more
    double factor = powerOfTwo(bias - exponent);
    if (largest * factor + 0.5 >= 256 || exponent > highestExponent) {
        exponent = std::min(exponent + 1, highestExponent);
        factor = powerOfTwo(bias - exponent);
    }
    if (largest == 0 || exponent < 1) {
        std::fill_n(stored, 4, std::uint8_t{0});
        return;
    }
    for (std::size_t c = 0; c < values.size(); c++)
        stored[c] = static_cast<std::uint8_t>(std::min(values[c] * factor + 0.5, 255.0));
    stored[3] = static_cast<std::uint8_t>(exponent);
}

} // namespace

void decodePixels(const std::uint8_t* stored, float* elements, int pixels) {
    static const std::array<float, 256> scales = makeScales();
    for (; pixels > 0; pixels--, stored += 4, elements += 3) {
        const float scale = scales[stored[3]];
        for (int c = 0; c < 3; c++)
            elements[c] = static_cast<float>(stored[c]) * scale;
    }
}

void encodePixels(const float* elements, std::uint8_t* stored, int pixels) {
    for (; pixels > 0; pixels--, stored += 4, elements += 3)
        encodePixel(elements, stored);
}

} // namespace zelhdr
