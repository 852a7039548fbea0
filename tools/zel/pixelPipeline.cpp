#include "pixelPipeline.h"

#include <zel/zelConverter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

namespace zel::tool {
namespace {

constexpr size_t kRunPixels = 4096;

/// Converts plain numbers as the library does.
void convertNumbers(void* from, zelDataType fromType, void* to, zelDataType toType, size_t count) {
    const int n = static_cast<int>(count);
    zelConverter source(from, fromType, zelSeparate, 1, nullptr, n, 1, 1, 0, 0, 0, 0);
    zelConverter target(to, toType, zelSeparate, 1, nullptr, n, 1, 1, 0, 0, 0, 0);
    target = source;
}

double opaqueAlpha(const ValueMap& map, const PixelPipeline::Options& options, zelDataType to) {
    return options.mode == ValueMode::scale ? map.inputRange().high : fullRange(to).high;
}

/// How many values a type has that is small enough to list them all, else 0.
size_t valuesOf(zelDataType type) {
    if (type == zelBit) {
        return 2;
    }
    const size_t bytes = zelDataSize(type, 1);
    return zelDataIsIntegral(type) && bytes <= 2 ? size_t{1} << (8 * bytes) : 0;
}

template <class In, class Out>
void lookUp(const std::byte* in, std::byte* out, const std::byte* table, size_t samples) {
    const auto* from = reinterpret_cast<const In*>(in);
    const auto* entries = reinterpret_cast<const Out*>(table);
    std::transform(from, from + samples, reinterpret_cast<Out*>(out),
                   [entries](In value) { return entries[value]; });
}

template <class In>
void lookUp(const std::byte* in, std::byte* out, const std::byte* table, size_t samples,
            size_t outBytes) {
    switch (outBytes) {
    case 1:
        return lookUp<In, std::uint8_t>(in, out, table, samples);
    case 2:
        return lookUp<In, std::uint16_t>(in, out, table, samples);
    case 4:
        return lookUp<In, std::uint32_t>(in, out, table, samples);
    default:
        return lookUp<In, std::uint64_t>(in, out, table, samples);
    }
}

} // namespace

size_t PixelLayout::bytesPerPixel() const {
    return zelDataSize(memoryType(), 1) * static_cast<size_t>(channels);
}

PixelPipeline::PixelPipeline(const PixelLayout& in, const PixelLayout& out, const Options& options,
                             std::optional<Palette> palette)
    : from(in), to(out), colors(std::move(palette)),
      map(colors ? colors->colorType() : in.type, out.type, options.mode, options.inputRange),
      plain(!map.changesValues() && in.model == out.model) {
    if (in.model != out.model) {
        converter.emplace(in.model, out.model,
                          ColorConverter::Terms{map.inputRange(),
                                                opaqueAlpha(map, options, out.type),
                                                options.weights, colors ? &*colors : nullptr});
    }
    // Luminance worked out of whole numbers is to be the nearest whole number.
    roundsResult = converter && !map.changesValues() && zelDataIsIntegral(in.type) &&
                   zelDataIsIntegral(out.type);
    mayHaveTable = !plain && !converter && valuesOf(in.type) > 0;
}

// The table has one entry for each value that the bits of a sample can have, in the order of these
// bits read as a number without sign.
void PixelPipeline::fillTable() {
    const size_t count = valuesOf(from.type);
    std::vector<std::uint16_t> words(count);
    std::iota(words.begin(), words.end(), std::uint16_t{0});
    std::vector<std::uint8_t> bytes(count);
    std::transform(words.begin(), words.end(), bytes.begin(),
                   [](std::uint16_t word) { return static_cast<std::uint8_t>(word); });
    const bool narrow = zelDataSize(from.memoryType(), 1) == 1;
    void* const samples = narrow ? static_cast<void*>(bytes.data()) : words.data();
    std::vector<double> values(count);
    convertNumbers(samples, from.memoryType(), values.data(), zelDouble, count);
    ValueMap trial = map;
    trial.apply(values);
    // Clamped samples have to be counted one by one.
    mayHaveTable = !trial.hasClamped();
    if (mayHaveTable) {
        table.resize(count * zelDataSize(to.memoryType(), 1));
        convertNumbers(values.data(), zelDouble, table.data(), to.memoryType(), count);
    }
}

void PixelPipeline::convert(const std::byte* in, std::byte* out, size_t pixels) {
    const size_t samples = pixels * static_cast<size_t>(from.channels);
    if (mayHaveTable && table.empty() && samples >= valuesOf(from.type)) {
        fillTable();
    }
    if (!table.empty()) {
        const size_t outBytes = zelDataSize(to.memoryType(), 1);
        zelDataSize(from.memoryType(), 1) == 1
            ? lookUp<std::uint8_t>(in, out, table.data(), samples, outBytes)
            : lookUp<std::uint16_t>(in, out, table.data(), samples, outBytes);
        return;
    }
    while (pixels > 0) {
        const size_t run = std::min(pixels, kRunPixels);
        convertRun(in, out, run);
        in += run * from.bytesPerPixel();
        out += run * to.bytesPerPixel();
        pixels -= run;
    }
}

void PixelPipeline::convertRun(const std::byte* in, std::byte* out, size_t pixels) {
    before.resize(pixels * static_cast<size_t>(from.channels));
    convertNumbers(const_cast<std::byte*>(in), from.memoryType(), before.data(), zelDouble,
                   before.size());
    std::vector<double>* result = &before;
    if (converter) {
        after.resize(pixels * static_cast<size_t>(to.channels));
        converter->convert(before, after);
        result = &after;
    }
    map.apply(*result);
    if (roundsResult) {
        std::transform(result->begin(), result->end(), result->begin(),
                       [](double value) { return std::round(value); });
    }
    convertNumbers(result->data(), zelDouble, out, to.memoryType(), result->size());
}

} // namespace zel::tool
