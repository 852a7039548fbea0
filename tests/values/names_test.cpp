#include <zel/zelColor.h>
#include <zel/zelTypeNames.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The names of the values `first`, `first` + 1 and so on.
template <class Enum>
std::vector<std::string> namesFrom(int first, int last, const char* (*nameOf)(Enum)) {
    std::vector<std::string> names;
    for (int value = first; value <= last; ++value)
        names.emplace_back(nameOf(static_cast<Enum>(value)));
    return names;
}

typedef std::vector<std::string> Names;

} // namespace

TEST(Names, OfEveryEnumeration) {
    EXPECT_EQ(
        namesFrom(0, 14, zelColorModelName),
        (Names{"unknown", "negative", "luminance", "RGB", "palette", "RGBA", "HSV", "CMY", "CMYK",
               "BGR", "ABGR", "multi-spectral", "YCC", "luminance-alpha", "unknown"}));
    EXPECT_EQ(namesFrom(-1, 9, zelCompressionName),
              (Names{"unknown", "unknown", "none", "OSK-RLE", "CCITT Group 3", "CCITT Group 4",
                     "Lempel-Ziv & Welch", "JPEG", "Mac-RLE", "ZIP deflate/inflate", "unknown"}));
    EXPECT_EQ(namesFrom(0, 9, zelOrientationName),
              (Names{"unknown", "upper-left", "upper-right", "lower-right", "lower-left",
                     "left-upper", "right-upper", "right-lower", "left-lower", "unknown"}));
    EXPECT_EQ(namesFrom(0, 5, zelOrderName),
              (Names{"unknown", "interleaved", "sequential", "unknown", "separate", "unknown"}));
    const Names types = {"bit",    "unsigned char",    "char",    "unsigned short",
                         "short",  "unsigned integer", "integer", "float",
                         "double", "unknown"};
    for (std::size_t i = 0; i < types.size(); ++i)
        EXPECT_EQ(zelDataTypeName(static_cast<zelDataType>(1 << i)), types[i]);
    EXPECT_STREQ(zelDataTypeName(static_cast<zelDataType>(zelBit | zelUChar)), "unknown");
}

TEST(ColorModel, KnowsItsChannels) {
    const int chans[] = {-1, 1, 1, 3, 1, 4, 3, 3, 4, 3, 4, 0, 3, 2, -1};
    for (int value = -1; value <= 14; ++value) {
        const auto model = static_cast<zelColorModel>(value);
        const bool alpha = model == zelRGBA || model == zelABGR || model == zelLuminanceAlpha;
        EXPECT_EQ(zelColorModelChans(model), value < 0 ? -1 : chans[value]) << value;
        EXPECT_EQ(zelColorModelHasAlpha(model), alpha ? 1 : 0) << value;
    }
    const zelColorModel models[] = {zelMultiSpectral,  zelMultiSpectral, zelLuminance,
                                    zelLuminanceAlpha, zelRGB,           zelRGBA,
                                    zelMultiSpectral};
    for (int nchans = -1; nchans <= 5; ++nchans)
        EXPECT_EQ(zelColorModelFromChans(nchans), models[nchans + 1]) << nchans;
}
