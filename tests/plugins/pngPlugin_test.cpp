#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"
#include "support/childProcess.h"

#include <zel/zelColormap.h>
#include <zel/zelFormat.h>
#include <zel/zelTag.h>

#include <algorithm>

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Png, CorpusSuite, testing::Values(CorpusFolder{"png"}));

class PngExchange : public FileScene {
protected:
    // A picture that PNM holds too, as `picture.pam`.
    Pixels picture(zelDataType type, int channels) {
        const Pixels pixels = Pixels::pattern(type, 61, 43, channels, 5);
        createFrom("picture.pam", pixels, zelColorModelFromChans(channels), zelInterleaved,
                   zelNoCompression);
        return pixels;
    }
};

struct Kind {
    zelDataType type;
    int channels;
};
constexpr Kind kinds[] = {{zelBit, 1},    {zelUChar, 1},  {zelUShort, 1},
                          {zelUChar, 2},  {zelUShort, 2}, {zelUChar, 3},
                          {zelUShort, 3}, {zelUChar, 4},  {zelUShort, 4}};

TEST_F(PngExchange, ReadsWhatOthersWrite) {
    for (const Kind kind : kinds)
        for (const char* const interlace : {"", "-interlace PNG"}) {
            SCOPED_TRACE(std::to_string(kind.type) + " x " + std::to_string(kind.channels) +
                         interlace);
            const Pixels pixels = picture(kind.type, kind.channels);
            const std::string alpha = kind.channels % 2 == 0 ? "" : " -alpha off";
            const int colorType = kind.channels == 1   ? 0
                                  : kind.channels == 2 ? 4
                                  : kind.channels == 3 ? 2
                                                       : 6;
            const int bits = kind.type == zelBit ? 1 : kind.type == zelUChar ? 8 : 16;
            run("convert-im6.q16 picture.pam" + alpha + " " + interlace +
                " -define png:color-type=" + std::to_string(colorType) +
                " -define png:bit-depth=" + std::to_string(bits) + " other.png");
            const Pixels got = read("other.png");
            EXPECT_EQ(got.type, kind.type);
            EXPECT_TRUE(got == pixels);
        }
}

TEST_F(PngExchange, IsReadByOthers) {
    for (const Kind kind : kinds) {
        SCOPED_TRACE(std::to_string(kind.type) + " x " + std::to_string(kind.channels));
        const Pixels pixels = picture(kind.type, kind.channels);
        createFrom("own.png", pixels, zelColorModelFromChans(kind.channels), zelInterleaved,
                   zelZIP);
        // A bitmap of netpbm has 1 for black.
        if (kind.type == zelBit)
            run("pngtopnm own.png | pnminvert >other.pam");
        else if (kind.channels % 2 != 0)
            run("pngtopnm own.png >other.pam");
        else
            run("pngtopam -alphapam own.png >other.pam");
        EXPECT_TRUE(read("other.pam") == pixels);
    }
}

TEST_F(PngExchange, KeepsPalettesWithTheirAlpha) {
    const Pixels indexes = Pixels::pattern(zelUChar, 20, 10, 1, 3);
    const zelSize size(20, 10, 1, 1);
    zelFile* file =
        create("own.png", zelFileConfig(&size, zelUChar, zelInterleaved, zelRGBPalette));
    ASSERT_NE(file, nullptr);
    zelColormap map(4, zelUChar, 0, 255);
    for (int i = 0; i < 256; i++)
        for (int c = 0; c < 4; c++)
            map.setVal((i * (c + 3) + 40 * c) % 256, i, c);
    EXPECT_EQ(file->setColormap(&map), zelOKAY);
    EXPECT_EQ(writePixels(file, indexes), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);

    Pixels colors(zelUChar, 20, 10, 4);
    for (int y = 0; y < 10; y++)
        for (int x = 0; x < 20; x++)
            for (int c = 0; c < 4; c++)
                colors.set(x, y, c, map.getVal(indexes.at(x, y, 0), c));
    run("pngtopam -alphapam own.png >other.pam");
    EXPECT_TRUE(read("other.pam") == colors);

    file = open("own.png");
    ASSERT_NE(file, nullptr);
    const zelColormap* stored = nullptr;
    EXPECT_EQ(file->getColormap(stored), zelOKAY);
    EXPECT_TRUE(stored && !stored->isDiff(map));
    EXPECT_TRUE(readPixels(file) == indexes);
    EXPECT_EQ(file->close(0), zelOKAY);
}

// The file with what stands before its pixels behind them, but for the header.
std::string withLaterChunks(const std::string& file) {
    std::string pixels, others;
    std::size_t at = 8 + 25;
    while (file.compare(at + 4, 4, "IEND") != 0) {
        const std::size_t bytes = static_cast<unsigned char>(file[at + 2]) * 256u +
                                  static_cast<unsigned char>(file[at + 3]) + 12;
        (file.compare(at + 4, 4, "IDAT") == 0 ? pixels : others) += file.substr(at, bytes);
        at += bytes;
    }
    return file.substr(0, 8 + 25) + pixels + others + file.substr(at);
}

TEST_F(PngExchange, ReadsMetadataBehindThePixels) {
    const zelSize size(90, 70, 1, 3);
    zelFile* file = create(
        "own.png", zelFileConfig(&size, zelUChar, zelInterleaved, zelRGB, zelRightLowerOrigin));
    ASSERT_NE(file, nullptr);
    const std::string texts[] = {"Ger\xc3\xa4t", std::string(3000, 'x'), "plain"};
    const char* const names[] = {"Source", "Artist", "Comment"};
    int count = 0;
    const zelTagDescription* const known = file->getFormat()->getTagDescriptions(count);
    const auto tagOf = [&](const char* name) {
        return std::find_if(known, known + count,
                            [&](const zelTagDescription& description) {
                                return std::string(description.name) == name;
                            })
            ->tag;
    };
    for (int i = 0; i < 3; i++)
        EXPECT_EQ(file->setTag(tagOf(names[i]), texts[i].c_str()), zelOKAY);
    EXPECT_EQ(writePixels(file, Pixels::pattern(zelUChar, 90, 70, 3, 1)), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    run("ppmmake red 5 4 | pnmtopng -force -modtime '1999-02-03 04:05:06' >t.png");

    // Longer than what is read of texts, and before them; its check sum is not looked at.
    std::string longText = std::string("\x01\0\0\0tEXtComment\0", 16);
    longText.resize((1 << 24) + 12, 'x');
    const std::string own = content("own.png");
    write("long.png", own.substr(0, 33) + longText + own.substr(33));
    EXPECT_TRUE(read("long.png") == read("own.png"));
    file = open("long.png");
    ASSERT_NE(file, nullptr);
    char* comment = nullptr;
    EXPECT_EQ(file->getTag(tagOf("Comment"), &comment), zelOKAY);
    EXPECT_STREQ(comment, "plain");
    EXPECT_EQ(file->close(0), zelOKAY);

    write("later.png", withLaterChunks(content("own.png")));
    ASSERT_GT(content("later.png").find("eXIf"), content("later.png").find("IDAT"));
    file = open("later.png");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getOrientation(), zelRightLowerOrigin);
    char* text = nullptr;
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(file->getTag(tagOf(names[i]), &text), zelOKAY) << names[i];
        EXPECT_EQ(text, texts[i]);
    }
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_TRUE(read("later.png") == read("own.png"));
    write("later.png", withLaterChunks(content("t.png")));
    file = open("later.png");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getTag(306, &text), zelOKAY);
    EXPECT_STREQ(text, "1999:02:03 04:05:06");
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(PngExchange, KeepsInchesAndLatinTexts) {
    const zelSize size(4, 1, 1, 1);
    zelFile* file = create("own.png", zelFileConfig(&size, zelUChar));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setTag(282, 300.0), zelOKAY);
    EXPECT_EQ(file->setTag(283, 72.0), zelOKAY);
    EXPECT_EQ(file->setTag(315, "M\xfcller"), zelOKAY);
    EXPECT_EQ(file->setTag(270, "M\xc3\xbcller"), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_EQ(output("identify-im6.q16 -format '%[png:pHYs]' own.png"),
              "x_res=11811, y_res=2835, units=1");
    EXPECT_NE(content("own.png").find(std::string("tEXtAuthor\0M\xfcller", 17)), std::string::npos);
    file = open("own.png");
    ASSERT_NE(file, nullptr);
    float x = 0, y = 0;
    short unit = 0;
    EXPECT_EQ(file->getTag(282, &x), zelOKAY);
    EXPECT_EQ(file->getTag(283, &y), zelOKAY);
    EXPECT_EQ(file->getTag(296, &unit), zelOKAY);
    EXPECT_EQ(std::vector<float>({x, y, float(unit)}), std::vector<float>({300, 72, 2}));
    for (const int tag : {315, 270}) {
        char* text = nullptr;
        EXPECT_EQ(file->getTag(tag, &text), zelOKAY);
        EXPECT_STREQ(text, "M\xc3\xbcller");
    }
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(PngExchange, RefusesIndexesWithoutColour) {
    const zelSize size(4, 1, 1, 1);
    for (const int last : {1, 2, 3}) {
        zelFile* const file =
            create("own.png", zelFileConfig(&size, zelUChar, zelInterleaved, zelRGBPalette));
        ASSERT_NE(file, nullptr);
        const zelColormap map(3, zelUChar, 0, 2);
        EXPECT_EQ(file->setColormap(&map), zelOKAY);
        Pixels pixels(zelUChar, 4, 1, 1);
        pixels.set(3, 0, 0, last);
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->close(0) == zelBADPARAMS, last == 3) << last;
    }
}

TEST_F(PngExchange, TakesLittleMemoryForTextsThatInflate) {
#if defined(ZEL_SANITIZED)
    GTEST_SKIP() << "the sanitizer takes memory of its own";
#endif
    const zelSize size(9, 7, 1, 1);
    zelFile* const file = create("own.png", zelFileConfig(&size, zelUChar));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setTag(270, std::string(7 << 20, 'a').c_str()), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    std::string whole = content("own.png");
    const std::size_t at = whole.find("zTXt") - 4;
    const std::string chunk = whole.substr(at, whole.find("IDAT") - 4 - at);
    ASSERT_LT(chunk.size(), 20000u);
    for (int i = 0; i < 20; i++)
        whole.insert(at, chunk);
    for (const std::string& content : {whole, withLaterChunks(whole)}) {
        write("bomb.png", content);
        const ChildResult result = runInChild([this]() -> std::string {
            limitMemory(32u << 20);
            return std::to_string(statusOfReading("bomb.png"));
        });
        EXPECT_EQ(result.text, "0");
        EXPECT_GT(result.reports.size(), 0u);
    }
}

TEST_F(PngExchange, SpreadsSmallGreyAndKeepsSmallIndexes) {
    write("four.pgm", "P2 4 2 15  0 1 2 3  12 13 14 15\n");
    run("pnmtopng four.pgm >grey.png");
    EXPECT_EQ(numbers(read("grey.png")), (std::vector<double>{0, 17, 34, 51, 204, 221, 238, 255}));
    write("colors.ppm", "P3 3 1 255  9 8 7  200 10 10  9 8 7\n");
    run("pnmtopng colors.ppm >palette.png");
    zelFile* const file = open("palette.png");
    ASSERT_NE(file, nullptr);
    const zelColormap* map = nullptr;
    ASSERT_EQ(file->getColormap(map), zelOKAY);
    const Pixels indexes = readPixels(file);
    EXPECT_EQ(indexes.type, zelBit);
    EXPECT_EQ(map->getVal(indexes.at(0, 0, 0), 0), 9);
    EXPECT_EQ(map->getVal(indexes.at(1, 0, 0), 0), 200);
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

} // namespace zel::test
