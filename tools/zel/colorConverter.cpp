#include "colorConverter.h"

#include "messages.h"
#include "valueNames.h"

#include <algorithm>
#include <cmath>

namespace zel::tool {
namespace {

bool isGrey(zelColorModel model) {
    return model == zelNegative || model == zelLuminance || model == zelLuminanceAlpha;
}

bool isReadable(zelColorModel model) {
    return isGrey(model) || model == zelRGB || model == zelRGBA || model == zelBGR ||
           model == zelABGR || model == zelCMY || model == zelCMYK || model == zelRGBPalette;
}

bool isWritable(zelColorModel model) {
    return isReadable(model) && model != zelRGBPalette && model != zelCMYK;
}

/// Applies `pixel` to each colour and the samples that belong to it.
template <class Colors, class Samples, class Pixel>
void forEachPixel(Colors& colors, Samples samples, size_t channels, Pixel pixel) {
    auto* sample = samples.data();
    for (auto& color : colors) {
        pixel(color, sample);
        sample += channels;
    }
}

} // namespace

LuminanceWeights parseWeights(const std::string& option, const std::string& text) {
    if (text == "rec601") {
        return {0.299, 0.587, 0.114};
    }
    if (text == "rec709") {
        return {0.2126, 0.7152, 0.0722};
    }
    if (text == "average") {
        return {1.0 / 3, 1.0 / 3, 1.0 / 3};
    }
    if (text.find(',') == std::string::npos) {
        throw UsageError{option + ": \"" + text +
                         "\" is none of rec601, rec709, average, nor three numbers"};
    }
    const std::vector<double> parts = parseNumbers(option, text);
    const double sum = parts.size() == 3 ? parts[0] + parts[1] + parts[2] : 0;
    if (!(sum > 0) || !std::isfinite(sum)) {
        throw UsageError{option + ": three numbers with a sum above 0 are wanted"};
    }
    return {parts[0] / sum, parts[1] / sum, parts[2] / sum};
}

Palette::Palette(const zelColormap& map)
    : first(map.getDomainMin()), type(zelUChar), alpha(map.getNumChans() > 3) {
    const double step = map.getLength() > 1 ? map.getDomainStep() : 1;
    const int last = map.getNumChans() - 1;
    bool fitsBytes = true;
    for (int i = 0; i < map.getLength(); ++i) {
        const double index = first + i * step;
        const Color color{map.getVal(index, 0), map.getVal(index, std::min(1, last)),
                          map.getVal(index, std::min(2, last)), map.getVal(index, 3)};
        for (const double part : {color.red, color.green, color.blue, color.alpha}) {
            fitsBytes = fitsBytes && std::fmod(part, 257) == 0;
        }
        colors.push_back(color);
    }
    if (map.getDataType() == zelUShort && fitsBytes) {
        for (Color& color : colors) {
            color = {color.red / 257, color.green / 257, color.blue / 257, color.alpha / 257};
        }
    } else {
        type = map.getDataType();
    }
    if (colors.empty()) {
        colors.push_back({0, 0, 0, 0});
    }
    alpha = alpha && std::any_of(colors.begin(), colors.end(), [this](const Color& color) {
                return color.alpha != fullRange(type).high;
            });
    partialAlpha = alpha && std::any_of(colors.begin(), colors.end(), [this](const Color& color) {
                       return color.alpha != 0 && color.alpha != fullRange(type).high;
                   });
}

Color Palette::color(double index) const {
    const double last = static_cast<double>(colors.size() - 1);
    return colors[static_cast<size_t>(std::clamp(index - first, 0.0, last))];
}

bool ColorConverter::isPossible(zelColorModel from, zelColorModel to) {
    return from == to || (isReadable(from) && isWritable(to));
}

ColorConverter::ColorConverter(zelColorModel source, zelColorModel target, const Terms& all)
    : from(source), to(target), terms(all), greySource(isGrey(source)) {}

void ColorConverter::convert(std::span<const double> in, std::span<double> out) {
    colors.resize(in.size() / static_cast<size_t>(zelColorModelChans(from)));
    decode(in);
    encode(out);
}

void ColorConverter::decode(std::span<const double> in) {
    const double ends = terms.range.low + terms.range.high;
    const double opaque = terms.opaque;
    const auto channels = static_cast<size_t>(zelColorModelChans(from));
    const auto run = [&](auto pixel) { forEachPixel(colors, in, channels, pixel); };
    switch (from) {
    case zelNegative:
        return run([=](Color& c, const double* s) {
            c = {ends - s[0], ends - s[0], ends - s[0], opaque};
        });
    case zelLuminance:
        return run([=](Color& c, const double* s) { c = {s[0], s[0], s[0], opaque}; });
    case zelLuminanceAlpha:
        return run([](Color& c, const double* s) { c = {s[0], s[0], s[0], s[1]}; });
    case zelRGBA:
        return run([](Color& c, const double* s) { c = {s[0], s[1], s[2], s[3]}; });
    case zelBGR:
        return run([=](Color& c, const double* s) { c = {s[2], s[1], s[0], opaque}; });
    case zelABGR:
        return run([](Color& c, const double* s) { c = {s[3], s[2], s[1], s[0]}; });
    case zelCMY:
        return run([=](Color& c, const double* s) {
            c = {ends - s[0], ends - s[1], ends - s[2], opaque};
        });
    case zelCMYK: {
        const double span = terms.range.high - terms.range.low;
        const double low = terms.range.low;
        return run([=](Color& c, const double* s) {
            const double light = (ends - s[3] - low) / span;
            const auto mixed = [=](double ink) { return low + (ends - ink - low) * light; };
            c = {mixed(s[0]), mixed(s[1]), mixed(s[2]), opaque};
        });
    }
    case zelRGBPalette:
        return run([=, this](Color& c, const double* s) {
            c = terms.palette->color(s[0]);
            c.alpha = terms.palette->hasAlpha() ? c.alpha : opaque;
        });
    default:
        return run([=](Color& c, const double* s) { c = {s[0], s[1], s[2], opaque}; });
    }
}

double ColorConverter::luminance(const Color& color) const {
    const LuminanceWeights& w = terms.weights;
    return greySource ? color.red : w.red * color.red + w.green * color.green + w.blue * color.blue;
}

void ColorConverter::encode(std::span<double> out) const {
    const double ends = terms.range.low + terms.range.high;
    const auto channels = static_cast<size_t>(zelColorModelChans(to));
    const auto run = [&](auto pixel) { forEachPixel(colors, out, channels, pixel); };
    switch (to) {
    case zelNegative:
        return run([=, this](const Color& c, double* s) { s[0] = ends - luminance(c); });
    case zelLuminance:
        return run([this](const Color& c, double* s) { s[0] = luminance(c); });
    case zelLuminanceAlpha:
        return run([this](const Color& c, double* s) {
            s[0] = luminance(c);
            s[1] = c.alpha;
        });
    case zelRGBA:
        return run([](const Color& c, double* s) {
            s[0] = c.red;
            s[1] = c.green;
            s[2] = c.blue;
            s[3] = c.alpha;
        });
    case zelBGR:
        return run([](const Color& c, double* s) {
            s[0] = c.blue;
            s[1] = c.green;
            s[2] = c.red;
        });
    case zelABGR:
        return run([](const Color& c, double* s) {
            s[0] = c.alpha;
            s[1] = c.blue;
            s[2] = c.green;
            s[3] = c.red;
        });
    case zelCMY:
        return run([=](const Color& c, double* s) {
            s[0] = ends - c.red;
            s[1] = ends - c.green;
            s[2] = ends - c.blue;
        });
    default:
        return run([](const Color& c, double* s) {
            s[0] = c.red;
            s[1] = c.green;
            s[2] = c.blue;
        });
    }
}

} // namespace zel::tool
