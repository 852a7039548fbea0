#ifndef ZEL_TOOL_PIXELPIPELINE_H
#define ZEL_TOOL_PIXELPIPELINE_H

#include "colorConverter.h"
#include "valueMap.h"

#include <memory>
#include <optional>
#include <vector>

namespace zel::tool {

/// One end of the way of a pixel: how it lies in a block of memory. Blocks are interleaved, and
/// bits take a byte each (0 or 1), so that every pixel begins on a byte.
struct PixelLayout {
    zelDataType type;
    zelColorModel model;
    int channels;

    /// The type that the samples have in memory.
    zelDataType memoryType() const { return type == zelBit ? zelUChar : type; }
    size_t bytesPerPixel() const;
};

/// Everything that happens to pixels between reading and writing: the colour model and the element
/// type change.
class PixelPipeline {
public:
    struct Options {
        ValueMode mode = ValueMode::scale;
        std::optional<ValueRange> inputRange;
        LuminanceWeights weights{};
    };

    /// `palette` is the palette of the source, for a palette that is to become colours.
    PixelPipeline(const PixelLayout& in, const PixelLayout& out, const Options& options,
                  std::optional<Palette> palette);

    /// Whether the library's own conversion does all there is to do.
    bool isPlain() const { return plain; }

    /// Converts `pixels` pixels.
    void convert(const std::byte* in, std::byte* out, size_t pixels);

    const ValueMap& values() const { return map; }

private:
    void convertRun(const std::byte* in, std::byte* out, size_t pixels);
    void fillTable();

    PixelLayout from;
    PixelLayout to;
    std::optional<Palette> colors;
    ValueMap map;
    std::optional<ColorConverter> converter;
    bool plain;
    bool roundsResult;
    std::vector<double> before;
    std::vector<double> after;
    std::vector<std::byte> table; ///< what each sample of a small type becomes, by its bits
    bool mayHaveTable;
};

} // namespace zel::tool

#endif
