#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace zel::test {

namespace {

const std::vector<zelOrientation> allOrientations = {
    zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin,
    zelLeftUpperOrigin, zelRightUpperOrigin, zelRightLowerOrigin, zelLeftLowerOrigin};

// Numbers of 8 bits under one exponent, the first of a pixel with its top bit set; some in runs.
void shareExponents(Pixels& pixels) {
    for (int y = 0; y < pixels.height; y++)
        for (int x = 0; x < pixels.width; x++) {
            const bool run = x > 0 && x % 23 > 6;
            const int seed = static_cast<int>(std::fabs(pixels.at(x, y, 0)) * 64);
            for (int c = 0; c < 3; c++) {
                const int n = static_cast<int>(std::fabs(pixels.at(x, y, c)) * 64) % 256;
                pixels.set(x, y, c,
                           run ? pixels.at(x - 1, y, c)
                               : std::ldexp(c == 0 ? n | 128 : n, seed / 256 % 40 - 20));
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Hdr, CorpusSuite, testing::Values(CorpusFolder{"hdr"}));

using Numbers = std::vector<double>;

class Hdr : public FileScene {
protected:
    zelStatus statusOf(const std::string& text) const {
        write("bad.hdr", text);
        return statusOfReading("bad.hdr");
    }
};

TEST_F(Hdr, CarriesNumbersOfEightBitsUnchanged) {
    Pixels pixels = Pixels::pattern(zelFloat, 311, 170, 3, 7);
    shareExponents(pixels);
    const zelSize size(pixels.width, pixels.height, 1, 3);
    for (const zelOrientation orientation : allOrientations) {
        SCOPED_TRACE(orientation);
        const zelFileConfig config(&size, zelFloat, zelInterleaved, zelRGB, orientation,
                                   zelUnknownCompression);
        zelFile* file = create("a.hdr", config);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
        file = open("a.hdr");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getOrientation(), orientation);
        EXPECT_TRUE(readPixels(file) == pixels);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

const std::string start = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n";

TEST_F(Hdr, DecodesEveryKindOfScanline) {
    // 1 is 128 * 2^(129 - 136). Plain pixels, an exponent of 0, and one that a run repeats once.
    write("a.hdr", start + "-Y 1 +X 4\n" + std::string("\x80\x40\x20\x81", 4) +
                       std::string("\x80\x80\x80\0\1\1\1\2", 8));
    EXPECT_EQ(numbers(read("a.hdr")), Numbers({1, .5, .25, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    // Two digits of a count: 1 + 1 * 256 repetitions.
    write("a.hdr", start + "-Y 1 +X 258\n" + std::string("\x80\0\0\x82\1\1\1\1\1\1\1\1", 12));
    const Pixels repeated = read("a.hdr");
    for (int x = 0; x < 258; x++)
        EXPECT_EQ(repeated.at(x, 0, 0), 2);
    // Runs of one channel: red 8 times 128; green 3 literals and a run; blue 0; exponent 129.
    write("a.hdr", start + "-Y 1 +X 8\n" +
                       std::string("\2\2\0\x08\x88\x80\3\x80\x40\x20\x85\x10\x88\0\x88\x81", 16));
    EXPECT_EQ(numbers(read("a.hdr")), Numbers({1, 1,    0, 1, .5,   0, 1, .25,  0, 1, .125, 0,
                                               1, .125, 0, 1, .125, 0, 1, .125, 0, 1, .125, 0}));
    EXPECT_EQ(statusOf(start + "-Y 1 +X 8\n" + std::string("\2\2\0\x09\x88\x80", 6)), zelCORRUPTED);
    EXPECT_EQ(statusOf(start + "-Y 1 +X 8\n" + std::string("\2\2\0\x08\x89\x80", 6)), zelCORRUPTED);
    EXPECT_EQ(statusOf(start + "-Y 1 +X 8\n" + std::string("\2\2\0\x08\0\0\0", 7)), zelCORRUPTED);
    EXPECT_EQ(statusOf(start + "-Y 1 +X 4\n" + std::string("\1\1\1\1", 4)), zelCORRUPTED);
    EXPECT_EQ(statusOf(start + "-Y 9 +X 4\n" + std::string("\1\1\1\1", 4)), zelPREMATUREEOF);
    EXPECT_EQ(statusOf(start + "-Y 1 +Y 4\n" + std::string(16, 'a')), zelCORRUPTED);
    EXPECT_EQ(statusOf("#?RADIANCE\nFORMAT=64-bit\n\n-Y 1 +X 1\nabcd"), zelUNSUPPORTEDBYFILE);
}

TEST_F(Hdr, RoundsAndLimitsWhatItWrites) {
    const float infinity = std::numeric_limits<float>::infinity();
    Pixels pixels(zelFloat, 4, 1, 3);
    const float values[] = {1,        -3, std::nanf(""), 255.75F, 0.4F, 0.6F,
                            infinity, 1,  FLT_MAX,       1e-44F,  0,    0};
    for (int i = 0; i < 12; i++)
        pixels.set(i / 3, 0, i % 3, static_cast<double>(values[i]));
    createFrom("a.hdr", pixels, zelRGB, zelInterleaved, zelUnknownCompression);
    const double most = std::ldexp(255.0, 255 - 136);
    // 255.75 does not fit 8 bits but as 256, under which 2 is the unit.
    EXPECT_EQ(numbers(read("a.hdr")), Numbers({1, 0, 0, 256, 0, 0, most, 0, most, 0, 0, 0}));
}

TEST_F(Hdr, CarriesTheLinesOfItsHeader) {
    const std::string text = "#?RGBE\n# made by hand\nEXPOSURE=2\nEXPOSURE= 0.25\nVIEW= a b\n"
                             "COLORCORR=1 2 3\nCOLORCORR= 2 2 0.5\nFORMAT=32-bit_rle_xyze\n\n"
                             "+X 1 -Y 2\n" +
                             std::string("\x80\0\0\x81\x80\0\0\x82", 8);
    write("a.hdr", text);
    zelFile* file = open("a.hdr");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getOrientation(), zelLeftUpperOrigin);
    EXPECT_EQ(file->getColorModel(), zelMultiSpectral);
    double exposure = 0;
    char* words = nullptr;
    EXPECT_EQ(file->getTag(1, &exposure), zelOKAY);
    EXPECT_EQ(exposure, 0.5);
    EXPECT_EQ(file->getTag(2, &words), zelOKAY);
    EXPECT_STREQ(words, "2 4 1.5");
    EXPECT_EQ(file->getTag(6, &words), zelOKAY);
    EXPECT_STREQ(words, "a b");
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_EQ(numbers(read("a.hdr")), Numbers({1, 0, 0, 2, 0, 0}));

    const zelSize size(1, 1, 1, 3);
    file = create("b.hdr", zelFileConfig(&size, zelFloat, zelInterleaved, zelRGB));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setTag(1, 0.5), zelOKAY);
    EXPECT_EQ(file->setTag(7, "two\nlines"), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_EQ(content("b.hdr").substr(0, 67),
              "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\nEXPOSURE=0.5\nSOFTWARE=two lines\n\n");
}

// The other program's numbers have 16 bits and end at 1.
TEST_F(Hdr, AgreesWithAnotherProgram) {
    const char* const corpus = std::getenv("ZEL_CORPUS");
    if (corpus) {
        run("cp " + std::string(corpus) + "/hdr/imagecodecs__384x256.hdr a.hdr");
    } else {
        run("ppmrainbow -width=61 -height=40 red yellow blue | convert-im6.q16 ppm:- a.hdr");
    }
    const Pixels first = read("a.hdr");
    createFrom("b.hdr", first, zelRGB, zelInterleaved, zelUnknownCompression);
    EXPECT_TRUE(read("b.hdr") == first) << "the same program wrote it";
    for (const std::string name : {"a", "b"}) {
        run("convert-im6.q16 " + name +
            ".hdr -set colorspace sRGB -depth 16 -endian MSB rgb:raw && (echo P6 " +
            std::to_string(first.width) + " " + std::to_string(first.height) +
            " 65535; cat raw) >" + name + ".ppm");
        const Numbers mine = numbers(first), other = numbers(read(name + ".ppm"));
        ASSERT_EQ(mine.size(), other.size());
        double worst = 0;
        for (std::size_t i = 0; i < mine.size(); i++)
            worst = std::max(worst, std::fabs(std::min(mine[i], 1.0) * 65535 - other[i]));
        EXPECT_LE(worst, 1) << name;
    }
}

} // namespace

} // namespace zel::test
