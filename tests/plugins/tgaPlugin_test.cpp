#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

#include <zel/zelColormap.h>

namespace zel::test {

namespace {

// Numbers of which many neighbours are equal, so that there are runs of all lengths.
void makeRuns(Pixels& pixels) {
    for (int y = 0; y < pixels.height; y++)
        for (int x = 1; x < pixels.width; x++)
            if (x % 17 > 4 && (x + y) % 3 > 0)
                for (int c = 0; c < pixels.channels; c++)
                    pixels.set(x, y, c, pixels.at(x - 1, y, c));
}

INSTANTIATE_TEST_SUITE_P(Tga, CorpusSuite, testing::Values(CorpusFolder{"tga", {}, {}, true}));

class Tga : public FileScene {};

TEST_F(Tga, ReadsTheFilesOfOthers) {
    run("ppmrainbow -width=153 -height=21 red yellow blue >a.ppm && pnmquant 99 a.ppm >p.ppm && "
        "ppmtopgm a.ppm >g.pgm");
    const std::pair<const char*, const char*> cases[] = {
        {"a.ppm", "ppmtotga -rgb -norle a.ppm"},
        {"a.ppm", "ppmtotga -rgb a.ppm"},
        {"a.ppm", "convert-im6.q16 a.ppm -compress rle tga:-"},
        {"a.ppm", "convert-im6.q16 a.ppm -orient BottomRight tga:-"},
        {"p.ppm", "ppmtotga -cmap p.ppm"},
        {"p.ppm", "ppmtotga -cmap -norle p.ppm"},
        {"p.ppm", "convert-im6.q16 p.ppm -type palette tga:-"},
        {"g.pgm", "ppmtotga -mono g.pgm"},
        {"g.pgm", "convert-im6.q16 g.pgm -compress none tga:-"},
    };
    for (const auto& [source, command] : cases) {
        SCOPED_TRACE(command);
        run(std::string(command) + " >x.tga");
        if (std::string(command).find("BottomRight") == std::string::npos) {
            EXPECT_EQ(colors("x.tga"), colors(source));
        } else {
            run("convert-im6.q16 a.ppm -rotate 180 r.ppm");
            EXPECT_EQ(colors("x.tga"), colors("r.ppm"));
        }
    }
}

TEST_F(Tga, WritesFilesThatOthersRead) {
    const std::pair<zelColorModel, int> kinds[] = {
        {zelRGB, 3}, {zelLuminance, 1}, {zelRGBPalette, 1}, {zelRGBA, 4}};
    for (const auto& [cm, channels] : kinds)
        for (const std::string arguments : {"", "%rle"}) {
            SCOPED_TRACE(std::to_string(cm) + arguments);
            Pixels pixels = Pixels::pattern(zelUChar, 143, 19, channels, 4);
            makeRuns(pixels);
            createFrom("x.tga" + arguments, pixels, cm, zelInterleaved, zelNoCompression);
            run(channels == 4 ? "convert-im6.q16 x.tga -depth 8 y.pam"
                              : "tgatoppm x.tga | ppmtoppm >y.pam");
            EXPECT_EQ(colors("x.tga"), colors("y.pam"));
        }
}

// A header of 18 bytes and what follows it.
std::string targa(std::string header, const std::string& rest) {
    header.resize(18);
    return header + rest;
}

TEST_F(Tga, ReadsBitsPalettesAndTheMeaningOfAlpha) {
    using Numbers = std::vector<double>;
    // Two pixels of 5 bits: 31 0 1 and 0 16 0, with the top bit 1 and 0. 16 * 255 / 31 = 131.6.
    const std::string pixels("\x01\xfc\x00\x02", 4);
    const std::string alpha("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\1\0\x10\x21", 18);
    write("a.tga", targa(alpha, pixels));
    EXPECT_EQ(colors("a.tga"), Numbers({255, 0, 8, 255, 0, 132, 0, 0}));
    // An extension area that says that the attribute bits are no alpha.
    const std::string end = std::string("\x16\0\0\0\0\0\0\0", 8) + "TRUEVISION-XFILE." + '\0';
    write("a.tga", targa(alpha, pixels + std::string(494, '\1') + '\2' + end));
    EXPECT_EQ(colors("a.tga"), Numbers({255, 0, 8, 0, 132, 0}));
    write("a.tga", targa(alpha, pixels + std::string(494, '\1') + '\4' + end));
    EXPECT_EQ(colors("a.tga").size(), 8u);
    // A palette of 2 colours from index 3 on, behind an identification of 2 bytes.
    write("a.tga", targa(std::string("\2\1\1\3\0\2\0\x18\0\0\0\0\3\0\1\0\x08\x30", 18),
                         std::string("id\1\2\3\4\5\6\4\3\0", 11)));
    EXPECT_EQ(colors("a.tga"), Numbers({0, 0, 0, 3, 2, 1, 6, 5, 4}));
    // Indexes of 16 bits, 300, 299 and 1, in a run and in a literal; colours for the first two.
    write("a.tga", targa(std::string("\0\1\x09\x2b\1\2\0\x18\0\0\0\0\4\0\1\0\x10\x20", 18),
                         std::string("\1\2\3\4\5\6\x81\x2c\1\1\x2b\1\1\0", 14)));
    EXPECT_EQ(numbers(read("a.tga")), Numbers({300, 300, 299, 1}));
    zelFile* const file = open("a.tga");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getDataType(), zelUShort);
    const zelColormap* map = nullptr;
    ASSERT_EQ(file->getColormap(map), zelOKAY);
    EXPECT_EQ(map->getLength(), 301);
    for (const auto& [index, red] : {std::pair(300, 6), std::pair(299, 3), std::pair(1, 0)})
        EXPECT_EQ(map->getVal(index, 0), red) << index;
    EXPECT_EQ(file->close(0), zelOKAY);
    write("a.tga", targa(std::string("\0\0\x0a\0\0\0\0\0\0\0\0\0\2\0\2\0\x18", 17),
                         std::string("\x81\1\2\3\1\4\5\6\7\x08", 10)));
    EXPECT_EQ(statusOfReading("a.tga"), zelPREMATUREEOF);
}

} // namespace

} // namespace zel::test
