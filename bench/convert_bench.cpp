// The conversion engine against memcpy. Each case prints, as the counter `ratio`, its best time
// over the best time of a memcpy that moves as many bytes, taken in turn on the same memory. The
// limit of a road that touches bits is a memcpy of its wider side.

#include <benchmark/benchmark.h>
#include <zel/zelConverter.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int side = 512;

/// One side of a case.
struct Layout {
    zelDataType type = zelUChar;
    zelOrder order = zelInterleaved;
    int channels = 3;
    const int* list = nullptr;
    int flip = zelNoFlip;
    int transpose = 0;

    std::size_t bytes() const { return zelDataSize(type, side * side * channels); }

    zelConverter describe(void* data) const {
        zelConverter area(data, type, order, channels, list, side, side, 1, 0, 0, 0, 0);
        area.setTransposeXY(transpose);
        area.setFlip(static_cast<zelFlip>(flip));
        return area;
    }
};

struct Case {
    std::string name;
    Layout from;
    Layout to;
};

struct TypeName {
    zelDataType type;
    const char* name;
};

constexpr TypeName types[] = {{zelBit, "bit"},       {zelUChar, "uchar"}, {zelChar, "char"},
                              {zelUShort, "ushort"}, {zelShort, "short"}, {zelUInt, "uint"},
                              {zelInt, "int"},       {zelFloat, "float"}, {zelDouble, "double"}};

template <class Real>
void fillReals(std::vector<std::byte>& data) {
    for (std::size_t i = 0; (i + 1) * sizeof(Real) <= data.size(); ++i) {
        const Real value = static_cast<Real>(i % 1000) / 4;
        std::memcpy(&data[i * sizeof(Real)], &value, sizeof value);
    }
}

/// Ordinary values: small numbers with fractions as reals, anything as integers.
std::vector<std::byte> sourceData(zelDataType type, std::size_t size) {
    std::vector<std::byte> data(size);
    if (type == zelFloat)
        fillReals<float>(data);
    else if (type == zelDouble)
        fillReals<double>(data);
    else
        for (std::size_t i = 0; i < size; ++i)
            data[i] = static_cast<std::byte>(i * 167 >> 3);
    return data;
}

/// Bytes that the limiting memcpy moves. Whole pixels come from memory where channels lie side by
/// side, even if not all are wanted.
std::size_t limitBytes(const Case& c) {
    const bool whole = c.from.order == zelInterleaved;
    const int channels = whole ? c.from.channels : std::min(c.from.channels, c.to.channels);
    const std::size_t read = zelDataSize(c.from.type, side * side * channels);
    const std::size_t written = c.to.bytes();
    const bool bits = c.from.type == zelBit || c.to.type == zelBit;
    return bits ? std::max(read, written) : (read + written) / 2;
}

template <class Work>
double seconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    benchmark::ClobberMemory();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void run(benchmark::State& state, const Case& c) {
    const std::size_t limit = limitBytes(c);
    std::vector<std::byte> from =
        sourceData(c.from.type, std::max({c.from.bytes(), c.to.bytes(), limit}));
    std::vector<std::byte> to(from.size());
    zelConverter source = c.from.describe(from.data());
    zelConverter destination = c.to.describe(to.data());
    double best = 1e9;
    double bestCopy = 1e9;
    for (auto iteration : state) {
        (void)iteration;
        const double time = seconds([&] { destination = source; });
        const double copy = seconds([&] { std::memcpy(to.data(), from.data(), limit); });
        state.SetIterationTime(time);
        best = std::min(best, time);
        bestCopy = std::min(bestCopy, copy);
    }
    state.counters["best_us"] = best * 1e6;
    state.counters["copy_us"] = bestCopy * 1e6;
    state.counters["ratio"] = best / bestCopy;
}

std::vector<Case> roads() {
    std::vector<Case> cases;
    for (const TypeName& from : types) {
        for (const TypeName& to : types) {
            const std::string name = std::string("road/") + from.name + "/" + to.name;
            cases.push_back({name, {from.type}, {to.type}});
        }
    }
    return cases;
}

/// The changes of layout for one pair of types and a number of channels.
void addLayouts(std::vector<Case>& cases, const std::string& suffix, const Layout& from,
                const Layout& to) {
    static const int reversed[] = {6, 5, 4, 3, 2, 1, 0};
    static const int one[] = {1};
    const auto add = [&](const char* name, zelOrder fromOrder, zelOrder toOrder, auto change) {
        Case c{"layout/" + (name + suffix), from, to};
        c.from.order = fromOrder;
        c.to.order = toOrder;
        change(c);
        cases.push_back(c);
    };
    const auto nothing = [](Case&) {};
    add("toSeparate", zelInterleaved, zelSeparate, nothing);
    add("fromSeparate", zelSeparate, zelInterleaved, nothing);
    add("toSequential", zelInterleaved, zelSequential, nothing);
    add("fromSequential", zelSequential, zelInterleaved, nothing);
    add("reverseChannels", zelInterleaved, zelInterleaved,
        [](Case& c) { c.to.list = reversed + (7 - c.to.channels); });
    add("oneChannel", zelInterleaved, zelSeparate, [](Case& c) {
        c.to.channels = 1;
        c.to.list = one;
    });
    static const char* const flips[] = {"keep", "flipX", "flipY", "flipXY"};
    for (int flip = 0; flip < 4; ++flip) {
        for (int transpose = 0; transpose < 2; ++transpose) {
            const std::string name = std::string(flips[flip]) + (transpose != 0 ? "Transpose" : "");
            add(name.c_str(), zelInterleaved, zelInterleaved, [&](Case& c) {
                c.to.flip = flip;
                c.to.transpose = transpose;
            });
        }
    }
}

std::vector<Case> layouts() {
    std::vector<Case> cases;
    const struct {
        const char* name;
        zelDataType from, to;
    } pairs[] = {{"1byte", zelUChar, zelUChar},
                 {"2bytes", zelUShort, zelUShort},
                 {"4bytes", zelFloat, zelFloat},
                 {"8bytes", zelDouble, zelDouble},
                 {"ucharFloat", zelUChar, zelFloat}};
    for (const auto& pair : pairs) {
        for (const int channels : {3, 4, 7}) {
            const std::string suffix =
                std::string("/") + pair.name + "/" + std::to_string(channels);
            Layout from;
            Layout to;
            from.type = pair.from;
            to.type = pair.to;
            from.channels = to.channels = channels;
            addLayouts(cases, suffix, from, to);
        }
    }
    return cases;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (const std::vector<Case>& cases : {roads(), layouts()}) {
        for (const Case& c : cases) {
            benchmark::RegisterBenchmark(c.name.c_str(), run, c)
                ->UseManualTime()
                ->MinTime(0.02)
                ->Unit(benchmark::kMicrosecond);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
