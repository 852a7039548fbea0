// TIFF files of other programs read by us, and ours read by them.

#include "plugins/tiffScene.h"

#include <zel/zelColormap.h>

#include <algorithm>
#include <cmath>

namespace zel::test {

namespace {

// The stand-alone name: on a machine with several programs called convert, this is the one meant.
#define CONVERT "convert-im6.q16"

class TiffExchange : public TiffScene {
protected:
    void SetUp() override {
        run("ppmrainbow -width=70 -height=50 red green blue >color.ppm; "
            "pgmramp -lr -maxval=65535 70 50 >deep.pgm; "
            "ppmtopgm color.ppm | pamditherbw -threshold | pamtopnm >bits.pbm; "
            "pamtotiff -truecolor -none color.ppm >color.tif; pamtotiff -none deep.pgm >deep.tif; "
            "pamtotiff -none -miniswhite bits.pbm >bits.tif");
    }

    void expectEqual(const Pixels& pixels, const Pixels& expected, double tolerance = 0) const {
        ASSERT_EQ(pixels.width, expected.width);
        ASSERT_EQ(pixels.height, expected.height);
        ASSERT_EQ(pixels.channels, expected.channels);
        const std::vector<double> a = numbers(pixels), b = numbers(expected);
        for (std::size_t i = 0; i < a.size(); i++)
            ASSERT_NEAR(a[i], b[i], tolerance) << "element " << i;
    }
};

struct Made {
    const char* source;  ///< a plain picture, read by another plug-in
    const char* command; ///< makes a.tif
};

TEST_F(TiffExchange, ReadsTheFilesOfOthers) {
    const Made files[] = {
        {"color.ppm", "cp color.tif a.tif"},
        {"color.ppm", "tiffcp -c lzw:2 -r 7 color.tif a.tif"},
        {"color.ppm", "tiffcp -c lzw -B -p separate color.tif a.tif"},
        {"color.ppm", "tiffcp -c zip:2:p9 -t -w 32 -l 48 color.tif a.tif"},
        {"color.ppm", "tiffcp -c packbits -p separate -t -w 16 -l 16 color.tif a.tif"},
        {"color.ppm", "tiffcp -c none -8 -f lsb2msb -r 1 color.tif a.tif"},
        {"color.ppm", "tiffcp -c zstd -8 -B -r 20 color.tif a.tif"},
        {"color.ppm", "tiffcp -c lzma color.tif a.tif"},
        {"color.ppm", CONVERT " color.ppm -compress zip -define tiff:tile-geometry=32x16 a.tif"},
        {"color.ppm", CONVERT " color.ppm -interlace plane -endian msb a.tif"},
        {"color.ppm", "ppm2tiff -c lzw -r 3 color.ppm a.tif"},
        {"deep.pgm", "tiffcp -c zip:2 -B deep.tif a.tif"},
        {"deep.pgm", "tiffcp -c none -B -t -w 16 -l 32 deep.tif a.tif"},
        {"deep.pgm", "tiffcp -c none -L -f lsb2msb deep.tif a.tif"},
        {"bits.pbm", "cp bits.tif a.tif"},
        {"bits.pbm", "tiffcp -c g3:1d bits.tif a.tif"},
        {"bits.pbm", "tiffcp -c g3:2d:fill -r 9 -f lsb2msb bits.tif a.tif"},
        {"bits.pbm", "tiffcp -c g4 bits.tif a.tif"},
        {"bits.pbm", "tiffcp -c packbits -t -w 32 -l 16 -B bits.tif a.tif"},
        {"bits.pbm", "tiffcp -c none -f lsb2msb -r 4 bits.tif a.tif"},
    };
    for (const Made& made : files) {
        SCOPED_TRACE(made.command);
        run(made.command);
        const Pixels pixels = read("a.tif");
        expectEqual(pixels, read(made.source));
        // A row from the middle alone, as a client would that steps back.
        zelFile* const file = open("a.tif");
        ASSERT_NE(file, nullptr);
        for (const int y : {40, 3, 41}) {
            Pixels row(pixels.type, 50, 1, pixels.channels);
            EXPECT_EQ(readPixels(file, row, 10, y), zelOKAY);
            EXPECT_TRUE(row == pixels.cut(10, y, 50, 1));
        }
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(TiffExchange, ReadsJpegAsOthersDo) {
    for (const char* const options : {"-r 16", "-t -w 32 -l 16", "-r 1000"}) {
        SCOPED_TRACE(options);
        run(std::string("tiffcp -c jpeg:80 ") + options +
            " color.tif j.tif && " CONVERT " j.tif j.ppm");
        zelFile* const file = open("j.tif");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getColorModel(), zelRGB);
        EXPECT_EQ(file->getCompression(), zelJPEG);
        expectEqual(readPixels(file), read("j.ppm"), 1);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(TiffExchange, SpreadsNarrowGrey) {
    for (const int maxval : {3, 15}) {
        run("pgmramp -lr -maxval=" + std::to_string(maxval) +
            " 70 50 >n.pgm && " //
            "pamtotiff -none n.pgm >n.tif && pamdepth 255 n.pgm >wide.pgm");
        zelFile* const file = open("n.tif");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getDataType(), zelUChar);
        expectEqual(readPixels(file), read("wide.pgm"));
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(TiffExchange, ReadsPalettes) {
    run("pamtotiff -lzw -indexbits=8 color.ppm >p.tif");
    zelFile* const file = open("p.tif");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getColorModel(), zelRGBPalette);
    const zelColormap* map = nullptr;
    ASSERT_EQ(file->getColormap(map), zelOKAY);
    EXPECT_EQ(map->getLength(), 256);
    EXPECT_EQ(map->getDataType(), zelUShort);
    const Pixels indexes = readPixels(file);
    Pixels colors(zelUChar, 70, 50, 3);
    for (int y = 0; y < 50; y++)
        for (int x = 0; x < 70; x++)
            for (int c = 0; c < 3; c++)
                colors.set(x, y, c, std::floor(map->getVal(indexes.at(x, y, 0), c) / 256));
    expectEqual(colors, read("color.ppm"));
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(TiffExchange, KeepsWhatClientsHoldWhileLargeBlocksAreRead) {
    run("pamenlarge 20 color.ppm | pamtotiff -lzw -indexbits=8 -rowsperstrip=1000 >large.tif");
    run("tiffset -s 315 somebody large.tif");
    zelFile* const file = open("large.tif");
    ASSERT_NE(file, nullptr);
    const zelColormap* map = nullptr;
    const char* artist = nullptr;
    ASSERT_EQ(file->getColormap(map), zelOKAY);
    ASSERT_EQ(file->getTag(315, &artist), zelOKAY);
    const double first = map->getVal(0, 0);
    readPixels(file);
    EXPECT_EQ(map->getVal(0, 0), first);
    EXPECT_STREQ(artist, "somebody");
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(TiffExchange, StatesOrientation) {
    run("tiffset -s 274 6 color.tif");
    zelFile* const file = open("color.tif");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getOrientation(), zelRightUpperOrigin);
    const Pixels upright = readPixels(file);
    const Pixels stored = read("color.ppm");
    // Row 0 of the file is the right-hand side of the picture, read downwards.
    ASSERT_EQ(upright.width, stored.height);
    for (int x = 0; x < stored.width; x++)
        EXPECT_EQ(upright.at(stored.height - 1 - 4, x, 1), stored.at(x, 4, 1));
    EXPECT_EQ(file->close(0), zelOKAY);
}

struct Written {
    zelDataType type;
    zelColorModel colorModel;
    int channels;
    zelOrder order;
    zelCompression compression;
    zelSize page;
    const char* arguments;
};

// The other program turns ours into an uncompressed file, and where it can into a plain picture.
TEST_F(TiffExchange, WritesFilesThatOthersRead) {
    const zelSize own(0, 0, 0, 0), strips(61, 8, 1, 3), tiles(32, 16, 1, 3);
    const Written files[] = {
        {zelUChar, zelRGB, 3, zelInterleaved, zelNoCompression, own, ""},
        {zelUChar, zelRGB, 3, zelSeparate, zelLZW, strips, "%predictor=2"},
        {zelUChar, zelRGB, 3, zelInterleaved, zelZIP, tiles, "%level=9"},
        {zelUShort, zelRGB, 3, zelSeparate, zelPACKBITS, strips, "%bigtiff"},
        {zelUShort, zelLuminance, 1, zelInterleaved, zelZIP, own, "%rowsperstrip=5%predictor=2"},
        {zelBit, zelNegative, 1, zelInterleaved, zelCCITTFAX4, own, ""},
        {zelBit, zelNegative, 1, zelInterleaved, zelCCITTFAX3, zelSize(32, 32, 1, 1), ""},
        {zelBit, zelLuminance, 1, zelInterleaved, zelNoCompression, zelSize(16, 16, 1, 1), ""},
        {zelFloat, zelRGB, 3, zelInterleaved, zelZIP, tiles, "%predictor=3"},
        {zelDouble, zelMultiSpectral, 5, zelSeparate, zelLZW, own, ""},
        {zelShort, zelMultiSpectral, 2, zelInterleaved, zelNoCompression, own, ""},
        {zelUChar, zelCMYK, 4, zelInterleaved, zelLZW, own, ""},
        {zelUInt, zelLuminanceAlpha, 2, zelInterleaved, zelPACKBITS, own, ""},
    };
    for (const Written& file : files) {
        SCOPED_TRACE(&file - files);
        const Pixels pixels = Pixels::pattern(file.type, 61, 45, file.channels, 8);
        createFrom(std::string("a.tif") + file.arguments, pixels, file.colorModel, file.order,
                   file.compression, file.page.x ? &file.page : nullptr);
        run("tiffcp -c none a.tif b.tif");
        expectEqual(read("b.tif"), pixels);
        if (file.type == zelBit || file.colorModel == zelRGB || file.channels == 1) {
            if (file.type & (zelBit | zelUChar | zelUShort)) {
                run("" CONVERT " a.tif a.pnm || tifftopnm a.tif >a.pnm");
                Pixels plain = read("a.pnm");
                if (file.colorModel == zelLuminance && file.type == zelBit)
                    for (int y = 0; y < plain.height; y++)
                        for (int x = 0; x < plain.width; x++)
                            plain.set(x, y, 0, 1 - plain.at(x, y, 0));
                expectEqual(plain, pixels);
            }
        }
    }
}

TEST_F(TiffExchange, WritesJpegThatOthersRead) {
    const Pixels color = read("color.ppm");
    const zelSize pages[] = {zelSize(70, 50, 1, 3), zelSize(70, 16, 1, 3), zelSize(32, 32, 1, 3)};
    for (const zelSize& page : pages) {
        SCOPED_TRACE(page.x * 1000 + page.y);
        createFrom("j.tif%quality=95", color, zelRGB, zelInterleaved, zelJPEG, &page);
        EXPECT_NE(output("tiffinfo j.tif").find("Photometric Interpretation: YCbCr"),
                  std::string::npos);
        run(CONVERT " j.tif j.ppm");
        expectEqual(read("j.ppm"), color, 40);
        expectEqual(read("j.tif"), read("j.ppm"), 1);
        const std::size_t fine = content("j.tif").size();
        createFrom("j.tif%quality=20", color, zelRGB, zelInterleaved, zelJPEG, &page);
        EXPECT_LT(content("j.tif").size(), fine);
    }
    // JPEG holds nothing but bytes.
    createFrom("f.tif", Pixels::pattern(zelFloat, 20, 20, 1, 2), zelLuminance, zelInterleaved,
               zelJPEG);
    zelFile* const file = open("f.tif");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getCompression(), zelZIP);
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

} // namespace zel::test
