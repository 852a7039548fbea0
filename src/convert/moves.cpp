#include "convert/moveLoops.h"
#include "convert/vectors.h"

namespace {

/// What every processor of the kind has. Only that of arm64 rearranges bytes in one step.
struct Plain {
#ifdef __ARM_NEON
    static constexpr bool shuffles = true;
#else
    static constexpr bool shuffles = false;
#endif
    template <int>
    static constexpr int laneBytes = shuffles ? 16 : 0;
    static constexpr int zipBytes = 16;
};

} // namespace

namespace zel::convert {

constinit const Moves plainMoves = makeMoves<Plain>();

const Moves& movesHere() {
#if ZEL_WIDEST_VECTORS >= 512
    // The second extension is what lets bytes change places between the lanes of wide vectors.
    if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi"))
        return moves512;
#endif
#if ZEL_WIDEST_VECTORS >= 256
    if (__builtin_cpu_supports("avx2"))
        return moves256;
#endif
    return plainMoves;
}

} // namespace zel::convert
