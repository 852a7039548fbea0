#ifndef ZELHDR_PIXELS_H
#define ZELHDR_PIXELS_H

#include <cstdint>

namespace zelhdr {

// Three numbers under one exponent: n = mantissa * 2^(exponent - 136), and 0 for an exponent of 0.

void decodePixels(const std::uint8_t* stored, float* elements, int pixels);

/// Rounds to nearest. Numbers below 0 and those that are none become 0, those above the largest
/// one become it.
void encodePixels(const float* elements, std::uint8_t* stored, int pixels);

} // namespace zelhdr

#endif
