#include "pixelPipeline.h"

#include <zel/zelConverter.h>

#include <algorithm>
#include <cmath>
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
}

void PixelPipeline::convert(const std::byte* in, std::byte* out, size_t pixels) {
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
