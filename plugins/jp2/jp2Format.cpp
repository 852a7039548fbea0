#include "jp2File.h"

#include "kit/exif.h"
#include "kit/sizes.h"
#include "kit/tableFormat.h"

#include <algorithm>

namespace zeljp2 {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3},  {zelLuminance, 1},
                                                      {zelRGBA, 4}, {zelLuminanceAlpha, 2},
                                                      {zelCMYK, 4}, {zelMultiSpectral, 0}};

constexpr zelkit::Capabilities jp2Capabilities = {
    .types = zelBit | zelUChar | zelChar | zelUShort | zelShort,
    .orders = zelInterleaved,
    .orientations = maskOf({zelUpperLeftOrigin}),
    // None of the compressions that have names is that of the format.
    .compressions = maskOf({zelUnknownCompression}),
    .colorModels = colorModels,
    .maxChannels = 16384,
    .preferredCompression = zelUnknownCompression,
    .randomAccessWrite = false,
};

// The samples of a tile, in the codec's form of four bytes, are in memory while it is written.
constexpr std::int64_t preferredTileSamples = 4 << 20;
constexpr int leastTileRows = 128;
// The codec's lossy transform spoils low tiles that begin at an odd place of some resolution, of
// which there are six.
constexpr int tileUnit = 64;
constexpr int leastTileColumns = 256;

class Jp2Format : public zelkit::TableFormat {
public:
    using TableFormat::TableFormat;

    // A page becomes a tile, and small tiles are compressed badly.
    int pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ, int pageC,
                            zelOrientation at) override {
        const auto fits = [](int page, int extent, int least) {
            return page == extent || (page >= least && page % tileUnit == 0);
        };
        return fits(pageX, x, leastTileColumns) && fits(pageY, y, tileUnit) &&
               TableFormat::pageSizeIsSupported(std::min(x, pageX), y, z, c, pageX, pageY, pageZ,
                                                pageC, at);
    }
    void getPreferredPageSize(int x, int y, int /*z*/, int c, int& pageX, int& pageY, int& pageZ,
                              int& pageC, zelOrientation) override {
        const std::int64_t row = zelkit::checkedProduct({x, c}).value_or(INT64_MAX);
        const std::int64_t rows = preferredTileSamples / std::max<std::int64_t>(row, 1);
        const std::int64_t whole = rows / leastTileRows * leastTileRows;
        pageX = x;
        pageY = static_cast<int>(
            rows >= y ? y
                      : std::min<std::int64_t>(std::max<std::int64_t>(whole, leastTileRows), y));
        pageZ = 1;
        pageC = c;
    }
};

zelkit::FormatOf<Jp2File, Jp2Format> registration("JP2", jp2Capabilities,
                                                  zelkit::resolutionTagDescriptions());

} // namespace

} // namespace zeljp2
