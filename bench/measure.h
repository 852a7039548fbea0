#ifndef ZEL_BENCH_MEASURE_H
#define ZEL_BENCH_MEASURE_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace bench {

/// Seconds of the processor's time that one of `calls` calls of `work` takes. What other programs
/// do meanwhile does not count.
template <class Work>
double seconds(const Work& work, int calls) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    for (int i = 0; i < calls; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    return (now() - start) / calls;
}

/// The times of something and of its limit, taken in turn so that both see the same machine.
class Times {
public:
    template <class Work, class Limit>
    void measure(benchmark::State& state, const Work& work, const Limit& limiting, int calls = 1) {
        limits.push_back(seconds(limiting, calls));
        for (auto iteration : state) {
            (void)iteration;
            times.push_back(seconds(work, calls));
            limits.push_back(seconds(limiting, calls));
            state.SetIterationTime((times.back() + limits.back()) * calls);
        }
    }

    /// The best of both, where what is sought is what the machine can do when left alone.
    double best() const { return *std::min_element(times.begin(), times.end()); }
    double bestLimit() const { return *std::min_element(limits.begin(), limits.end()); }

    /// The median of what `figure` makes of a time and of the mean of the limits around it. It
    /// tells small differences, as what changes slowly touches both alike.
    template <class Figure>
    double median(const Figure& figure) const {
        std::vector<double> figures;
        for (std::size_t i = 0; i < times.size(); ++i)
            figures.push_back(figure(times[i], (limits[i] + limits[i + 1]) / 2));
        const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
        std::nth_element(figures.begin(), middle, figures.end());
        return *middle;
    }

private:
    std::vector<double> times;
    std::vector<double> limits;
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
