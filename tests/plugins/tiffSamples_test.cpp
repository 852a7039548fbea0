// Samples and colours that no other program at hand writes, in files made by hand.

#include "plugins/tiffScene.h"

#include <zel/zelColormap.h>

#include <cmath>

namespace zel::test {

namespace {

using namespace std::string_literals;
using Numbers = std::vector<double>;

class TiffSamples : public TiffScene {};

HandTag bits(std::uint32_t count) {
    return {258, 3, {count}};
}
HandTag photometric(std::uint32_t value) {
    return {262, 3, {value}};
}
HandTag samples(std::uint32_t count) {
    return {277, 3, {count}};
}
HandTag sampleFormat(std::uint32_t value) {
    return {339, 3, {value}};
}

struct Sample {
    const char* what;
    bool bigEndian;
    int width, height;
    std::vector<HandTag> tags;
    std::string data;
    zelDataType type;
    zelColorModel colorModel;
    Numbers pixels;
};

const Sample sampleFiles[] = {
    {"12-bit grey",
     false,
     3,
     1,
     {bits(12), photometric(1)},
     "\xab\xcf\xff\x00\x10"s,
     zelUShort,
     zelLuminance,
     {std::round(2748 * 65535.0 / 4095), 65535, 16}},
    {"2-bit grey, 0 is white",
     true,
     4,
     1,
     {bits(2), photometric(0)},
     "\x1b",
     zelUChar,
     zelNegative,
     {0, 85, 170, 255}},
    {"rows padded to bytes",
     false,
     3,
     2,
     {bits(4), photometric(1)},
     "\x01\x2f\xfe\xdf"s,
     zelUChar,
     zelLuminance,
     {0, 17, 34, 255, 238, 221}},
    {"signed 4 bits",
     false,
     2,
     1,
     {bits(4), photometric(1), sampleFormat(2)},
     "\x7f",
     zelChar,
     zelLuminance,
     {7, -1}},
    {"24 bits, low byte first",
     false,
     2,
     1,
     {bits(24), photometric(1)},
     "\x01\0\0\xff\xff\xff"s,
     zelUInt,
     zelLuminance,
     {256, 4294967295.0}},
    {"24 bits, high byte first",
     true,
     2,
     1,
     {bits(24), photometric(1)},
     "\0\0\x01\xff\xff\xff"s,
     zelUInt,
     zelLuminance,
     {256, 4294967295.0}},
    {"half floats",
     false,
     4,
     1,
     {bits(16), photometric(1), sampleFormat(3)},
     "\0\x3c\0\xc0\x01\0\0\x7c"s,
     zelFloat,
     zelLuminance,
     {1, -2, std::ldexp(1.0, -24), INFINITY}},
    {"half floats, high byte first",
     true,
     2,
     1,
     {bits(16), photometric(1), sampleFormat(3)},
     "\x35\x55\xfb\xff"s,
     zelFloat,
     zelLuminance,
     {1365 / 4096.0, -65504}},
    {"24-bit floats",
     true,
     2,
     1,
     {bits(24), photometric(1), sampleFormat(3)},
     "\x3f\0\0\xc0\x40\0"s,
     zelFloat,
     zelLuminance,
     {1, -2.5}},
    {"64-bit integers",
     false,
     2,
     1,
     {bits(64), photometric(1), sampleFormat(2)},
     "\xfd\xff\xff\xff\xff\xff\xff\xff\0\0\0\0\0\x01\0\0"s,
     zelDouble,
     zelLuminance,
     {-3, std::ldexp(1.0, 40)}},
    {"32 bits, high byte first",
     true,
     1,
     1,
     {bits(32), photometric(1)},
     "\x01\x02\x03\x04",
     zelUInt,
     zelLuminance,
     {16909060}},
    {"no photometric tag",
     false,
     1,
     1,
     {{258, 3, {8, 8, 8}}, samples(3)},
     "abc",
     zelUChar,
     zelRGB,
     {97, 98, 99}},
    {"bits of several samples",
     false,
     3,
     1,
     {{258, 3, {1, 1, 1}}, photometric(2), samples(3)},
     "\xa5\x80",
     zelBit,
     zelRGB,
     {1, 0, 1, 0, 0, 1, 0, 1, 1}},
    {"a palette of 2 bits keeps its numbers",
     false,
     4,
     1,
     {bits(2), photometric(3), {320, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}},
     "\xe4",
     zelUChar,
     zelRGBPalette,
     {3, 2, 1, 0}},
    // Clumps of 2 by 2 pixels with one chroma: grey ones, and a red one cut by the edge.
    {"subsampled chroma",
     false,
     3,
     3,
     {{258, 3, {8, 8, 8}}, photometric(6), samples(3), {530, 3, {2, 2}}},
     "\x0a\x0b\x0c\x0d\x80\x80"
     "\x14.\x16.\x80\x80"
     "\x1e\x1f..\x80\x80"
     "\x28...\x80\xff"s,
     zelUChar,
     zelRGB,
     {10, 10, 10, 11, 11, 11, 20, 20, 20, 12, 12,  12, 13, 13,
      13, 22, 22, 22, 30, 30, 30, 31, 31, 31, 218, 0,  40}},
};

TEST_F(TiffSamples, AreReadAsElements) {
    for (const Sample& sample : sampleFiles) {
        SCOPED_TRACE(sample.what);
        write("a.tif", handMadeTiff(sample.bigEndian, sample.width, sample.height, sample.tags,
                                    sample.data));
        zelFile* const file = open("a.tif");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getDataType(), sample.type);
        EXPECT_EQ(file->getColorModel(), sample.colorModel);
        EXPECT_EQ(numbers(readPixels(file)), sample.pixels);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

struct Model {
    std::uint32_t photometric, samples;
    std::vector<std::uint32_t> extras;
    zelColorModel colorModel;
};

TEST_F(TiffSamples, HaveTheColorModelOfTheirTags) {
    const Model models[] = {
        {1, 2, {1}, zelLuminanceAlpha},
        {1, 2, {2}, zelLuminanceAlpha},
        {1, 2, {0}, zelMultiSpectral},
        {2, 4, {1}, zelRGBA},
        {2, 4, {0}, zelMultiSpectral},
        {2, 5, {1, 0}, zelMultiSpectral},
        {5, 4, {}, zelCMYK},
        {5, 3, {}, zelCMY},
        {5, 5, {0}, zelMultiSpectral},
        {8, 3, {}, zelMultiSpectral},
        {0, 2, {1}, zelMultiSpectral},
        {4, 1, {}, zelLuminance},
        {32803, 1, {}, zelLuminance},
    };
    for (const Model& model : models) {
        SCOPED_TRACE(std::to_string(model.photometric) + ", " + std::to_string(model.samples));
        std::vector<HandTag> tags = {{258, 3, std::vector<std::uint32_t>(model.samples, 8)},
                                     photometric(model.photometric),
                                     samples(model.samples)};
        if (!model.extras.empty())
            tags.push_back({338, 3, model.extras});
        write("a.tif", handMadeTiff(false, 1, 1, tags, std::string(model.samples, 'x')));
        zelFile* const file = open("a.tif");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getColorModel(), model.colorModel);
        EXPECT_EQ(numbers(readPixels(file)), Numbers(model.samples, 'x'));
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(TiffSamples, ScaleTheirRangeAsTheyAreSpread) {
    write("a.tif",
          handMadeTiff(false, 2, 1, {bits(12), photometric(1), {280, 3, {0}}, {281, 3, {4095}}},
                       "\0\x10\0"s));
    zelFile* const file = open("a.tif", 2);
    ASSERT_NE(file, nullptr);
    double min = -1, max = -1;
    EXPECT_EQ(file->getScaleMinMax(min, max), zelOKAY);
    EXPECT_EQ(min, 0);
    EXPECT_EQ(max, 65535);
    EXPECT_EQ(file->getStatMinMax(min, max), zelBADFIELDGET);
    EXPECT_EQ(writePixels(file, Pixels(zelUShort, 2, 1, 1)), zelUNSUPPORTEDBYFILE);
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(TiffSamples, HaveMapsOfTheWidthThatTheFileUses) {
    const std::vector<std::uint32_t> bytes = {0, 255, 10, 20, 30, 40};
    const std::vector<std::uint32_t> words = {0, 65535, 2570, 5140, 7710, 10280};
    for (const auto& values : {bytes, words}) {
        write("a.tif",
              handMadeTiff(true, 1, 1, {bits(1), photometric(3), {320, 3, values}}, "\x80"));
        zelFile* const file = open("a.tif");
        ASSERT_NE(file, nullptr);
        const zelColormap* map = nullptr;
        ASSERT_EQ(file->getColormap(map), zelOKAY);
        EXPECT_EQ(map->getDataType(), values[1] == 255 ? zelUChar : zelUShort);
        EXPECT_EQ(map->getLength(), 2);
        for (int i = 0; i < 6; i++)
            EXPECT_EQ(map->getVal(i % 2, i / 2), values[static_cast<std::size_t>(i)]);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

} // namespace

} // namespace zel::test
