#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"
#include "plugins/pluginSuite.h"

#include <zel/zelColormap.h>
#include <zel/zelFileConfig.h>

#include <cmath>
#include <cstring>

namespace zel::test {

namespace {

PluginTraits jp2Traits() {
    PluginTraits traits;
    traits.format = "JP2";
    traits.randomAccessWrite = false;
    Combo kind;
    kind.compression = zelUnknownCompression;
    const auto add = [&](const char* suffix, zelDataType type, zelColorModel cm, int channels) {
        kind.suffix = suffix;
        kind.type = type;
        kind.colorModel = cm;
        kind.channels = channels;
        // A bare codestream may lack its end marker, and nothing tells its length.
        kind.noticesTruncation = std::strcmp(suffix, ".jp2") == 0;
        traits.combos.push_back(kind);
    };
    add(".jp2", zelUChar, zelRGB, 3);
    add(".jp2", zelUShort, zelLuminanceAlpha, 2);
    add(".jp2", zelShort, zelLuminance, 1);
    add(".jp2", zelUChar, zelCMYK, 4);
    add(".jp2", zelUShort, zelRGBA, 4);
    add(".j2k", zelChar, zelLuminance, 1);
    add(".j2k", zelUChar, zelMultiSpectral, 7);
    return traits;
}

INSTANTIATE_TEST_SUITE_P(Jp2, PluginSuite, testing::Values(jp2Traits()));
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
    for (const char* options : {"", "-t 64,50", "-t 64,50 -T 10,20 -d 30,40", "-d 33,7",
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
    const zelSize page(pixels.width, 100, 1, 3);
    createFrom("b.jp2", pixels, zelRGB, zelInterleaved, zelUnknownCompression, &page);
    run("opj_decompress -i b.jp2 -o b.ppm >/dev/null");
    EXPECT_TRUE(read("b.ppm") == pixels);
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
