#include "tags.h"
#include "tiffFile.h"

#include "kit/sizes.h"
#include "kit/tableFormat.h"

#include <zel/zelOrientation.h>

#include <algorithm>
#include <utility>

namespace zeltiff {

namespace {

constexpr int tileStep = 16;
constexpr int preferredTile = 256;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelRGB, 3},      {zelLuminance, 1},  {zelLuminanceAlpha, 2}, {zelRGBA, 4},         {zelCMY, 3},
    {zelNegative, 1}, {zelRGBPalette, 1}, {zelCMYK, 4},           {zelMultiSpectral, 0}};

constexpr zelkit::Capabilities tiffCapabilities = {
    .types = zelBit | zelUChar | zelChar | zelUShort | zelShort | zelUInt | zelInt | zelFloat |
             zelDouble,
    .orders = zelInterleaved | zelSeparate,
    .orientations = zelkit::allOrientations,
    .compressions = zelkit::maskOf(
        {zelNoCompression, zelCCITTFAX3, zelCCITTFAX4, zelLZW, zelJPEG, zelPACKBITS, zelZIP}),
    .colorModels = colorModels,
    .maxDepth = INT_MAX,
    .maxChannels = 65535,
};

// Rows run along the other axis in a file whose orientation exchanges them.
void toFileFrame(int& x, int& y, zelOrientation orientation) {
    if (orientation >= 0 && orientation <= zelLeftLowerOrigin && zelOrientationIsTrans[orientation])
        std::swap(x, y);
}

bool isStrip(int x, int y, int z, int pageX, int pageY) {
    return z == 1 && pageX == x && pageY >= 1 && pageY <= y;
}

bool isTile(int pageX, int pageY) {
    return pageX >= tileStep && pageY >= tileStep && pageX % tileStep == 0 && pageY % tileStep == 0;
}

int preferredStripRows(int x, int y, int c) {
    // The query tells no element type: two bytes are in the middle of the usual ones.
    const int rows = zelkit::bandRows(zelkit::checkedProduct({x, c, 2}).value_or(INT64_MAX), y);
    return rows < y && rows > tileStep ? rows - rows % tileStep : rows;
}

// Pages are strips, as wide as the image, or tiles of multiples of 16.
class TiffFormat : public zelkit::TableFormat {
public:
    using TableFormat::TableFormat;

    int pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ, int pageC,
                            zelOrientation orientation) override;
    void getPreferredPageSize(int x, int y, int z, int c, int& pageX, int& pageY, int& pageZ,
                              int& pageC, zelOrientation orientation) override;
};

int TiffFormat::pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ,
                                    int pageC, zelOrientation orientation) {
    toFileFrame(x, y, orientation);
    toFileFrame(pageX, pageY, orientation);
    const auto elements = zelkit::checkedProduct({pageX, pageY, pageC});
    return elements && *elements <= INT_MAX && pageZ == 1 && (pageC == 1 || pageC == c) &&
           (isStrip(x, y, z, pageX, pageY) || isTile(pageX, pageY));
}

void TiffFormat::getPreferredPageSize(int x, int y, int z, int c, int& pageX, int& pageY,
                                      int& pageZ, int& pageC, zelOrientation orientation) {
    toFileFrame(x, y, orientation);
    toFileFrame(pageX, pageY, orientation);
    // What the caller asked for stays, as far as it makes strips or tiles.
    const int wishedX = pageX > 0 ? pageX : z == 1 ? x : preferredTile;
    const int wishedY = pageY > 0      ? pageY
                        : wishedX == x ? preferredStripRows(x, y, c)
                                       : preferredTile;
    if (isStrip(x, y, z, wishedX, wishedY) || isTile(wishedX, wishedY)) {
        pageX = wishedX;
        pageY = wishedY;
    } else {
        pageX = z == 1 ? x : preferredTile;
        pageY = z == 1 ? preferredStripRows(x, y, c) : preferredTile;
    }
    pageZ = 1;
    pageC = pageC == 1 ? 1 : c;
    toFileFrame(pageX, pageY, orientation);
}

zelkit::FormatOf<TiffFile, TiffFormat> registration("TIFF", tiffCapabilities, tagTable());

} // namespace

} // namespace zeltiff
