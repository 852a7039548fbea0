#ifndef ZEL_PLATFORM_TRUNCATE_H
#define ZEL_PLATFORM_TRUNCATE_H

#include <cmath>
#include <cstdint>

namespace zel::platform {

/// The number cut toward zero to a whole one. The callers rely on one answer for every value: what
/// 64 bits do not hold, infinities and NaN give the lowest 64-bit value, whose low 32 bits are 0.
/// One selection and one conversion without a branch, so that loops over it can be vectorised.
inline std::int64_t truncateToInt64(double value) {
    constexpr double lowest = -0x1p63;
    const double held = std::fabs(value) < -lowest ? value : lowest;
    return static_cast<std::int64_t>(held);
}

} // namespace zel::platform

#endif
