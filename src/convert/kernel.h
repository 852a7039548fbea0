#ifndef ZEL_CONVERT_KERNEL_H
#define ZEL_CONVERT_KERNEL_H

// The one template behind all roads. A source file for each width of destination instantiates it,
// so that they compile side by side.

#include "convert/bits.h"
#include "convert/roads.h"
#include "convert/vectors.h"
#include "platform/truncate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace zel::convert {

static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559,
              "a number beyond the range of a float has to become an infinity");

/// Stands for `zelBit` where the other types are named by their C++ type.
struct Bit {};

/// Elements that go through a small buffer at a time.
constexpr std::ptrdiff_t chunkSize = 512;

/// One element by value; a real becomes an integer through 64 bits.
template <class To, class From>
To convertValue(From value) {
    if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>)
        return static_cast<To>(platform::truncateToInt64(value));
    else
        return static_cast<To>(value);
}

/// What a value becomes as a bit.
template <class From>
bool testValue(From value) {
    if constexpr (std::is_floating_point_v<From>)
        return convertValue<std::uint32_t>(value) != 0;
    else
        return value != 0;
}

/// Stores `make(n)` for every value, with n the value cut to 32 bits by the processor's own
/// conversion. False if a value is too large for that, or NaN: then what was stored counts for
/// nothing. One loop does both, and its flag is as wide as a value, for the vectoriser's sake.
template <class To, class Real, class Make>
bool convertByInt32(To* to, const Real* from, std::ptrdiff_t count, const Make& make) {
    using Flag = std::conditional_t<sizeof(Real) == 8, std::int64_t, std::int32_t>;
    Flag unfit = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const bool fits = std::fabs(from[i]) < static_cast<Real>(0x1p31);
        unfit |= fits ? Flag{0} : Flag{-1};
        to[i] = make(static_cast<std::int32_t>(fits ? from[i] : Real{0}));
    }
    return unfit == 0;
}

/// Calls `body(start, length)` for parts of a run of `count`, each at most `chunkSize` long. The
/// first part is short of that by `lead`, so that the later ones begin on whole bytes of bits.
template <class Body>
void inChunks(std::ptrdiff_t count, std::ptrdiff_t lead, const Body& body) {
    std::ptrdiff_t limit = chunkSize - lead;
    for (std::ptrdiff_t start = 0; start < count;) {
        const std::ptrdiff_t length = std::min(limit, count - start);
        body(start, length);
        start += length;
        limit = chunkSize;
    }
}

template <class To, class From>
void convertValues(To* to, const From* from, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        to[i] = convertValue<To>(from[i]);
}

/// The fast way for reals that become integers; false if it cannot serve, with nothing of what was
/// stored to count.
template <class To, class Real>
bool cutChunk(To* to, const Real* from, std::ptrdiff_t count) {
    const auto lowBits = [](std::int32_t n) { return static_cast<To>(n); };
    if constexpr (sizeof(To) == sizeof(std::int32_t))
        return convertByInt32(to, from, count, lowBits);
    // In two steps, since compilers narrow a loop over reals badly.
    std::int32_t cut[chunkSize];
    if (!convertByInt32(cut, from, count, [](std::int32_t n) { return n; }))
        return false;
    convertValues(to, cut, count);
    return true;
}

/// Neighbours to neighbours, both of whole bytes.
template <class To, class From>
void convertRun(To* to, const From* from, std::ptrdiff_t count) {
    if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        inChunks(count, 0, [=](std::ptrdiff_t start, std::ptrdiff_t length) {
            if (!cutChunk(to + start, from + start, length))
                convertValues(to + start, from + start, length);
        });
    } else {
        convertValues(to, from, count);
    }
}

template <class From>
void testRun(std::uint8_t* flags, const From* from, std::ptrdiff_t count) {
    if constexpr (std::is_floating_point_v<From>) {
        const auto test = [](std::int32_t n) { return static_cast<std::uint8_t>(n != 0); };
        if (convertByInt32(flags, from, count, test))
            return;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i)
        flags[i] = testValue(from[i]);
}

/// The element that a type stands for in memory: bits lie in bytes.
template <class Element>
using Stored = std::conditional_t<std::is_same_v<Element, Bit>, std::uint8_t, Element>;

/// A row with steps of 1 on both sides.
template <class To, class From>
void convertNeighbours(Stored<To>* tp, std::ptrdiff_t to, const Stored<From>* fp,
                       std::ptrdiff_t from, std::ptrdiff_t count) {
    std::uint8_t flags[chunkSize];
    if constexpr (std::is_same_v<To, Bit> && std::is_same_v<From, Bit>) {
        copyBits(tp, to, fp, from, count);
    } else if constexpr (std::is_same_v<From, Bit>) {
        if constexpr (std::is_same_v<To, std::uint8_t>)
            return unpackBits(tp + to, fp, from, count);
        inChunks(count, from & 7, [&](std::ptrdiff_t start, std::ptrdiff_t length) {
            unpackBits(flags, fp, from + start, length);
            convertValues(tp + to + start, flags, length);
        });
    } else if constexpr (std::is_same_v<To, Bit>) {
        inChunks(count, to & 7, [&](std::ptrdiff_t start, std::ptrdiff_t length) {
            testRun(flags, fp + from + start, length);
            packBits(tp, to + start, flags, length);
        });
    } else {
        convertRun(tp + to, fp + from, count);
    }
}

template <class To, class From>
void convertElement(Stored<To>* tp, std::ptrdiff_t to, const Stored<From>* fp,
                    std::ptrdiff_t from) {
    const auto value = [=] {
        if constexpr (std::is_same_v<From, Bit>)
            return static_cast<std::uint8_t>(bitAt(fp, from));
        else
            return fp[from];
    }();
    if constexpr (std::is_same_v<To, Bit>)
        setBit(tp, to, testValue(value));
    else
        tp[to] = convertValue<To>(value);
}

/// The road between two types.
template <class To, class From>
void road(const RowShape& row, int toFirst, int fromFirst) {
    auto* tp = static_cast<Stored<To>*>(row.to);
    const auto* fp = static_cast<const Stored<From>*>(row.from);
    const std::ptrdiff_t ts = row.toStep;
    const std::ptrdiff_t fs = row.fromStep;
    const std::ptrdiff_t count = row.count;
    std::ptrdiff_t to = toFirst;
    std::ptrdiff_t from = fromFirst;
    if (ts == 1 && fs == 1)
        return convertNeighbours<To, From>(tp, to, fp, from, count);
    for (std::ptrdiff_t i = 0; i < count; ++i, to += ts, from += fs)
        convertElement<To, From>(tp, to, fp, from);
}

#if ZEL_WIDEST_VECTORS > 0
// The same roads for processors with wider vectors: all of a road is inlined here and so compiled
// for them.
template <class To, class From>
[[gnu::target("avx2"), gnu::flatten]] void road256(const RowShape& row, int to, int from) {
    road<To, From>(row, to, from);
}

template <class To, class From>
[[gnu::target("avx512f,avx512bw,avx512dq,avx512vl"), gnu::flatten]] void
road512(const RowShape& row, int to, int from) {
    road<To, From>(row, to, from);
}

/// The road that suits the processor at hand.
template <class To, class From>
Road roadHere() {
    if (ZEL_WIDEST_VECTORS >= 512 && __builtin_cpu_supports("avx512f") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
        return road512<To, From>;
    return __builtin_cpu_supports("avx2") ? road256<To, From> : road<To, From>;
}
#else
template <class To, class From>
Road roadHere() {
    return road<To, From>;
}
#endif

/// The road from a type that is known only now, or null.
template <class To>
Road roadTo(zelDataType from) {
    switch (from) {
    case zelBit:
        return roadHere<To, Bit>();
    case zelUChar:
        return roadHere<To, std::uint8_t>();
    case zelChar:
        return roadHere<To, std::int8_t>();
    case zelUShort:
        return roadHere<To, std::uint16_t>();
    case zelShort:
        return roadHere<To, std::int16_t>();
    case zelUInt:
        return roadHere<To, std::uint32_t>();
    case zelInt:
        return roadHere<To, std::int32_t>();
    case zelFloat:
        return roadHere<To, float>();
    case zelDouble:
        return roadHere<To, double>();
    }
    return nullptr;
}

} // namespace zel::convert

#endif
