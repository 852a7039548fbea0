// Runs every case of the tables once, small, for scripts/check-instructions, which has the calls of
// `counted` counted one by one. Prints their names in the order of the calls. The engine is built
// in, with vectors that the processor at hand does not choose, so that all machines count alike.

#include "convertCases.h"
#include "tileCases.h"

#include <cstdio>

namespace {

constexpr int side = 48;

/// What is counted; the first call of each case warms up what is done once.
[[gnu::noinline]] void counted(zelConverter& to, zelConverter& from) {
    to = from;
    asm volatile("" ::: "memory");
}

[[gnu::noinline]] void counted(bench::TileRun& run) {
    run.call();
    asm volatile("" ::: "memory");
}

} // namespace

int main() {
    for (const std::vector<bench::Case>& cases : {bench::roads(), bench::layouts()}) {
        for (const bench::Case& c : cases) {
            std::vector<std::byte> from = bench::sourceData(c.from.type, c.from.bytes(side));
            std::vector<std::byte> to(c.to.bytes(side));
            zelConverter source = c.from.describe(from.data(), side);
            zelConverter destination = c.to.describe(to.data(), side);
            destination = source;
            counted(destination, source);
            std::puts(c.name.c_str());
        }
    }
    for (const bench::TileCase& c : bench::tiles(32, {16})) {
        bench::TileRun run(c);
        if (!run.call())
            return 1;
        counted(run);
        std::puts(c.name.c_str());
    }
    return 0;
}
