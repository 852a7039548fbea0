#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

#include <algorithm>
#include <cmath>

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Webp, CorpusSuite, testing::Values(CorpusFolder{"webp"}));

class Webp : public FileScene {
protected:
    std::string bytesOf(const std::string& name) const {
        const Pixels pixels = read(name);
        return {pixels.bytes.begin(), pixels.bytes.end()};
    }
    // The pixels that another decoder gives, in 3 or 4 channels.
    std::string decoded(const std::string& name, int channels) const {
        run("dwebp -quiet " + name + (channels == 4 ? " -pam" : " -ppm") + " -o decoded");
        const std::string all = content("decoded");
        return all.substr(all.size() - static_cast<std::size_t>(301 * 203 * channels));
    }
};

constexpr const char* makePictures =
    "convert-im6.q16 rose: -resize '301x203!' a.png && "
    "convert-im6.q16 a.png -alpha on -channel A -fx 'i/w*(j>9)' b.png";

TEST_F(Webp, ReadsWhatAnotherDecoderReads) {
    run(makePictures);
    run("cwebp -quiet -q 60 a.png -o a.webp && cwebp -quiet -q 60 b.png -o b.webp && "
        "cwebp -quiet -lossless -exact b.png -o c.webp");
    EXPECT_TRUE(bytesOf("a.webp") == decoded("a.webp", 3));
    EXPECT_TRUE(bytesOf("b.webp") == decoded("b.webp", 4));
    EXPECT_TRUE(bytesOf("c.webp") == decoded("c.webp", 4));
}

TEST_F(Webp, LooksAtLargeFilesWhenTheirPixelsAreWanted) {
    run("convert-im6.q16 -size 1301x1203 xc:grey -seed 7 +noise random -depth 8 PNG24:n.png && "
        "cwebp -quiet -lossless -exact -z 0 n.png -o n.webp");
    const std::string whole = content("n.webp");
    ASSERT_GT(whole.size(), std::size_t{1} << 20);
    EXPECT_TRUE(bytesOf("n.webp") == bytesOf("n.png"));
    // A chunk for the canvas before the image, and the profile behind it.
    std::string head("VP8X\x0a\0\0\0\x20\0\0\0\x14\x05\0\xb2\x04\0", 18);
    const std::string profile("ICCP\x04\0\0\0zel!", 12);
    std::string body = "WEBP" + head + whole.substr(12) + profile;
    const auto framed = [](const std::string& content) {
        std::string riff = "RIFF";
        for (int shift = 0; shift < 32; shift += 8)
            riff += static_cast<char>(content.size() >> shift);
        return riff + content;
    };
    write("x.webp", framed(body));
    zelFile* const file = open("x.webp");
    ASSERT_NE(file, nullptr);
    int bytes = 0;
    void* data = nullptr;
    ASSERT_EQ(file->getICCProfile(bytes, data), zelOKAY);
    EXPECT_EQ(std::string(static_cast<char*>(data), static_cast<std::size_t>(bytes)), "zel!");
    EXPECT_EQ(file->freeICCProfile(data), zelOKAY);
    EXPECT_EQ(file->getCompression(), zelZIP);
    EXPECT_EQ(file->close(0), zelOKAY);
    // A chunk that says to be longer than the file, and a file that is shorter than it says.
    body[body.size() - 8] = 5;
    write("y.webp", framed(body));
    EXPECT_EQ(zelStatusMain(statusOfReading("y.webp")), zelCORRUPTED);
    write("z.webp", whole.substr(0, whole.size() - 2));
    EXPECT_EQ(zelStatusMain(statusOfReading("z.webp")), zelPREMATUREEOF);
}

TEST_F(Webp, WritesWhatAnotherDecoderReads) {
    run(makePictures);
    const Pixels pixels = read("b.png");
    const zelSize size(301, 203, 1, 4);
    const std::string profile("not quite a profile, but an odd number of bytes");
    for (const char* arguments : {"%quality=90", "%lossless%effort=0"}) {
        const zelFileConfig config(&size, zelUChar, zelInterleaved, zelRGBA, zelRightUpperOrigin);
        zelFile* file = create(std::string("b.webp") + arguments, config);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->setTag(315, "somebody"), zelOKAY);
        EXPECT_EQ(file->setICCProfile(static_cast<int>(profile.size()), profile.data()), zelOKAY);
        EXPECT_EQ(file->setTile(0, 0, 0, 301, 203, 1, pixels.bytes.data(), nullptr),
                  zelBADPARAMS); // the file's own frame is transposed
        const zelConfig upright(zelUChar, zelInterleaved, 4, nullptr, 0, zelUpperLeftOrigin);
        EXPECT_EQ(file->setTile(0, 0, 0, 301, 203, 1, pixels.bytes.data(), &upright), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);

        const bool lossless = arguments[1] == 'l';
        EXPECT_NE(output("webpinfo b.webp").find(lossless ? "Format: Lossless" : "Format: Lossy"),
                  std::string::npos);
        EXPECT_EQ(output("webpmux -get icc b.webp -o icc 2>/dev/null; cat icc"), profile);
        EXPECT_NE(output("webpmux -get exif b.webp -o exif 2>/dev/null; cat exif").find("somebody"),
                  std::string::npos);
        file = open("b.webp");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getOrientation(), zelRightUpperOrigin);
        EXPECT_EQ(file->getCompression(), lossless ? zelZIP : zelJPEG);
        EXPECT_EQ(file->close(0), zelOKAY);
        // Colours that nothing shows are free in a lossy file.
        double worst = 0;
        const Pixels back = read("b.webp");
        for (int y = 10; y < 203; y++)
            for (int x = lossless ? 0 : 60; x < 301; x++)
                for (int c = 0; c < 4; c++)
                    worst = std::max(worst, std::fabs(back.at(x, y, c) - pixels.at(x, y, c)));
        EXPECT_LE(worst, lossless ? 0 : 40);
    }
}

TEST_F(Webp, WritesAnimationsThatOtherProgramsTakeApart) {
    const zelSize size(41, 30, 1, 4);
    zelFileConfig config(&size, zelUChar, zelInterleaved, zelRGBA);
    zelFile* file = create("own.webp", config);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setTag(2, 3), zelOKAY);
    EXPECT_EQ(file->setTag(315, "somebody"), zelOKAY);
    std::vector<Pixels> images;
    for (int i = 0; i < 3; i++) {
        if (i > 0) {
            EXPECT_EQ(file->appendImg(nullptr, &config), zelOKAY);
        }
        EXPECT_EQ(file->setTag(1, 100 + i), zelOKAY);
        images.push_back(Pixels::pattern(zelUChar, 41, 30, 4, static_cast<unsigned>(i)));
        EXPECT_EQ(writePixels(file, images.back()), zelOKAY);
    }
    const zelSize other(40, 30, 1, 4);
    zelFileConfig narrower(&other);
    EXPECT_EQ(file->appendImg(nullptr, &narrower), zelUNSUPPORTEDBYFORMAT);
    const zelSize grey(41, 30, 1, 1); // too few channels for its colours
    zelFileConfig thin(&grey, zelUChar, zelInterleaved, zelRGB);
    EXPECT_EQ(file->appendImg(nullptr, &thin), zelUNSUPPORTEDBYFORMAT);
    EXPECT_EQ(file->close(0), zelOKAY);

    const std::string info = output("webpmux -info own.webp");
    for (const char* const part : {"Canvas size: 41 x 30", "Loop Count : 3", "Number of frames: 3",
                                   " 102 ", "EXIF metadata"})
        EXPECT_NE(info.find(part), std::string::npos) << part << " is not in\n" << info;
    for (int i = 0; i < 3; i++) {
        const std::string number = std::to_string(i);
        run("webpmux -get frame " + std::to_string(i + 1) +
            " own.webp -o f.webp 2>/dev/null && "
            "dwebp -quiet f.webp -pam -o f.pam");
        const auto& bytes = images[static_cast<std::size_t>(i)].bytes;
        const std::string all = content("f.pam");
        EXPECT_TRUE(all.substr(all.size() - bytes.size()) ==
                    std::string(bytes.begin(), bytes.end()));
        EXPECT_TRUE(read("own.webp:" + number) == images[static_cast<std::size_t>(i)]) << i;
    }
}

TEST_F(Webp, ComposesAnimations) {
    run("convert-im6.q16 rose: -colors 200 r.gif && convert-im6.q16 r.gif -crop 30x20+9+9 "
        "+repage s.gif && convert-im6.q16 -delay 7 -dispose none r.gif -dispose background -page "
        "+3+25 s.gif -dispose previous -page +38+5 s.gif -dispose none -page +50+3 '(' -size 12x20 "
        "xc:none -fill red -draw 'circle 5,9 5,2' ')' a.gif && gif2webp -quiet a.gif -o a.webp && "
        "convert-im6.q16 a.gif -coalesce -depth 8 rgba:expected");
    const std::string expected = content("expected");
    zelFile* const file = open("a.webp");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(file->getNumImgs(), 4);
    for (const std::size_t i : {0, 1, 2, 3, 1, 0}) {
        ASSERT_EQ(file->setCurrentImg(static_cast<int>(i)), zelOKAY);
        const Pixels pixels = readPixels(file);
        int differ = 0;
        for (std::size_t at = 0; at < std::size_t{70} * 46 * 4; at += 4) {
            const std::size_t there = i * 70 * 46 * 4 + at;
            const std::string seen(pixels.bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                   pixels.bytes.begin() + static_cast<std::ptrdiff_t>(at + 4));
            differ +=
                seen != expected.substr(there, 4) && (seen[3] != 0 || expected[there + 3] != 0);
        }
        EXPECT_EQ(differ, 0) << "image " << i;
        int duration = 0;
        EXPECT_EQ(file->getTag(1, &duration), zelOKAY);
        EXPECT_EQ(duration, 70);
    }
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

} // namespace zel::test
