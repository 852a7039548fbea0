#ifndef ZEL_CONVERT_LANES_H
#define ZEL_CONVERT_LANES_H

// Vectors of elements in registers, in the compilers' own notation, and fixed rearrangements of
// them. The names are private to each source file, since the files are compiled for different
// processors and must not share code. Nor may they use the inline functions of the standard
// library, which the linker takes from any of them.

#include <cstddef>
#include <cstring>
#include <utility>

// A call would send vectors through memory. Without it, functions stay of a size that sanitizers
// can cope with.
#ifdef NDEBUG
#define ZEL_INLINE [[gnu::always_inline]] inline
#else
#define ZEL_INLINE inline
#endif

namespace {

template <class Element, int bytes>
struct LanesOf {
    typedef Element Type __attribute__((vector_size(bytes)));
};

template <class Item, std::size_t count>
struct Several {
    Item items[count];

    Item& operator[](std::size_t i) { return items[i]; }
    const Item& operator[](std::size_t i) const { return items[i]; }
};

template <class Lanes>
ZEL_INLINE Lanes loadLanes(const std::byte* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}

template <class Lanes>
ZEL_INLINE void storeLanes(std::byte* to, const Lanes& lanes) {
    std::memcpy(to, &lanes, sizeof lanes);
}

/// `count` lanes out of those of two vectors, which are numbered through: lane i is that of number
/// `Places::of(i)`.
template <class Places, int count, class Lanes>
ZEL_INLINE auto rearrange(const Lanes& a, const Lanes& b) {
    return [&]<int... lane>(std::integer_sequence<int, lane...>) {
        return __builtin_shufflevector(a, b, Places::of(lane)...);
    }
    (std::make_integer_sequence<int, count>());
}

/// What all processors rearrange in one step, also where their vectors are wider.
constexpr int partBytes = 16;

template <int first>
struct PlacesFrom {
    static constexpr int of(int lane) { return first + lane; }
};

/// Parts of 16 bytes, each `step` bytes behind the one before.
template <class Element, int bytes>
ZEL_INLINE auto loadParts(const std::byte* from, std::ptrdiff_t step) {
    if constexpr (bytes == partBytes) {
        return loadLanes<typename LanesOf<Element, bytes>::Type>(from);
    } else {
        const auto low = loadParts<Element, bytes / 2>(from, step);
        const auto high = loadParts<Element, bytes / 2>(from + bytes / 2 / partBytes * step, step);
        return rearrange<PlacesFrom<0>, bytes / static_cast<int>(sizeof(Element))>(low, high);
    }
}

template <class Element, int part, class Lanes>
ZEL_INLINE auto partOf(const Lanes& lanes) {
    constexpr int width = partBytes / static_cast<int>(sizeof(Element));
    return rearrange<PlacesFrom<part * width>, width>(lanes, lanes);
}

/// Lanes of two vectors of `lanes` in turn, those of the lower or the upper half of each part of
/// `width` lanes; vector `first` begins.
template <int lanes, int width, bool upper, int first>
struct ZipPlaces {
    static constexpr int of(int lane) {
        const int vector = lane % 2 == 0 ? first : 1 - first;
        return vector * lanes + lane / width * width + (upper ? width : 0) / 2 + lane % width / 2;
    }
};

/// The elements of the first half of the vectors and those of the second in turn, `rounds` times,
/// in each part of the vectors by itself. As the half tells the highest bit of an element's number
/// before, and the lowest one after, the bits of the numbers rotate. With `first` 1 the second half
/// begins, which also inverts the bits that come from the top.
template <class Element, int rounds, int first = 0, class Lanes, std::size_t count>
ZEL_INLINE Several<Lanes, count> zip(const Several<Lanes, count>& in) {
    if constexpr (rounds == 0) {
        return in;
    } else {
        constexpr int lanes = sizeof(Lanes) / sizeof(Element);
        constexpr int width = partBytes / sizeof(Element);
        constexpr std::size_t half = count / 2;
        Several<Lanes, count> out;
        [&]<std::size_t... k>(std::index_sequence<k...>) {
            ((out[2 * k] =
                  rearrange<ZipPlaces<lanes, width, false, first>, lanes>(in[k], in[k + half]),
              out[2 * k + 1] =
                  rearrange<ZipPlaces<lanes, width, true, first>, lanes>(in[k], in[k + half])),
             ...);
        }
        (std::make_index_sequence<half>());
        return zip<Element, rounds - 1, first>(out);
    }
}

/// Pixels of `channels` elements out of places for `slots` of them, without a gap; lanes that are
/// left over are of no account.
template <int channels, int slots, int lanes>
struct NarrowPlaces {
    static constexpr int of(int lane) {
        const int place = lane / channels * slots + lane % channels;
        return place < lanes ? place : 0;
    }
};

} // namespace

#endif
