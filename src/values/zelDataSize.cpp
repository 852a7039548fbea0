#include <zel/zelDataSize.h>

#include "values/element.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

namespace {

struct TypeRange {
    zelDataType type;
    double min;
    double max;
};

template <class T>
constexpr TypeRange rangeOf(zelDataType type) {
    typedef std::numeric_limits<T> Limits;
    return {type, static_cast<double>(Limits::lowest()), static_cast<double>(Limits::max())};
}

constexpr TypeRange typeRanges[] = {
    {zelBit, 0.0, 1.0},
    rangeOf<std::uint8_t>(zelUChar),
    rangeOf<std::int8_t>(zelChar),
    rangeOf<std::uint16_t>(zelUShort),
    rangeOf<std::int16_t>(zelShort),
    rangeOf<std::uint32_t>(zelUInt),
    rangeOf<std::int32_t>(zelInt),
    rangeOf<float>(zelFloat),
    rangeOf<double>(zelDouble),
};

constexpr int allTypes = 0x1FF;
constexpr int signedTypes = zelChar | zelShort | zelInt | zelFloat | zelDouble;
constexpr int unsignedTypes = zelBit | zelUChar | zelUShort | zelUInt;
constexpr int floatingTypes = zelFloat | zelDouble;

const TypeRange* findRange(zelDataType type) {
    const auto* found = std::find_if(std::begin(typeRanges), std::end(typeRanges),
                                     [type](const TypeRange& r) { return r.type == type; });
    return found == std::end(typeRanges) ? nullptr : found;
}

// The types that hold every value of `desired`.
int typesThatHold(zelDataType desired) {
    switch (desired) {
    case zelUChar:
        return ~(zelBit | zelChar);
    case zelChar:
        return ~unsignedTypes;
    case zelUShort:
        return zelUShort | zelUInt | zelInt | floatingTypes;
    case zelShort:
        return zelShort | zelInt | floatingTypes;
    case zelUInt:
        return zelUInt | floatingTypes;
    case zelInt:
        return zelInt | floatingTypes;
    case zelFloat:
        return floatingTypes;
    case zelDouble:
        return zelDouble;
    default:
        return ~0;
    }
}

int signSet(zelDataType desired, int flags) {
    if (flags & zelDataAnySign)
        return allTypes;
    return (flags & zelDataWantSigned) || zelDataIsSigned(desired) ? signedTypes : unsignedTypes;
}

} // namespace

unsigned zelDataSize(zelDataType type, int count) {
    const std::int64_t bytes = zel::elementBytes(type, count);
    constexpr std::int64_t largest = std::numeric_limits<unsigned>::max();
    return static_cast<unsigned>(std::clamp<std::int64_t>(bytes, 0, largest));
}

zelDataType zelDataTypeFromRange(double minVal, double maxVal, int typeMask) {
    const double min = std::trunc(minVal);
    const double max = std::trunc(maxVal);
    for (const TypeRange& range : typeRanges) {
        const bool holds = range.type == zelDouble || (min >= range.min && max <= range.max);
        if ((typeMask & range.type) && holds)
            return range.type;
    }
    return static_cast<zelDataType>(0);
}

double zelDataMin(zelDataType type) {
    const TypeRange* range = findRange(type);
    return range ? range->min : 0.0;
}

double zelDataMax(zelDataType type) {
    const TypeRange* range = findRange(type);
    return range ? range->max : 0.0;
}

int zelDataIsSigned(zelDataType type) {
    return type & signedTypes;
}

int zelDataIsIntegral(zelDataType type) {
    return type & ~floatingTypes;
}

zelDataType zelDataClosestType(zelDataType desired, int allowed, int flags) {
    if (!findRange(desired))
        return static_cast<zelDataType>(0);
    const int signs = signSet(desired, flags);
    int mask = allowed & typesThatHold(desired) & signs;
    int t = desired;
    if (mask && !(flags & zelDataDemote)) {
        while (!(t & mask) && t <= zelDouble)
            t *= 2;
    }
    if (t & mask)
        return static_cast<zelDataType>(t);

    mask = allowed & signs ? allowed & signs : allowed;
    while (t > 0 && !(t & mask))
        t /= 2;
    return static_cast<zelDataType>(t);
}
