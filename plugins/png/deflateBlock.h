#ifndef ZELPNG_DEFLATEBLOCK_H
#define ZELPNG_DEFLATEBLOCK_H

#include "bitWriter.h"

#include <cstdint>
#include <span>

namespace zelpng {

/// A byte as it is, or bytes that stood earlier.
class Symbol {
public:
    Symbol() = default;
    static Symbol literal(std::uint8_t byte) { return Symbol(byte); }
    static Symbol match(int length, int distance) {
        return Symbol(static_cast<std::uint32_t>(distance) << 9 |
                      static_cast<std::uint32_t>(length));
    }

    bool isMatch() const { return bits_ >= 512; }
    int byte() const { return static_cast<int>(bits_); }
    int length() const { return static_cast<int>(bits_ & 511); }
    int distance() const { return static_cast<int>(bits_ >> 9); }

private:
    explicit Symbol(std::uint32_t bits) : bits_(bits) {}
    std::uint32_t bits_ = 0;
};

/// Writes one block of deflate in the smallest of its three forms. `bytes` are what the symbols
/// stand for; without them the block is not stored. `last` ends the stream.
void writeBlock(BitWriter& out, std::span<const Symbol> symbols,
                std::span<const std::uint8_t> bytes, bool last);

/// The same without compression.
void writeStored(BitWriter& out, std::span<const std::uint8_t> bytes, bool last);

/// The most bytes that a block of so many bytes takes.
std::size_t largestBlock(std::size_t bytes);

} // namespace zelpng

#endif
