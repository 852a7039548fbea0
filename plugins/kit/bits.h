#ifndef ZELKIT_BITS_H
#define ZELKIT_BITS_H

#include <cstdint>

namespace zelkit {

// Packed bits: bit 0 is the top bit of the first byte.

inline int getBit(const std::uint8_t* bits, std::int64_t at) {
    return bits[at / 8] >> (7 - at % 8) & 1;
}

inline void setBit(std::uint8_t* bits, std::int64_t at, int bit) {
    const auto mask = static_cast<std::uint8_t>(0x80 >> at % 8);
    std::uint8_t& byte = bits[at / 8];
    byte = static_cast<std::uint8_t>(bit ? byte | mask : byte & ~mask);
}

/// Moves `count` bits between any two places of different memory. `flip` is 0xff to exchange 0 and
/// 1, else 0. The bits beside them stay, and no byte without one of them is touched.
void moveBits(std::uint8_t* to, std::int64_t toBit, const std::uint8_t* from, std::int64_t fromBit,
              std::int64_t count, std::uint8_t flip = 0);

} // namespace zelkit

#endif
