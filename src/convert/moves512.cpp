// Compiled for x86-64 processors with AVX-512 that also shuffles bytes (VBMI).

#include "convert/moveLoops.h"

namespace {

struct Avx512 {
    template <int>
    static constexpr int laneBytes = 64;
    static constexpr int zipBytes = 32;
    static constexpr bool shuffles = true;
};

} // namespace

namespace zel::convert {

constinit const Moves moves512 = makeMoves<Avx512>();

} // namespace zel::convert
