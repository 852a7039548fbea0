#include "convert/moveLoops.h"
#include "convert/vectors.h"

namespace {

struct Plain {
    template <int>
    static constexpr int laneBytes = 0;
    static constexpr int zipBytes = 16;
    static constexpr bool shuffles = false;
};

} // namespace

namespace zel::convert {

constinit const Moves plainMoves = makeMoves<Plain>();

const Moves& movesHere() {
#if ZEL_WIDEST_VECTORS >= 512
    // The second extension is what lets bytes change places between the lanes of wide vectors.
    if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi"))
        return moves512;
#endif
#if ZEL_WIDEST_VECTORS >= 256
    if (__builtin_cpu_supports("avx2"))
        return moves256;
#endif
    return plainMoves;
}

} // namespace zel::convert
