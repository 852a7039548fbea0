#ifndef ZEL_CONVERT_BITS_H
#define ZEL_CONVERT_BITS_H

// Runs of packed bits, taken by whole bytes where a run covers them. Bit i lies in byte i / 8 at
// bit 7 - (i mod 8). A byte that a run covers only in part is read, changed and written back.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zel::convert {

inline unsigned bitAt(const std::uint8_t* bytes, std::ptrdiff_t i) {
    return bytes[i >> 3] >> (~i & 7) & 1U;
}

inline void setBit(std::uint8_t* bytes, std::ptrdiff_t i, bool on) {
    const unsigned bit = 1U << (~i & 7);
    const unsigned old = bytes[i >> 3];
    bytes[i >> 3] = static_cast<std::uint8_t>(on ? old | bit : old & ~bit);
}

/// Bits from `first` to the next start of a byte, at most `count`.
inline std::ptrdiff_t bitsToByteStart(std::ptrdiff_t first, std::ptrdiff_t count) {
    const std::ptrdiff_t head = -first & 7;
    return head < count ? head : count;
}

/// The eight flags at `flags`, each 0 or 1, as a byte; the first becomes the top bit.
inline std::uint8_t packByte(const std::uint8_t* flags) {
    if constexpr (std::endian::native == std::endian::little) {
        // The product moves flag i to bit 63 - i, and no two of its terms meet in one place.
        std::uint64_t word = 0;
        std::memcpy(&word, flags, sizeof word);
        return static_cast<std::uint8_t>(word * 0x8040201008040201U >> 56);
    }
    unsigned byte = 0;
    for (int i = 0; i < 8; ++i)
        byte = byte << 1 | flags[i];
    return static_cast<std::uint8_t>(byte);
}

/// The inverse of `packByte`.
inline void unpackByte(std::uint8_t byte, std::uint8_t* flags) {
    if constexpr (std::endian::native == std::endian::little) {
        // Byte i of the word keeps bit 7 - i, which the sum then carries into that byte's top bit.
        const std::uint64_t chosen = byte * 0x0101010101010101U & 0x0102040810204080U;
        const std::uint64_t word = (chosen + 0x7f7f7f7f7f7f7f7fU) >> 7 & 0x0101010101010101U;
        std::memcpy(flags, &word, sizeof word);
        return;
    }
    for (int i = 0; i < 8; ++i)
        flags[i] = static_cast<std::uint8_t>(byte >> (7 - i) & 1);
}

/// Stores `count` flags of 0 or 1 as the bits from `first` on.
inline void packBits(std::uint8_t* bytes, std::ptrdiff_t first, const std::uint8_t* flags,
                     std::ptrdiff_t count) {
    std::ptrdiff_t i = 0;
    for (const std::ptrdiff_t head = bitsToByteStart(first, count); i < head; ++i)
        setBit(bytes, first + i, flags[i] != 0);
    std::uint8_t* target = bytes + ((first + i) >> 3);
    const std::ptrdiff_t whole = (count - i) >> 3;
    for (std::ptrdiff_t b = 0; b < whole; ++b)
        target[b] = packByte(flags + i + 8 * b);
    i += 8 * whole;
    for (; i < count; ++i)
        setBit(bytes, first + i, flags[i] != 0);
}

/// Gives the `count` bits from `first` on as flags of 0 or 1.
inline void unpackBits(std::uint8_t* flags, const std::uint8_t* bytes, std::ptrdiff_t first,
                       std::ptrdiff_t count) {
    std::ptrdiff_t i = 0;
    for (const std::ptrdiff_t head = bitsToByteStart(first, count); i < head; ++i)
        flags[i] = static_cast<std::uint8_t>(bitAt(bytes, first + i));
    const std::uint8_t* source = bytes + ((first + i) >> 3);
    const std::ptrdiff_t whole = (count - i) >> 3;
    for (std::ptrdiff_t b = 0; b < whole; ++b)
        unpackByte(source[b], flags + i + 8 * b);
    i += 8 * whole;
    for (; i < count; ++i)
        flags[i] = static_cast<std::uint8_t>(bitAt(bytes, first + i));
}

/// Copies `count` bits between runs that may begin anywhere in a byte.
inline void copyBits(std::uint8_t* to, std::ptrdiff_t toFirst, const std::uint8_t* from,
                     std::ptrdiff_t fromFirst, std::ptrdiff_t count) {
    std::ptrdiff_t i = 0;
    for (const std::ptrdiff_t head = bitsToByteStart(toFirst, count); i < head; ++i)
        setBit(to, toFirst + i, bitAt(from, fromFirst + i) != 0);

    const std::ptrdiff_t whole = (count - i) >> 3;
    std::uint8_t* target = to + ((toFirst + i) >> 3);
    const std::uint8_t* source = from + ((fromFirst + i) >> 3);
    const int shift = static_cast<int>((fromFirst + i) & 7);
    if (shift == 0 && whole > 0) {
        std::memcpy(target, source, static_cast<std::size_t>(whole));
    } else {
        for (std::ptrdiff_t b = 0; b < whole; ++b) {
            const unsigned pair = static_cast<unsigned>(source[b]) << 8 | source[b + 1];
            target[b] = static_cast<std::uint8_t>(pair >> (8 - shift));
        }
    }
    for (i += whole * 8; i < count; ++i)
        setBit(to, toFirst + i, bitAt(from, fromFirst + i) != 0);
}

} // namespace zel::convert

#endif
