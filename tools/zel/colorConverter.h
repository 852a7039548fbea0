#ifndef ZEL_TOOL_COLORCONVERTER_H
#define ZEL_TOOL_COLORCONVERTER_H

#include "valueMap.h"

#include <zel/zelColor.h>
#include <zel/zelColormap.h>

#include <span>
#include <string>
#include <vector>

namespace zel::tool {

/// How much red, green and blue count in the luminance. They add up to 1.
struct LuminanceWeights {
    double red;
    double green;
    double blue;
};

/// Weights by name (rec601, rec709, average) or as three numbers, which are brought to a sum of 1.
/// Anything else ends in a UsageError.
LuminanceWeights parseWeights(const std::string& option, const std::string& text);

/// A colour between two models, in the numbers of the source.
struct Color {
    double red;
    double green;
    double blue;
    double alpha;

    bool operator==(const Color&) const = default;
};

/// The colours of a palette image's indexes.
class Palette {
public:
    explicit Palette(const zelColormap& map);

    /// The type that the colours need: that of the map, or unsigned char if 8 bits say it all.
    zelDataType colorType() const { return type; }
    /// Whether some colour is not opaque.
    bool hasAlpha() const { return alpha; }
    /// Whether some colour is neither opaque nor quite transparent.
    bool hasPartialAlpha() const { return partialAlpha; }
    /// The colour of an index, in numbers of `colorType`; an index beyond the ends has that of the
    /// nearest end.
    Color color(double index) const;

private:
    std::vector<Color> colors;
    double first;
    zelDataType type;
    bool alpha;
    bool partialAlpha = false;
};

/// Turns pixels of one colour model into pixels of another.
class ColorConverter {
public:
    /// What a conversion needs to know beside the models.
    struct Terms {
        ValueRange range;         ///< the numbers that stand for black and white
        double opaque;            ///< the alpha of a pixel that had none
        LuminanceWeights weights; ///< for colour that becomes luminance
        const Palette* palette;   ///< for zelRGBPalette as source, else null
    };

    /// Whether there is a way from one model to the other.
    static bool isPossible(zelColorModel from, zelColorModel to);

    ColorConverter(zelColorModel from, zelColorModel to, const Terms& terms);

    /// Converts interleaved pixels: `in` and `out` hold as many as fit, of each model's channels.
    void convert(std::span<const double> in, std::span<double> out);

private:
    void decode(std::span<const double> in);
    void encode(std::span<double> out) const;
    double luminance(const Color& color) const;

    zelColorModel from;
    zelColorModel to;
    Terms terms;
    bool greySource;
    std::vector<Color> colors;
};

} // namespace zel::tool

#endif
