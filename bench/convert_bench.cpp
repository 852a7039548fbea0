// The conversion engine against memcpy. Each case prints, as the counter `ratio`, its best time
// over the best time of a memcpy that moves as many bytes, taken in turn on the same memory. The
// limit of a road that touches bits is a memcpy of its wider side.

#include "convertCases.h"
#include "measure.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using bench::Case;

constexpr int side = 512;

/// Bytes that the limiting memcpy moves. Whole pixels come from memory where channels lie side by
/// side, even if not all are wanted.
std::size_t limitBytes(const Case& c) {
    const bool whole = c.from.order == zelInterleaved;
    const int channels = whole ? c.from.channels : std::min(c.from.channels, c.to.channels);
    const std::size_t read = zelDataSize(c.from.type, side * side * channels);
    const std::size_t written = c.to.bytes(side);
    const bool bits = c.from.type == zelBit || c.to.type == zelBit;
    return bits ? std::max(read, written) : (read + written) / 2;
}

struct Free {
    void operator()(std::byte* block) const { std::free(block); }
};

/// Both blocks of a case begin with a page. Otherwise it would be chance whether one lies a few
/// bytes behind the other by their last 12 bits, which slows down any copy that meets it.
std::unique_ptr<std::byte, Free> blockLike(const std::vector<std::byte>& data) {
    constexpr std::size_t page = 4096;
    auto* block =
        static_cast<std::byte*>(std::aligned_alloc(page, (data.size() + page - 1) / page * page));
    std::memcpy(block, data.data(), data.size());
    return std::unique_ptr<std::byte, Free>(block);
}

void run(benchmark::State& state, const Case& c) {
    const std::size_t limit = limitBytes(c);
    const std::vector<std::byte> data =
        bench::sourceData(c.from.type, std::max({c.from.bytes(side), c.to.bytes(side), limit}));
    const auto from = blockLike(data);
    const auto to = blockLike(data);
    zelConverter source = c.from.describe(from.get(), side);
    zelConverter destination = c.to.describe(to.get(), side);
    bench::Times times;
    times.measure(
        state, [&] { destination = source; }, [&] { std::memcpy(to.get(), from.get(), limit); });
    state.counters["best_us"] = times.best() * 1e6;
    state.counters["limit_us"] = times.bestLimit() * 1e6;
    state.counters["ratio"] = times.best() / times.bestLimit();
}

} // namespace

int main(int argc, char** argv) {
    for (const std::vector<Case>& cases : {bench::roads(), bench::layouts()}) {
        for (const Case& c : cases)
            bench::add(c.name.c_str(), 0.06, run, c);
    }
    return bench::runAll(argc, argv);
}
