#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

#include <zel/zelColormap.h>

#include <cmath>
#include <cstdlib>

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Gif, CorpusSuite, testing::Values(CorpusFolder{"gif"}));

class Gif : public FileScene {
protected:
    // The image in hand as it is seen: red, green, blue and alpha, all 0 where that is 0.
    static std::string seen(zelFile* file) {
        const Pixels pixels = readPixels(file);
        const zelColormap* map = nullptr;
        EXPECT_EQ(file->getColormap(map) == zelOKAY, file->getColorModel() == zelRGBPalette);
        const double factor = pixels.type == zelBit ? 255 : 1;
        const auto valueOf = [&](int x, int y, int c) -> double {
            if (map && c < map->getNumChans())
                return map->getVal(pixels.at(x, y, 0), c);
            if (c == 3 && pixels.channels == 1)
                return 255;
            return factor * pixels.at(x, y, pixels.channels == 1 ? 0 : c);
        };
        std::string bytes;
        for (int y = 0; y < pixels.height; y++)
            for (int x = 0; x < pixels.width; x++)
                for (int c = 0; c < 4; c++)
                    bytes += asByte(valueOf(x, y, c));
        return withoutHidden(bytes);
    }
    static char asByte(double value) { return static_cast<char>(std::lround(value)); }
    static std::string withoutHidden(std::string bytes) {
        for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4)
            if (bytes[i + 3] == 0)
                bytes.replace(i, 4, 4, '\0');
        return bytes;
    }
    // Holds all images against another program's, forwards and then backwards.
    void expectAsElsewhere(const std::string& name) const {
        SCOPED_TRACE(name);
        run("convert-im6.q16 '" + name + "' -coalesce -depth 8 rgba:expected");
        const std::string expected = withoutHidden(content("expected"));
        zelFile* const file = zelFile::open(name.c_str(), 0);
        ASSERT_NE(file, nullptr);
        const int count = file->getNumImgs();
        const std::size_t bytes = expected.size() / static_cast<std::size_t>(count);
        for (int step = 0; step < 2 * count; step++) {
            const int i = step < count ? step : 2 * count - 1 - step;
            ASSERT_EQ(file->setCurrentImg(i), zelOKAY);
            EXPECT_TRUE(seen(file) == expected.substr(static_cast<std::size_t>(i) * bytes, bytes))
                << "image " << i;
        }
        EXPECT_EQ(file->close(0), zelOKAY);
    }
};

TEST_F(Gif, ComposesFramesAsOtherProgramsDo) {
    run("convert-im6.q16 rose: -colors 200 r.gif && "
        "convert-im6.q16 -dispose none r.gif -dispose previous -page +5+30 r.gif "
        "-dispose background -page -20-9 r.gif -dispose none -page +50+3 '(' -size 12x20 xc:none "
        "-fill red -draw 'circle 5,9 5,2' ')' -page +0+0 r.gif -page +2+2 -size 3x3 xc:blue "
        "a.gif && convert-im6.q16 rose: -colors 31 -interlace GIF i.gif");
    expectAsElsewhere(path("a.gif"));
    expectAsElsewhere(path("i.gif"));
    // The other program gives a first frame that leaves pixels out the background colour there, if
    // it has no transparency of its own.
    for (const ManifestRow& row : manifestRows("gif"))
        if (const std::string& file = row.at("file");
            row.at("expectation") == "decode" && file.find("out-of-bounds") == std::string::npos &&
            file.find("small-frame") == std::string::npos)
            expectAsElsewhere(std::getenv("ZEL_CORPUS") + ("/" + file));
}

TEST_F(Gif, WritesImagesThatOtherProgramsSee) {
    const zelSize size(60, 50, 1, 1);
    zelFile* file = create("a.gif", zelFileConfig(&size));
    ASSERT_NE(file, nullptr);
    zelColormap map(4, zelUChar, 0, 9);
    for (int i = 0; i < 10; i++)
        for (int c = 0; c < 4; c++)
            map.setVal(c < 3 ? i * 25 + c : i == 7 ? 0 : 255, i, c);
    Pixels pixels(zelUChar, 60, 50, 1);
    std::vector<std::string> images;
    for (int i = 0; i < 3; i++) {
        if (i > 0) {
            zelFileConfig next(&size);
            ASSERT_EQ(file->appendImg(nullptr, &next), zelOKAY);
            map.setVal(i, 3, 0);
        } else {
            EXPECT_EQ(file->setTag(1, "three of them"), zelOKAY);
            EXPECT_EQ(file->setTag(3, 5), zelOKAY);
        }
        EXPECT_EQ(file->setColormap(&map), zelOKAY);
        EXPECT_EQ(file->setTag(2, 400 + 10 * i), zelOKAY);
        std::string seenImage;
        for (int at = 0; at < 3000; at++) {
            const int index = (at * 7 + at / 60 + i) % 10;
            pixels.set(at % 60, at / 60, 0, index);
            for (int c = 0; c < 4; c++)
                seenImage += asByte(map.getVal(index, c));
        }
        images.push_back(withoutHidden(seenImage));
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
    }
    const zelSize other(61, 50, 1, 1);
    zelFileConfig wider(&other);
    EXPECT_EQ(file->appendImg(nullptr, &wider), zelUNSUPPORTEDBYFORMAT);
    EXPECT_EQ(file->close(0), zelOKAY);

    expectAsElsewhere(path("a.gif"));
    EXPECT_EQ(output("convert-im6.q16 a.gif -format '%T %c\\n' info:"),
              "40 three of them\n41 \n42 \n");
    file = open("a.gif:2");
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(seen(file) == images[2]);
    int duration = 0, loops = 0;
    EXPECT_EQ(file->getTag(2, &duration), zelOKAY);
    EXPECT_EQ(file->getTag(3, &loops), zelOKAY);
    EXPECT_EQ(duration, 420);
    EXPECT_EQ(loops, 5);
    EXPECT_NE(content("a.gif").find(std::string("NETSCAPE2.0\3\1\4\0\0", 16)), std::string::npos)
        << "shown four times again";
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(Gif, MixesBitsGreysAndPalettes) {
    const zelSize size(19, 11, 1, 1);
    const zelDataType types[] = {zelBit, zelUChar, zelBit, zelUChar};
    const zelColorModel models[] = {zelLuminance, zelLuminance, zelRGBPalette, zelRGBPalette};
    // Entries 1, 2 and 3 are transparent to some part, 2 the most.
    zelColormap map(4, zelUChar, 0, 3);
    for (int i = 0; i < 4; i++)
        for (int c = 0; c < 4; c++)
            map.setVal(c < 3 ? 90 * i + c : (i - 2) * (i - 2) * 127, i, c);
    std::vector<Pixels> expected;
    zelFile* file = nullptr;
    for (int i = 0; i < 4; i++) {
        zelFileConfig config(&size, types[i], zelInterleaved, models[i]);
        if (i == 0)
            file = create("m.gif", config);
        else
            EXPECT_EQ(file->appendImg(nullptr, &config), zelOKAY);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->setColormap(&map) == zelOKAY, models[i] == zelRGBPalette);
        Pixels pixels = Pixels::pattern(types[i], 19, 11, 1, 3);
        expected.push_back(pixels);
        // Of the entries that are not seen, the least visible one stands for all.
        for (std::size_t at = 0; i == 3 && at < pixels.bytes.size(); at++) {
            pixels.bytes[at] &= 3;
            expected.back().bytes[at] = pixels.bytes[at] == 0 ? 0 : 2;
        }
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
    }
    EXPECT_EQ(file->close(0), zelOKAY);

    expectAsElsewhere(path("m.gif"));
    file = open("m.gif");
    ASSERT_NE(file, nullptr);
    for (int i = 0; i < 4; i++) {
        ASSERT_EQ(file->setCurrentImg(i), zelOKAY);
        EXPECT_EQ(file->getDataType(), types[i]);
        EXPECT_EQ(file->getColorModel(), models[i]);
        EXPECT_TRUE(readPixels(file) == expected[static_cast<std::size_t>(i)]) << i;
    }
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(Gif, JoinsCommentsAndBoundsThem) {
    run("convert-im6.q16 rose: -colors 31 s.gif");
    const std::string plain = content("s.gif");
    const std::size_t head = 13 + 32 * 3;
    const std::string part = std::string(1, '\xff') + std::string(255, 'x');
    std::string longOne = "!\xfe";
    for (int i = 0; i < 5000; i++)
        longOne += part;
    const std::string extensions[] = {std::string("!\xfe\3one\0!\xfe\3two\0", 14), longOne + '\0'};
    const std::string expected[] = {"one\ntwo", std::string(1 << 20, 'x')};
    for (int i = 0; i < 2; i++) {
        write("c.gif", plain.substr(0, head) + extensions[i] + plain.substr(head));
        zelFile* const file = open("c.gif");
        ASSERT_NE(file, nullptr);
        char* comment = nullptr;
        EXPECT_EQ(file->getTag(1, &comment), zelOKAY);
        EXPECT_TRUE(comment && comment == expected[i]);
        EXPECT_TRUE(read("c.gif") == read("s.gif"));
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(Gif, NoticesMissingPixels) {
    run("convert-im6.q16 rose: -colors 31 s.gif && convert-im6.q16 s.gif -interlace GIF i.gif");
    for (const std::string name : {"s.gif", "i.gif"}) {
        const std::string whole = content(name);
        for (std::size_t length = 0; length + 1 < whole.size(); length += 13) {
            write("cut.gif", whole.substr(0, length));
            EXPECT_FALSE(statusOfReading("cut.gif") == zelOKAY) << name << " of " << length;
        }
        write("cut.gif", whole.substr(0, whole.size() - 1));
        EXPECT_EQ(statusOfReading("cut.gif"), zelOKAY);
        // The frame's size, in a file that cannot hold so many pixels.
        std::string bomb = whole;
        bomb.replace(6, 4, 4, '\xff');
        bomb.replace(bomb.find(std::string(",\0\0\0\0", 5)) + 5, 4, 4, '\xff');
        write("bomb.gif", bomb);
        EXPECT_EQ(statusOfReading("bomb.gif"), zelPREMATUREEOF);
    }
}

} // namespace

} // namespace zel::test
