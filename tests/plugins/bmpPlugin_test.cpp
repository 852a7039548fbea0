#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

#include <zel/zelColormap.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Bmp, CorpusSuite, testing::Values(CorpusFolder{"bmp", {}, {}, true}));

class Bmp : public FileScene {};

TEST_F(Bmp, ReadsTheFilesOfOthers) {
    run("ppmrainbow -width=53 -height=21 red yellow blue >a.ppm && pnmquant 13 a.ppm >q.ppm && "
        "pnmquant 200 a.ppm >p.ppm && pgmramp -ellipse 53 21 >g.pgm && "
        "pgmtopbm g.pgm | pnmtopnm >b.pbm");
    const std::pair<const char*, const char*> cases[] = {
        {"a.ppm", "ppmtobmp -windows -bpp=24 a.ppm"},
        {"a.ppm", "convert-im6.q16 a.ppm bmp2:-"},
        {"a.ppm", "convert-im6.q16 a.ppm bmp3:-"},
        {"a.ppm", "convert-im6.q16 a.ppm bmp:-"},
        {"p.ppm", "ppmtobmp -windows p.ppm"},
        {"p.ppm", "convert-im6.q16 p.ppm -type palette -compress rle bmp3:-"},
        {"p.ppm", "convert-im6.q16 p.ppm -type palette bmp:-"},
        {"q.ppm", "ppmtobmp -os2 -bpp=4 q.ppm"},
        {"q.ppm", "ppmtobmp -windows -bpp=4 q.ppm"},
        {"g.pgm", "ppmtobmp -windows g.pgm"},
        {"b.pbm", "ppmtobmp -windows -bpp=1 b.pbm"},
    };
    for (const auto& [source, command] : cases) {
        SCOPED_TRACE(command);
        run(std::string(command) + " >x.bmp");
        EXPECT_EQ(colors("x.bmp"), colors(source));
    }
}

TEST_F(Bmp, WritesFilesThatOthersRead) {
    const auto write = [this](const char* name, zelDataType type, zelColorModel cm, int channels) {
        createFrom(name, Pixels::pattern(type, 43, 19, channels, 4), cm, zelInterleaved,
                   zelNoCompression);
    };
    write("bits.bmp", zelBit, zelLuminance, 1);
    write("negative.bmp", zelBit, zelNegative, 1);
    write("grey.bmp", zelUChar, zelLuminance, 1);
    write("palette.bmp", zelUChar, zelRGBPalette, 1);
    write("rgb.bmp", zelUChar, zelRGB, 3);
    for (const std::string name : {"bits", "negative", "grey", "palette", "rgb"}) {
        SCOPED_TRACE(name);
        run("convert-im6.q16 " + name + ".bmp -depth 8 y.ppm");
        EXPECT_EQ(colors("y.ppm"), colors(name + ".bmp"));
        if (name == "rgb")
            continue;
        run("bmptopnm " + name + ".bmp | ppmtoppm >z.ppm");
        EXPECT_EQ(colors("z.ppm"), colors(name + ".bmp"));
    }
    write("rgba.bmp", zelUChar, zelRGBA, 4);
    run("convert-im6.q16 rgba.bmp -depth 8 y.pam");
    EXPECT_EQ(colors("y.pam"), colors("rgba.bmp"));
}

// Pieces of single pixels, of repeated ones and of two in turn, of all lengths that codes have.
Pixels runs(int width, int height, int indexes) {
    Pixels pixels(zelUChar, width, height, 1);
    unsigned random = 1;
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width;) {
            random = random * 1664525 + 1013904223;
            const int most = y % 2 == 0 ? 9 : 600;
            const int period = static_cast<int>(random >> 8 & 7) + 1;
            const int end = std::min(width, x + 1 + static_cast<int>(random >> 16) % most);
            for (int i = 0; x < end; x++, i++)
                pixels.set(x, y, 0, (static_cast<int>(random >> 12) + i % period * 5) % indexes);
        }
    return pixels;
}

TEST_F(Bmp, WritesRunLengthsAndFourBits) {
    for (const char* how : {"%rle", "%bits=4", "%rle%bits=4"})
        for (const int width : {1, 2, 3, 254, 255, 256, 257, 1501}) {
            SCOPED_TRACE(std::string(how) + ", " + std::to_string(width));
            const Pixels pixels = runs(width, 23, std::strlen(how) > 4 ? 16 : 256);
            const zelSize size(width, 23, 1, 1);
            const zelFileConfig config(&size, zelUChar, zelInterleaved, zelRGBPalette,
                                       zelLowerLeftOrigin);
            zelFile* const file = create(std::string("a.bmp") + how, config);
            ASSERT_NE(file, nullptr);
            EXPECT_EQ(writePixels(file, pixels), zelOKAY);
            EXPECT_EQ(file->close(0), zelOKAY);
            EXPECT_EQ(numbers(read("a.bmp")), numbers(pixels));
            run("bmptopnm a.bmp 2>/dev/null | ppmtoppm >a.ppm");
            EXPECT_EQ(colors("a.ppm"), colors("a.bmp"));
        }
    const zelSize size(300, 200, 1, 1);
    const zelFileConfig config(&size, zelUChar, zelInterleaved, zelRGBPalette, zelLowerLeftOrigin);
    zelFile* file = create("a.bmp%rle", config);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->close(0), zelOKAY);
    // A row of 0 is two runs and an end.
    EXPECT_EQ(content("a.bmp").size(), 14 + 40 + 1024 + 200 * 6 + 2U);
    file = create("a.bmp%bits=4", config);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(writePixels(file, Pixels::pattern(zelUChar, 300, 200, 1, 1)), zelOKAY);
    EXPECT_EQ(file->close(0), zelBADPARAMS) << "indexes above 15";
}

TEST_F(Bmp, CarriesAnIccProfile) {
    const std::string profile(1001, 'p');
    for (const zelColorModel cm : {zelRGB, zelRGBA, zelRGBPalette}) {
        SCOPED_TRACE(cm);
        const zelSize size(5, 3, 1, zelColorModelChans(cm));
        zelFile* file = create("a.bmp", zelFileConfig(&size, zelUChar, zelInterleaved, cm));
        ASSERT_NE(file, nullptr);
        const Pixels pixels = Pixels::pattern(zelUChar, 5, 3, size.c, 3);
        EXPECT_EQ(file->setICCProfile(static_cast<int>(profile.size()), profile.data()), zelOKAY);
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
        const std::string bytes = content("a.bmp");
        // The profile's place is counted from the second header on.
        unsigned place[2];
        std::memcpy(place, bytes.data() + 14 + 112, sizeof place);
        EXPECT_EQ(bytes.substr(70, 4), "DEBM");
        EXPECT_EQ(place[1], profile.size());
        EXPECT_EQ(bytes.substr(14 + place[0]), profile);
        run("convert-im6.q16 a.bmp -depth 8 a.pam");
        EXPECT_EQ(colors("a.pam"), colors("a.bmp"));
        file = open("a.bmp");
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(readPixels(file) == pixels);
        int length = 0;
        void* data = nullptr;
        ASSERT_EQ(file->getICCProfile(length, data), zelOKAY);
        EXPECT_EQ(std::string(static_cast<char*>(data), static_cast<std::size_t>(length)), profile);
        EXPECT_EQ(file->freeICCProfile(data), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(Bmp, TellsTheResolution) {
    const zelSize size(2, 2, 1, 3);
    zelFile* file = create("a.bmp", zelFileConfig(&size, zelUChar, zelInterleaved, zelRGB));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setTag(282, 300.0), zelOKAY);
    EXPECT_EQ(file->setTag(283, 150.0), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    // 300 to the inch are 11811.02 to the metre.
    const std::string seen =
        output("identify-im6.q16 -units PixelsPerCentimeter -format '%x %y' a.bmp");
    EXPECT_NEAR(std::stod(seen), 118.11, 1e-9);
    EXPECT_NEAR(std::stod(seen.substr(seen.find(' '))), 59.06, 1e-9);
    file = open("a.bmp");
    ASSERT_NE(file, nullptr);
    float x = 0;
    short unit = 0;
    EXPECT_EQ(file->getTag(282, &x), zelOKAY);
    EXPECT_EQ(x, 300);
    EXPECT_EQ(file->getTag(296, &unit), zelOKAY);
    EXPECT_EQ(unit, 2);
    EXPECT_EQ(file->close(0), zelOKAY);
}

std::string number(unsigned value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; i++)
        text += static_cast<char>(i < 4 ? value >> 8 * i : 0);
    return text;
}

// A file with a header of the length 56, which ends with the four masks.
std::string masked(int width, int bits, const std::vector<unsigned>& masks, std::string data) {
    std::string text = "BM" + number(0, 8) + number(70, 4) + number(56, 4) +
                       number(static_cast<unsigned>(width), 4) + number(1, 4) + number(1, 2) +
                       number(static_cast<unsigned>(bits), 2) + number(3, 4) + number(0, 20);
    for (const unsigned mask : masks)
        text += number(mask, 4);
    return text + data;
}

TEST_F(Bmp, WidensTheBitsOfMasks) {
    using Numbers = std::vector<double>;
    // 4 bits each: v * 17. The row is padded to 4 bytes.
    write("a.bmp", masked(1, 16, {0xf00, 0xf0, 0xf, 0xf000}, "\x1f\xa0" + number(0, 2)));
    EXPECT_EQ(colors("a.bmp"), Numbers({0, 17, 255, 170}));
    // 5 and 6 bits: 1 * 255 / 31 = 8.2, 1 * 255 / 63 = 4.05, 30 * 255 / 31 = 246.8.
    write("a.bmp", masked(1, 16, {0xf800, 0x7e0, 0x1f, 0}, number(1 << 11 | 1 << 5 | 30, 4)));
    EXPECT_EQ(colors("a.bmp"), Numbers({8, 4, 247}));
    // 10 bits and 2: 512 * 255 / 1023 = 127.6, 2 * 255 / 1023 = 0.499, 1 * 255 / 3 = 85.
    write("a.bmp", masked(1, 32, {0x3ff, 0xffc00, 0x3ff00000, 0xc0000000},
                          number(512U | 2U << 10 | 1023U << 20 | 1U << 30, 4)));
    EXPECT_EQ(colors("a.bmp"), Numbers({128, 0, 255, 85}));
    write("a.bmp", masked(1, 16, {0xf00f, 0xf0, 0xf, 0}, number(0, 4)));
    EXPECT_EQ(statusOfReading("a.bmp"), zelCORRUPTED);
}

TEST_F(Bmp, DecodesEveryCodeOfRunLengths) {
    // 5 x 4 pixels of 4 bits, lowest row first: a run, a literal of 3 with its filling, a move by
    // 2 right and 2 up that leaves a row empty, an end before the row is full.
    const std::string codes(
        "\x02\x12\x00\x03\x34\x50\x00\x00\x01\x77\x00\x02\x02\x02\x01\x99\x00\x01", 18);
    write("r.bmp", "BM" + number(0, 8) + number(118, 4) + number(40, 4) + number(5, 4) +
                       number(4, 4) + number(1, 2) + number(4, 2) + number(2, 4) + number(0, 84) +
                       codes);
    const std::vector<double> expected = {0, 0, 0, 9, 0, 0, 0, 0, 0, 0,
                                          7, 0, 0, 0, 0, 1, 2, 3, 4, 5};
    EXPECT_EQ(numbers(read("r.bmp")), expected);
    std::filesystem::resize_file(path("r.bmp"), 118 + 16);
    EXPECT_EQ(statusOfReading("r.bmp"), zelPREMATUREEOF);
}

// Of this file the manifest tells that other readers are wrong.
TEST_F(Bmp, ObeysTheMasksOfTheCorpus) {
    const char* const corpus = std::getenv("ZEL_CORPUS");
    if (!corpus)
        GTEST_SKIP() << "ZEL_CORPUS is not set";
    run("cp " + std::string(corpus) + "/bmp/Pillow__rgb32bf.bmp a.bmp && cp " + corpus +
        "/bmp/Pillow__rgb24.bmp b.bmp && cp " + corpus + "/bmp/Pillow__rgb16-565.bmp c.bmp");
    EXPECT_EQ(colors("a.bmp"), colors("b.bmp"));
    run("convert-im6.q16 c.bmp -depth 8 c.ppm");
    const std::vector<double> mine = colors("c.bmp"), other = colors("c.ppm");
    ASSERT_EQ(mine.size(), other.size());
    for (std::size_t i = 0; i < mine.size(); i++)
        EXPECT_NEAR(mine[i], other[i], 1) << i;
}

} // namespace

} // namespace zel::test
