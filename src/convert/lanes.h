#ifndef ZEL_CONVERT_LANES_H
#define ZEL_CONVERT_LANES_H

// Vectors of elements in registers, in the compilers' own notation, and fixed rearrangements of
// them. The names are private to each source file, since the files are compiled for different
// processors and must not share code. Nor may they use the inline functions of the standard
// library, which the linker takes from any of them.

#include <cstddef>
#include <cstring>
#include <utility>

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
Lanes loadLanes(const std::byte* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}

template <class Lanes>
void storeLanes(std::byte* to, const Lanes& lanes) {
    std::memcpy(to, &lanes, sizeof lanes);
}

/// Where a lane of a rearrangement comes from.
struct Place {
    int vector;
    int lane;
};

/// The index of a lane for a shuffle of what has been gathered so far with vector `step`; -1 where
/// a later vector brings the lane.
template <int width, class Places>
constexpr int shuffleIndex(int out, int step, int lane) {
    const Place place = Places::of(out, lane);
    if (place.vector > step)
        return -1;
    if (place.vector == step)
        return width + place.lane;
    return step == 1 ? place.lane : lane;
}

template <int width, class Places, int out, int step, class Lanes, std::size_t... lane>
Lanes merge(Lanes gathered, Lanes next, std::index_sequence<lane...>) {
    return __builtin_shufflevector(
        gathered, next, shuffleIndex<width, Places>(out, step, static_cast<int>(lane))...);
}

/// Vector `out` of a rearrangement of `in`, one more vector at each step.
template <int width, class Places, int out, int step = 1, class Lanes, std::size_t count>
Lanes gather(const Several<Lanes, count>& in, Lanes gathered) {
    constexpr auto lanes = std::make_index_sequence<width>();
    if constexpr (count == 1)
        return merge<width, Places, out, step>(gathered, gathered, lanes);
    else if constexpr (step == static_cast<int>(count))
        return gathered;
    else
        return gather<width, Places, out, step + 1>(
            in, merge<width, Places, out, step>(gathered, in[step], lanes));
}

} // namespace

#endif
