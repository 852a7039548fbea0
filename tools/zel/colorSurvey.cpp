#include "colorSurvey.h"

#include "progress.h"

namespace zel::tool {
namespace {

constexpr std::int64_t kBlockPixels = std::int64_t{1} << 20;

} // namespace

ColorHistogram surveyColors(const SourceImage& source, const PixelPipeline::Options& options,
                            const std::string& targetName) {
    PixelPipeline pipeline(source.layout, kReducibleLayout, options, source.palette);
    const PlaneView view = viewOf(source, source.file.getOrientation());
    const auto blocks = pageGrid(source.file, view, kBlockPixels).blocks();
    Progress progress(targetName,
                      static_cast<double>(source.region.nx) * source.region.ny * source.region.nz);
    ColorHistogram histogram;
    std::vector<std::byte> in;
    std::vector<std::uint8_t> colors;
    for (int plane = 0; plane < source.region.nz; ++plane) {
        for (const zelTile2D<int>& tile : blocks) {
            const size_t pixels = static_cast<size_t>(tile.nx) * static_cast<size_t>(tile.ny);
            in.resize(pixels * source.layout.bytesPerPixel());
            colors.resize(pixels * kReducibleLayout.bytesPerPixel());
            readBlock(source, view, plane, tile, in.data());
            pipeline.convert(in.data(), reinterpret_cast<std::byte*>(colors.data()), pixels);
            histogram.add(colors);
            progress.advance(static_cast<double>(pixels));
        }
    }
    return histogram;
}

} // namespace zel::tool
