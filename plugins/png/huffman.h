#ifndef ZELPNG_HUFFMAN_H
#define ZELPNG_HUFFMAN_H

#include <cstdint>
#include <span>

namespace zelpng {

/// The most symbols that a code has.
constexpr int mostSymbols = 288;

/// Gives each symbol that is counted the length in bits of its Huffman code, none above `longest`,
/// and 0 to the others. At least two symbols get a length, so that the code is complete.
void setCodeLengths(std::span<const std::uint32_t> counts, int longest,
                    std::span<std::uint8_t> lengths);

/// The codes of deflate for these lengths, turned so that their first bit is the lowest.
void setCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes);

} // namespace zelpng

#endif
