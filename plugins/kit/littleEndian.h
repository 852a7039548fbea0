#ifndef ZELKIT_LITTLEENDIAN_H
#define ZELKIT_LITTLEENDIAN_H

#include <cstdint>
#include <vector>

namespace zelkit {

// Numbers whose low byte comes first, at any place.

inline unsigned get16(const std::uint8_t* bytes) {
    return bytes[0] | static_cast<unsigned>(bytes[1]) << 8;
}

inline std::uint32_t get32(const std::uint8_t* bytes) {
    return get16(bytes) | static_cast<std::uint32_t>(get16(bytes + 2)) << 16;
}

/// Adds the lowest `count` bytes of a number.
inline void append(std::vector<std::uint8_t>& bytes, std::uint32_t number, int count) {
    for (int i = 0; i < count; i++)
        bytes.push_back(static_cast<std::uint8_t>(number >> 8 * i));
}

} // namespace zelkit

#endif
