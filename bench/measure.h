#ifndef ZEL_BENCH_MEASURE_H
#define ZEL_BENCH_MEASURE_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

namespace bench {

/// Seconds that one of `calls` calls of `work` takes.
template <class Work>
double seconds(const Work& work, int calls = 1) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / calls;
}

/// The best times of something and of its limit, taken in turn so that both see the same machine.
struct Best {
    double time = 1e9;
    double limit = 1e9;

    template <class Work, class Limit>
    void measure(benchmark::State& state, const Work& work, const Limit& limiting, int calls = 1) {
        for (auto iteration : state) {
            (void)iteration;
            const double taken = seconds(work, calls);
            limit = std::min(limit, seconds(limiting, calls));
            time = std::min(time, taken);
            state.SetIterationTime(taken * calls);
        }
    }
};

/// Adds a case that runs for so many seconds: short enough for a table to be done within a minute,
/// long enough for a best time.
template <class... Arguments>
void add(const char* name, double length, Arguments&&... arguments) {
    benchmark::RegisterBenchmark(name, std::forward<Arguments>(arguments)...)
        ->UseManualTime()
        ->MinTime(length)
        ->Unit(benchmark::kMicrosecond);
}

/// Runs what was added, as the command line says.
inline int runAll(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace bench

#endif
