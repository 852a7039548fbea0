#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

#include <zel/zelColormap.h>
#include <zel/zelFileConfig.h>

#include <cmath>
#include <cstring>
#include <tuple>

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Jp2, CorpusSuite, testing::Values(CorpusFolder{"jp2"}));

class Jp2 : public FileScene {
protected:
    // A picture with some smoothness.
    void SetUp() override { run("ppmcie 2>/dev/null | pnmscale -xsize 300 -ysize 211 >a.ppm"); }
    Pixels readPart(const std::string& name, int x, int y, int w, int h) const {
        zelFile* const file = open(name);
        Pixels part(file->getDataType(), w, h, file->getCsize());
        EXPECT_EQ(readPixels(file, part, x, y), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
        return part;
    }
};

TEST_F(Jp2, ReadsTilesAndOffsetsOfAnotherProgram) {
    const Pixels expected = read("a.ppm");
    for (const char* options :
         {"", "-t 64,50", "-t 64,50 -T 10,20 -d 30,40", "-d 33,7",
          "-n 1 -t 9,11", // so many that nothing is decoded when the file is opened
          "-p RPCL -n 3 -c [64,64] -t 128,128"}) {
        SCOPED_TRACE(options);
        run(std::string("opj_compress -i a.ppm -o a.jp2 ") + options + " >/dev/null");
        EXPECT_TRUE(read("a.jp2") == expected);
        EXPECT_TRUE(readPart("a.jp2", 101, 53, 120, 90) == expected.cut(101, 53, 120, 90));
    }
    zelFile* const file = open("a.jp2");
    ASSERT_NE(file, nullptr);
    zelSize page;
    file->getPageDimensions(page);
    EXPECT_EQ(page.x, 128) << "tiles are pages";
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(Jp2, WritesWhatAnotherProgramReads) {
    const Pixels pixels = read("a.ppm");
    const zelSize page(pixels.width, 128, 1, 3);
    createFrom("b.jp2", pixels, zelRGB, zelInterleaved, zelUnknownCompression, &page);
    run("opj_decompress -i b.jp2 -o b.ppm >/dev/null");
    EXPECT_TRUE(read("b.ppm") == pixels);
    const zelSize tile(256, 64, 1, 3);
    createFrom("t.jp2", pixels, zelRGB, zelInterleaved, zelUnknownCompression, &tile);
    run("opj_decompress -i t.jp2 -o t.ppm >/dev/null");
    EXPECT_TRUE(read("t.ppm") == pixels);
    EXPECT_TRUE(read("t.jp2") == pixels);
    EXPECT_NE(output("opj_dump -i t.jp2").find("tdx=256, tdy=64"), std::string::npos);
    for (const char* how : {"%quality=45", "%rate=8"}) {
        createFrom(std::string("c.jp2") + how, pixels, zelRGB, zelInterleaved,
                   zelUnknownCompression);
        const std::vector<double> a = numbers(pixels), b = numbers(read("c.jp2"));
        double squares = 0;
        for (std::size_t i = 0; i < a.size(); i++)
            squares += (a[i] - b[i]) * (a[i] - b[i]);
        const double mean = squares / static_cast<double>(a.size());
        EXPECT_GT(mean, 0) << how << ": not lossy";
        EXPECT_GT(10 * std::log10(255. * 255. / mean), 30) << how;
    }
    EXPECT_LT(content("c.jp2").size(), static_cast<std::size_t>(pixels.count() / 8 + 1000));
}

// OpenJPEG spoils the rows of a low tile at an odd place of some resolution, without a word.
TEST_F(Jp2, WritesTilesThatTheLossyTransformTakes) {
    run("pnmscale -xsize 300 -ysize 134 a.ppm >s.ppm");
    const Pixels pixels = read("s.ppm");
    const zelSize size(300, 134, 1, 3);
    for (const auto& [columns, rows, good] :
         {std::tuple(300, 65, false), std::tuple(300, 100, false), std::tuple(290, 128, false),
          std::tuple(256, 128, true), std::tuple(300, 128, true)}) {
        SCOPED_TRACE(columns * 1000 + rows);
        const zelSize page(columns, rows, 1, 3);
        const zelFileConfig config(&size, zelUChar, zelOrder(0), zelRGB, zelOrientation(0),
                                   zelCompression(0), &page);
        zelStatus status = zelOKAY;
        zelFile* const file =
            zelFile::create(path("s.jp2%quality=45").c_str(), nullptr, &config, nullptr, &status);
        ASSERT_EQ(status == zelOKAY, good);
        if (!file)
            continue;
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
        const std::vector<double> a = numbers(pixels), b = numbers(read("s.jp2"));
        for (std::size_t i = 0; i < a.size(); i++)
            ASSERT_NEAR(a[i], b[i], 30) << i;
    }
}

TEST_F(Jp2, WritesFewerBitsThanTheTypeHas) {
    run("pamdepth 65535 a.ppm >a16.ppm");
    const std::vector<double> given = numbers(read("a16.ppm"));
    for (const int bits : {5, 12}) {
        const double most = (1 << bits) - 1;
        createFrom("b.jp2%bits=" + std::to_string(bits), read("a16.ppm"), zelRGB, zelInterleaved,
                   zelUnknownCompression);
        run("opj_decompress -i b.jp2 -o b.ppm >/dev/null");
        EXPECT_EQ(output("sed -n '/^[0-9]*$/{p;q}' b.ppm"), std::to_string((1 << bits) - 1) + "\n");
        const std::vector<double> ours = numbers(read("b.jp2"));
        const double range = bits > 8 ? 65535 : 255;
        for (std::size_t i = 0; i < given.size(); i++)
            ASSERT_EQ(ours[i], std::round(std::round(given[i] * most / 65535) * range / most)) << i;
    }
}

TEST_F(Jp2, ReadsTheBandsOfOneTileInAnyOrder) {
    run("pnmscale -xsize 1500 -ysize 700 a.ppm >l.ppm && "
        "opj_compress -i l.ppm -o l.jp2 -n 4 >/dev/null");
    const Pixels expected = read("l.ppm");
    zelFile* const file = open("l.jp2");
    ASSERT_NE(file, nullptr);
    Pixels part(zelUChar, 1500, 30, 3);
    for (const int y : {600, 560, 530, 670, 0, 40, 80, 110, 90, 60, 300, 650, 31}) {
        ASSERT_EQ(readPixels(file, part, 0, y), zelOKAY);
        EXPECT_TRUE(part == expected.cut(0, y, 1500, 30)) << y;
    }
    EXPECT_EQ(file->close(0), zelOKAY);
}

std::string box(const std::string& name, const std::string& content) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>((content.size() + 8) >> shift);
    return bytes + name + content;
}

// A file of these boxes about a codestream, which needs no more of a header.
std::string jp2Of(const std::string& boxes, const std::string& codestream) {
    return box("jP  ", "\r\n\x87\n") + box("ftyp", std::string("jp2 \0\0\0\0jp2 ", 12)) +
           box("jp2h", boxes) + box("jp2c", codestream);
}

TEST_F(Jp2, TurnsColorsAndKeepsPalettes) {
    run("printf 'P6\\n2 1\\n255\\n\\121\\132\\360\\200\\200\\200' >y.ppm && printf 'P5\\n3 "
        "1\\n255\\n\\2\\0\\1' >p.pgm "
        "&& opj_compress -i y.ppm -o y.j2k -mct 0 -n 1 >/dev/null && "
        "opj_compress -i p.pgm -o p.j2k -n 1 >/dev/null");
    write("y.jp2", jp2Of(box("colr", std::string("\1\0\0\0\0\0\x12", 7)), content("y.j2k")));
    // Luma 81, blue difference 90, red difference 240 is red; the grey has no differences.
    EXPECT_EQ(numbers(read("y.jp2")), (std::vector<double>{238, 14, 14, 128, 128, 128}));

    write("p.jp2", jp2Of(box("colr", std::string("\1\0\0\0\0\0\x10", 7)) +
                             box("pclr", std::string("\0\3\3\7\7\7redgrnblu", 15)) +
                             box("cmap", std::string("\0\0\1\0\0\0\1\1\0\0\1\2", 12)),
                         content("p.j2k")));
    zelFile* const file = open("p.jp2");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getColorModel(), zelRGBPalette);
    EXPECT_EQ(numbers(readPixels(file)), (std::vector<double>{2, 0, 1}));
    const zelColormap* colors = nullptr;
    ASSERT_EQ(file->getColormap(colors), zelOKAY);
    EXPECT_EQ(colors->getVal(1, 0), 'g');
    EXPECT_EQ(colors->getVal(2, 2), 'u');
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(Jp2, CarriesTheResolution) {
    const zelSize size(20, 10, 1, 3);
    const zelFileConfig config(&size, zelUChar, zelOrder(0), zelRGB);
    zelFile* file = create("a.jp2", config);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setTag(282, 300.0), zelOKAY);
    EXPECT_EQ(file->setTag(283, 72.5), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    // y before x: 725 and 300 to 254, times ten to the powers 3 and 4.
    const std::string fractions("\x02\xd5\0\xfe\x01\x2c\0\xfe\3\4", 10);
    EXPECT_NE(content("a.jp2").find(box("res ", box("resc", fractions))), std::string::npos);
    // A resolution of display counts only without one of capture.
    const std::string color = box("colr", std::string("\1\0\0\0\0\0\x10", 7));
    const std::string captured = box("resc", fractions);
    const std::string shown = box("resd", std::string("\0\x64\0\1\0\xc8\0\1\2\2", 10));
    run("opj_compress -i a.ppm -o c.j2k >/dev/null");
    const std::string stream = content("c.j2k");
    for (const auto& [boxes, x, y] :
         {std::tuple(captured + shown, 300 / 2.54, 72.5 / 2.54), std::tuple(shown, 200., 100.),
          std::tuple(box("resc", std::string("\x2e\x23\0\1\x2e\x23\0\1\0\0", 10)), 300., 300.)}) {
        write("b.jp2", jp2Of(color + box("res ", boxes), stream));
        file = open("b.jp2");
        ASSERT_NE(file, nullptr);
        float seenX = 0, seenY = 0;
        EXPECT_EQ(file->getTag(282, &seenX), zelOKAY);
        EXPECT_EQ(file->getTag(283, &seenY), zelOKAY);
        EXPECT_FLOAT_EQ(seenX, static_cast<float>(x));
        EXPECT_FLOAT_EQ(seenY, static_cast<float>(y));
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(Jp2, CarriesAnIccProfile) {
    const zelSize size(20, 10, 1, 3);
    const zelFileConfig config(&size, zelUChar, zelOrder(0), zelRGB);
    zelFile* file = create("a.jp2", config);
    ASSERT_NE(file, nullptr);
    const std::string profile(3001, 'p');
    EXPECT_EQ(file->setICCProfile(static_cast<int>(profile.size()), profile.data()), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    file = open("a.jp2");
    ASSERT_NE(file, nullptr);
    int bytes = 0;
    void* data = nullptr;
    ASSERT_EQ(file->getICCProfile(bytes, data), zelOKAY);
    EXPECT_EQ(std::string(static_cast<char*>(data), static_cast<std::size_t>(bytes)), profile);
    EXPECT_EQ(file->freeICCProfile(data), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

} // namespace zel::test
