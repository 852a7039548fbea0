#include "kit/sizes.h"

#include <algorithm>

namespace zelkit {

std::optional<std::int64_t> checkedProduct(std::initializer_list<std::int64_t> factors) {
    std::int64_t product = 1;
    for (const std::int64_t factor : factors)
        if (factor < 0 || __builtin_mul_overflow(product, factor, &product))
            return std::nullopt;
    return product;
}

int bandRows(std::int64_t rowBytes, int height) {
    constexpr std::int64_t bandBytes = 256 * 1024;
    const std::int64_t rows = bandBytes / std::max<std::int64_t>(rowBytes, 1);
    return static_cast<int>(std::clamp<std::int64_t>(rows, 1, std::max(height, 1)));
}

} // namespace zelkit
