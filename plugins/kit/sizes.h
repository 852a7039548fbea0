#ifndef ZELKIT_SIZES_H
#define ZELKIT_SIZES_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>

namespace zelkit {

/// The product of the factors; nothing if a factor is negative or the product passes 63 bits.
std::optional<std::int64_t> checkedProduct(std::initializer_list<std::int64_t> factors);

/// How many rows of `rowBytes` bytes make a band of about 256 KiB: at least 1, at most `height`
/// (and 1 for a height below 1).
int bandRows(std::int64_t rowBytes, int height);

/// Longer ICC profiles of PNG, JPEG, WebP and TIFF are left out of what is read: so that a file
/// that is only asked what it is takes little memory, which it holds several times on the way.
constexpr std::size_t largestProfile = 3 << 20;

} // namespace zelkit

#endif
