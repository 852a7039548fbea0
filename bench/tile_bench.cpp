// What tiles cost beyond the copies of pages and the conversions that they need anyway, which are
// done without the library's tiles in turn. `ratio` is the one over the other, `own_ns` the
// difference. For one pixel the copy of its page is left out on both sides.

#include "measure.h"
#include "tileCases.h"

namespace {

void run(benchmark::State& state, const bench::TileCase& what) {
    bench::TileRun run(what);
    if (!run.call())
        return state.SkipWithError("the call failed");
    const int calls = what.extent == bench::Extent::Pixel ? 100 : 1;
    bench::Best best;
    best.measure(
        state, [&] { run.call(); }, [&] { run.workAlone(); }, calls);
    state.counters["best_us"] = best.time * 1e6;
    state.counters["limit_us"] = best.limit * 1e6;
    state.counters["ratio"] = best.time / best.limit;
    state.counters["own_ns"] = (best.time - best.limit) * 1e9;
}

} // namespace

int main(int argc, char** argv) {
    for (const std::vector<bench::TileCase>& cases :
         {bench::tiles(1024, {64, 256}), bench::tiles(2048, {1024})}) {
        for (const bench::TileCase& what : cases)
            bench::add(what.name.c_str(), what.extent == bench::Extent::Pixel ? 0.03 : 0.3, run,
                       what);
    }
    return bench::runAll(argc, argv);
}
