// Compiled for x86-64 processors with AVX2.

#include "convert/moveLoops.h"

namespace {

/// Small elements stay in vectors of 16 bytes, which shuffle in one step.
struct Avx2 {
    template <int size>
    static constexpr int laneBytes = size < 4 ? 16 : 32;
    static constexpr int zipBytes = 32;
    static constexpr bool shuffles = true;
};

} // namespace

namespace zel::convert {

constinit const Moves moves256 = makeMoves<Avx2>();

} // namespace zel::convert
