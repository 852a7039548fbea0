#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Jpeg, CorpusSuite, testing::Values(CorpusFolder{"jpeg"}));

class JpegExchange : public FileScene {
protected:
    // A picture of some colours and edges, as `picture.ppm`.
    Pixels picture() {
        Pixels pixels(zelUChar, 217, 143, 3);
        for (int y = 0; y < pixels.height; y++)
            for (int x = 0; x < pixels.width; x++)
                for (int c = 0; c < 3; c++)
                    pixels.set(x, y, c, (x * (c + 1) + y * 2) / 4 + (x / 40 + y / 30) % 2 * 60);
        createFrom("picture.ppm", pixels, zelRGB, zelInterleaved, zelNoCompression);
        return pixels;
    }
};

TEST_F(JpegExchange, DecodesAsDjpegDoes) {
    picture();
    for (const char* const arguments :
         {"-quality 80", "-sample 1x1", "-sample 2x1 -progressive", "-grayscale", "-sample 1x2",
          "-restart 2 -sample 4x1", "-arithmetic", "-rgb"}) {
        SCOPED_TRACE(arguments);
        run(std::string("cjpeg ") + arguments +
            " picture.ppm >other.jpg; djpeg other.jpg >other.pnm");
        const Pixels whole = read("other.pnm");
        EXPECT_TRUE(read("other.jpg") == whole);
    }
}

TEST_F(JpegExchange, SkipsRowsWithoutChangingOthers) {
    // Several bands, so that rows between them are passed over.
    run("ppmmake rgb:11/22/33 3001 900 | ppmpat -gingham -randomseed=3 3001 900 >large.ppm");
    for (const char* const arguments :
         {"-sample 2x2", "-sample 1x1", "-progressive", "-restart 1"}) {
        SCOPED_TRACE(arguments);
        run(std::string("cjpeg ") + arguments +
            " large.ppm >large.jpg; djpeg large.jpg >large.pnm");
        const Pixels whole = read("large.pnm");
        zelFile* const file = open("large.jpg");
        ASSERT_NE(file, nullptr);
        for (const int y : {400, 7, 890, 890, 100, 230, 880, 0}) {
            Pixels part(zelUChar, 50, 9, 3);
            EXPECT_EQ(readPixels(file, part, 2000, y), zelOKAY);
            EXPECT_TRUE(part == whole.cut(2000, y, 50, 9)) << "row " << y;
        }
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(JpegExchange, EncodesAsCjpegDoes) {
    const Pixels pixels = picture();
    const char* const pairs[][2] = {
        {"", "-quality 90"},
        {"%quality=75%subsampling=422", "-quality 75 -sample 2x1"},
        {"%progressive", "-quality 90 -progressive"},
        {"%optimize%subsampling=444", "-quality 90 -optimize -sample 1x1"}};
    for (const auto& [own, theirs] : pairs) {
        SCOPED_TRACE(own);
        createFrom(std::string("own.jpg") + own, pixels, zelRGB, zelInterleaved, zelJPEG);
        run(std::string("cjpeg ") + theirs + " picture.ppm >other.jpg");
        EXPECT_EQ(content("own.jpg"), content("other.jpg"));
    }
}

TEST_F(JpegExchange, TurnsInvertedInksRound) {
    // Three inks and black, by another program; it writes them inverted, as is usual.
    run("convert-im6.q16 -size 16x16 xc:'cmyk(250,30,60,10)' -colorspace CMYK -quality 100 "
        "ink.jpg");
    const Pixels read = FileScene::read("ink.jpg");
    ASSERT_EQ(read.channels, 4);
    const double inks[] = {250, 30, 60, 10};
    for (int c = 0; c < 4; c++)
        EXPECT_NEAR(read.at(8, 8, c), inks[c], 2);
    createFrom("own.jpg", read, zelCMYK, zelInterleaved, zelJPEG);
    run("convert-im6.q16 own.jpg -depth 8 cmyk:raw");
    const std::string raw = content("raw");
    ASSERT_EQ(raw.size(), 16u * 16 * 4);
    for (unsigned c = 0; c < 4; c++)
        EXPECT_NEAR(static_cast<unsigned char>(raw[c]), inks[c], 4);
}

TEST_F(JpegExchange, KeepsWhatDoesNotFitInItsUsualPlace) {
    const zelSize size(8, 8, 1, 4);
    zelFile* file = create(
        "ink.jpg", zelFileConfig(&size, zelUChar, zelInterleaved, zelCMYK, zelRightUpperOrigin));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setTag(282, 300.0), zelOKAY);
    EXPECT_EQ(file->setTag(283, 150.0), zelOKAY);
    EXPECT_EQ(file->setTag(315, "somebody"), zelOKAY);
    EXPECT_EQ(file->setTag(270, std::string(70000, 'x').c_str()), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_EQ(output("identify-im6.q16 -format '%[EXIF:XResolution] %[EXIF:YResolution] "
                     "%[EXIF:Orientation] %[EXIF:Artist]' ink.jpg"),
              "300/1 150/1 6 somebody");
}

// A segment of a profile: number and count of its parts, and their bytes.
std::string profilePart(int number, int count, const std::string& bytes) {
    const std::string body = std::string("ICC_PROFILE\0", 12) + static_cast<char>(number) +
                             static_cast<char>(count) + bytes;
    const auto length = static_cast<int>(body.size()) + 2;
    return std::string("\xff\xe2") + static_cast<char>(length >> 8) + static_cast<char>(length) +
           body;
}

TEST_F(JpegExchange, JoinsTheSegmentsOfAProfile) {
    run("ppmmake red 40 30 | cjpeg >plain.jpg");
    const std::string plain = content("plain.jpg");
    const std::string a(65000, 'a'), b(65000, 'b'), c = "c";
    std::string parts;
    for (int i = 1; i <= 60; i++)
        parts += profilePart(i, 60, a);
    const struct {
        std::string segments, profile;
    } cases[] = {
        {profilePart(2, 3, b) + profilePart(3, 3, c) + profilePart(1, 3, a), a + b + c},
        {profilePart(1, 2, a), ""},                        // a part is missing
        {profilePart(1, 2, a) + profilePart(1, 2, b), ""}, // one comes twice
        {profilePart(1, 2, a) + profilePart(2, 3, b), ""}, // the counts differ
        {profilePart(0, 1, a) + profilePart(1, 1, b), ""}, // a number is none
        {profilePart(1, 0, a), ""},
        {parts, ""}, // more than is taken
    };
    for (const auto& [segments, profile] : cases) {
        write("icc.jpg", plain.substr(0, 2) + segments + plain.substr(2));
        zelFile* const file = open("icc.jpg");
        ASSERT_NE(file, nullptr);
        int bytes = 0;
        void* data = nullptr;
        const zelStatus status = file->getICCProfile(bytes, data);
        EXPECT_EQ(status == zelOKAY, !profile.empty());
        if (status == zelOKAY) {
            EXPECT_TRUE(std::string(static_cast<char*>(data), static_cast<std::size_t>(bytes)) ==
                        profile);
            EXPECT_EQ(file->freeICCProfile(data), zelOKAY);
        }
        EXPECT_EQ(file->close(0), zelOKAY);
        EXPECT_TRUE(read("icc.jpg") == read("plain.jpg"));
    }
}

TEST_F(JpegExchange, ReadsExifOfEitherByteOrder) {
    run("ppmmake red 4 3 | cjpeg >plain.jpg");
    const std::string plain = content("plain.jpg");
    // Orientation 6, and "ZEL" as maker, within the entries; and an entry whose value lies outside.
    const std::string big("Exif\0\0MM\0*\0\0\0\x08\0\x03"
                          "\x01\x0f\0\x02\0\0\0\x04ZEL\0"
                          "\x01\x10\0\x02\0\0\xff\xff\0\0\0\x08"
                          "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"
                          "\0\0\0\0",
                          56);
    const std::string little("Exif\0\0II*\0\x08\0\0\0\x03\0"
                             "\x0f\x01\x02\0\x04\0\0\0ZEL\0"
                             "\x10\x01\x02\0\xff\xff\0\0\x08\0\0\0"
                             "\x12\x01\x03\0\x01\0\0\0\x06\0\0\0"
                             "\0\0\0\0",
                             56);
    for (const std::string& exif : {big, little}) {
        const std::string marker("\xff\xe1\0\x3a", 4);
        write("exif.jpg", plain.substr(0, 2) + marker + exif + plain.substr(2));
        zelFile* const file = open("exif.jpg");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getOrientation(), zelRightUpperOrigin);
        char* maker = nullptr;
        EXPECT_EQ(file->getTag(271, &maker), zelOKAY);
        EXPECT_STREQ(maker, "ZEL");
        EXPECT_EQ(file->getTag(272, &maker), zelBADFIELDGET);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

} // namespace

} // namespace zel::test
