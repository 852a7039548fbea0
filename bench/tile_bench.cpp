// What tiles cost beyond the copies of pages and the conversions that they need anyway, which are
// done without the library's tiles in turn. `ratio` is the one over the other, `own_ns` the
// difference. For one pixel the copy of its page is left out on both sides.

#include "measure.h"
#include "tileCases.h"

#include <algorithm>
#include <climits>

#include <malloc.h>

namespace {

/// Enough calls to measure at once where one is over in no time.
int callsAtOnce(const bench::TileCase& what) {
    switch (what.extent) {
    case bench::Extent::Pixel:
        return 100;
    case bench::Extent::Page:
        return std::max(1, 1024 / what.page);
    case bench::Extent::Image:
        break;
    }
    return 1;
}

void run(benchmark::State& state, const bench::TileCase& what) {
    bench::TileRun run(what);
    if (!run.call())
        return state.SkipWithError("the call failed");
    bench::Times times;
    times.measure(
        state, [&] { run.call(); }, [&] { run.workAlone(); }, callsAtOnce(what));
    state.counters["best_us"] = times.best() * 1e6;
    state.counters["limit_us"] = times.bestLimit() * 1e6;
    state.counters["ratio"] = times.median([](double call, double limit) { return call / limit; });
    state.counters["own_ns"] =
        times.median([](double call, double limit) { return (call - limit) * 1e9; });
}

/// Freed memory stays with the program. Otherwise blocks of some sizes would come from the system
/// anew each time, on one side of a comparison or on both.
void keepMemory() {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
}

} // namespace

int main(int argc, char** argv) {
    keepMemory();
    for (const std::vector<bench::TileCase>& cases :
         {bench::tiles(1024, {64, 256}), bench::tiles(2048, {1024})}) {
        for (const bench::TileCase& what : cases) {
            const bool small = what.extent == bench::Extent::Pixel;
            bench::add(what.name.c_str(), small ? 0.06 : what.image > 1024 ? 1.2 : 0.6, run, what);
        }
    }
    return bench::runAll(argc, argv);
}
