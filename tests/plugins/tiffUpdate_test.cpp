// New TIFF files written in parts, and existing ones changed in place.

#include "plugins/tiffScene.h"

#include "support/childProcess.h"

#include <zel/zelColormap.h>
#include <zel/zelFormat.h>
#include <zel/zelTag.h>

#include <cstring>
#include <fstream>

namespace zel::test {

namespace {

class TiffUpdate : public TiffScene {
protected:
    zelFileConfig config(int width, int height, int channels, zelDataType type = zelUChar,
                         zelOrder order = zelInterleaved, zelCompression compression = zelLZW,
                         zelColorModel cm = zelColorModel(0)) const {
        const zelSize size(width, height, 1, channels);
        return zelFileConfig(&size, type, order, cm, zelUpperLeftOrigin, compression);
    }

    zelTagDescription* description(zelFile* file, const std::string& name) const {
        int count = 0;
        zelTagDescription* const all = file->getFormat()->getTagDescriptions(count);
        for (int i = 0; i < count; i++)
            if (all[i].name == name)
                return &all[i];
        ADD_FAILURE() << "no tag " << name;
        return nullptr;
    }

    zelStatus setText(zelFile* file, const std::string& name, const char* text) const {
        zelTag tag(description(file, name));
        EXPECT_EQ(tag.decode(text), zelOKAY);
        return tag.write(file);
    }

    std::string getText(zelFile* file, const std::string& name) const {
        zelTag tag(description(file, name));
        char text[500] = "";
        return tag.read(file) == zelOKAY && tag.encode(text) == zelOKAY ? text : "(none)";
    }
};

TEST_F(TiffUpdate, FillsTilesInAnyOrderAndTheRestWithZeros) {
    for (const zelCompression compression : {zelNoCompression, zelLZW, zelZIP})
        for (const zelOrder order : {zelInterleaved, zelSeparate}) {
            SCOPED_TRACE(compression * 10 + order);
            zelFileConfig wish = config(100, 90, 3, zelUShort, order, compression);
            wish.setPageDimensions(zelSize(32, 16, 1, order == zelSeparate ? 1 : 3));
            zelFile* const file = create("a.tif", wish);
            ASSERT_NE(file, nullptr);
            Pixels expected(zelUShort, 100, 90, 3);
            const int places[][4] = {
                {70, 60, 30, 30}, {3, 2, 5, 7}, {20, 10, 40, 9}, {71, 0, 1, 90}};
            for (const auto& [x, y, w, h] : places) {
                const Pixels part = Pixels::pattern(zelUShort, w, h, 3, static_cast<unsigned>(x));
                EXPECT_EQ(writePixels(file, part, x, y), zelOKAY);
                expected.paste(part, x, y);
                EXPECT_TRUE(readPixels(file) == expected);
            }
            // One channel alone leaves the others as they are.
            Pixels green = Pixels::pattern(zelUShort, 100, 90, 1, 5);
            const zelConfig one(zelUShort, zelInterleaved, 1, nullptr, 1, zelUpperLeftOrigin);
            EXPECT_EQ(file->setTile(0, 0, 0, 50, 90, 1, green.cut(0, 0, 50, 90).bytes.data(), &one),
                      zelOKAY);
            for (int y = 0; y < 90; y++)
                for (int x = 0; x < 50; x++)
                    expected.set(x, y, 1, green.at(x, y, 0));
            EXPECT_EQ(file->close(0), zelOKAY);
            run("convert-im6.q16 a.tif -depth 16 b.ppm");
            EXPECT_TRUE(read("b.ppm") == expected);
        }
}

TEST_F(TiffUpdate, WritesPartsOfAPageWithoutGrowth) {
    zelFile* const file = create("a.tif", config(256, 256, 1));
    ASSERT_NE(file, nullptr);
    const Pixels image = Pixels::pattern(zelUChar, 256, 256, 1, 3);
    for (int y = 0; y < 256; y++)
        EXPECT_EQ(writePixels(file, image.cut(0, y, 256, 1), 0, y), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_TRUE(read("a.tif") == image);
    run("tiffcp -c lzw -r 256 a.tif b.tif");
    EXPECT_LT(content("a.tif").size(), content("b.tif").size() + 1000);
}

TEST_F(TiffUpdate, StoresDepth) {
    const zelSize size(20, 18, 3, 1);
    const zelFileConfig wish(&size, zelUChar, zelInterleaved, zelLuminance, zelUpperLeftOrigin,
                             zelZIP);
    zelFile* file = create("z.tif", wish);
    ASSERT_NE(file, nullptr);
    std::vector<unsigned char> voxels(20 * 18 * 3);
    for (std::size_t i = 0; i < voxels.size(); i++)
        voxels[i] = static_cast<unsigned char>(i * 7 + i / 100);
    EXPECT_EQ(file->setTile(0, 0, 0, 20, 18, 3, voxels.data(), nullptr), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    file = open("z.tif");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getZsize(), 3);
    std::vector<unsigned char> slice(20 * 18);
    EXPECT_EQ(file->getTile(0, 0, 2, 20, 18, 1, slice.data(), nullptr), zelOKAY);
    EXPECT_EQ(std::memcmp(slice.data(), voxels.data() + 720, 360), 0);
    EXPECT_EQ(file->close(0), zelOKAY);
}

// The header is written first; nobody waits for the gigabytes behind it.
TEST_F(TiffUpdate, MakesBigFilesBigTiff) {
    const auto header = [&](zelDataType type, zelCompression compression, const char* arguments) {
        return runInChild([&, this]() -> std::string {
                   zelFile* const file =
                       create(std::string("big.tif") + arguments,
                              config(40000, 40000, 1, type, zelInterleaved, compression));
                   return file ? content("big.tif").substr(0, 3) : "none";
               })
            .text;
    };
    EXPECT_EQ(header(zelUChar, zelNoCompression, ""), "II*");
    EXPECT_EQ(header(zelUChar, zelLZW, ""), "II*");
    EXPECT_EQ(header(zelUShort, zelNoCompression, ""), "II*");
    EXPECT_EQ(header(zelUShort, zelZIP, ""), "II+");
    EXPECT_EQ(header(zelFloat, zelNoCompression, ""), "II+");
    EXPECT_EQ(header(zelBit, zelNoCompression, "%bigtiff"), "II+");
}

TEST_F(TiffUpdate, StoresColorMaps) {
    zelFile* const file =
        create("p.tif", config(4, 1, 1, zelUChar, zelInterleaved, zelNoCompression, zelRGBPalette));
    ASSERT_NE(file, nullptr);
    Pixels indexes(zelUChar, 4, 1, 1);
    for (int x = 0; x < 4; x++)
        indexes.set(x, 0, 0, x * 80);
    EXPECT_EQ(writePixels(file, indexes), zelOKAY);
    zelColormap map(3, zelUChar, 0, 255);
    for (int i = 0; i < 256; i++)
        for (int c = 0; c < 3; c++)
            map.setVal(c == 0 ? i : c == 1 ? 255 - i : 7, i, c);
    EXPECT_EQ(file->setColormap(&map), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    run("tifftopnm p.tif >p.ppm");
    EXPECT_EQ(numbers(read("p.ppm")),
              std::vector<double>({0, 255, 7, 80, 175, 7, 160, 95, 7, 240, 15, 7}));
}

TEST_F(TiffUpdate, ChangesOneImageOfSeveral) {
    run("for i in lr tb rectangle; do pgmramp -$i 40 30 | pamtotiff -none >$i.tif; done; "
        "tiffcp -c lzw -r 10 lr.tif tb.tif rectangle.tif all.tif");
    std::vector<Pixels> images = {read("lr.tif"), read("tb.tif"), read("rectangle.tif")};
    zelFile* file = open("all.tif", 2);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getNumImgs(), 3);
    EXPECT_EQ(file->setCurrentImg(1), zelOKAY);
    const Pixels part = Pixels::pattern(zelUChar, 15, 12, 1, 1);
    images[1].paste(part, 20, 5);
    EXPECT_EQ(writePixels(file, part, 20, 5), zelOKAY);
    EXPECT_EQ(setText(file, "ImageDescription", "the one in the middle"), zelOKAY);
    EXPECT_EQ(file->setStatMinMax(3, 99), zelOKAY);
    images.push_back(Pixels::pattern(zelUShort, 9, 9, 3, 2));
    zelFileConfig wish = config(9, 9, 3, zelUShort);
    EXPECT_EQ(file->appendImg(nullptr, &wish), zelOKAY);
    EXPECT_EQ(writePixels(file, images[3]), zelOKAY);
    EXPECT_EQ(file->setCurrentImg(0), zelOKAY);
    EXPECT_EQ(setText(file, "Artist", "someone"), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);

    run("tiffcp -c none all.tif plain.tif");
    for (const char* const name : {"all.tif", "plain.tif"})
        for (int i = 0; i < 4; i++)
            EXPECT_TRUE(read(name + (":" + std::to_string(i))) ==
                        images[static_cast<std::size_t>(i)])
                << name << ", image " << i;
    file = open("all.tif:1");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(getText(file, "ImageDescription"), "the one in the middle");
    double min = 0, max = 0;
    EXPECT_EQ(file->getStatMinMax(min, max), zelOKAY);
    EXPECT_EQ(min, 3);
    EXPECT_EQ(max, 99);
    EXPECT_EQ(file->setStatMinMax(1, 2), zelREADONLY);
    EXPECT_EQ(file->setCurrentImg(0), zelOKAY);
    EXPECT_EQ(getText(file, "Artist"), "someone");
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(TiffUpdate, ChangesFilesOfTheOtherByteOrder) {
    const Pixels image = Pixels::pattern(zelUShort, 50, 40, 3, 6);
    createFrom("a.tif", image, zelRGB, zelInterleaved, zelNoCompression);
    for (const char* const options :
         {"-r 1000", "-c zip:2 -r 8", "-t -w 16 -l 16", "-c packbits"}) {
        SCOPED_TRACE(options);
        run(std::string("tiffcp -B -f lsb2msb ") + options + " a.tif b.tif");
        zelFile* const file = open("b.tif", 2);
        ASSERT_NE(file, nullptr);
        Pixels expected = image;
        const Pixels part = Pixels::pattern(zelUShort, 31, 17, 3, 9);
        expected.paste(part, 11, 13);
        EXPECT_EQ(writePixels(file, part, 11, 13), zelOKAY);
        EXPECT_TRUE(readPixels(file) == expected);
        EXPECT_EQ(file->close(0), zelOKAY);
        run("tiffcp -c none -L -f msb2lsb b.tif c.tif");
        EXPECT_TRUE(read("c.tif") == expected);
    }
}

TEST_F(TiffUpdate, ChangesOneTileOfAJpegAlone) {
    run("ppmrainbow -width=64 -height=64 red green blue >a.ppm");
    const zelSize tiles(32, 32, 1, 3);
    createFrom("j.tif%quality=30", read("a.ppm"), zelRGB, zelInterleaved, zelJPEG, &tiles);
    const Pixels before = read("j.tif");
    zelFile* file = open("j.tif%quality=95", 2);
    ASSERT_NE(file, nullptr);
    Pixels grey(zelUChar, 32, 32, 3);
    for (auto& byte : grey.bytes)
        byte = 90;
    EXPECT_EQ(writePixels(file, grey, 32, 0), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    const Pixels after = read("j.tif");
    EXPECT_TRUE(after.cut(0, 0, 32, 64) == before.cut(0, 0, 32, 64));
    EXPECT_NEAR(after.at(50, 10, 0), 90, 3);
    run("convert-im6.q16 j.tif j.ppm");
    EXPECT_NEAR(read("j.ppm").at(50, 10, 2), 90, 3);

    // Others let all tiles share their tables, which fit one quality only.
    run("tiffcp -c jpeg:30 -t -w 32 -l 32 j.tif shared.tif");
    file = open("shared.tif", 2);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(writePixels(file, grey, 32, 0), zelUNSUPPORTEDBYFILE);
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(TiffUpdate, CarriesTags) {
    const std::pair<const char*, const char*> texts[] = {{"XResolution", "300"},
                                                         {"YResolution", "72.5"},
                                                         {"ResolutionUnit", "cent"},
                                                         {"Software", "a program, 1.0"},
                                                         {"DateTime", "2024:01:02 03:04:05"},
                                                         {"DocumentName", "a book"},
                                                         {"PageName", "a page"},
                                                         {"PageNumber", "4, 60000"},
                                                         {"Copyright", "nobody"},
                                                         {"MinSampleValue", "1"},
                                                         {"MaxSampleValue", "65000"},
                                                         {"SMaxSampleValue", "200"}};
    zelFile* file = create("a.tif", config(10, 10, 1, zelUChar, zelInterleaved, zelZIP));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(getText(file, "XResolution"), "(none)");
    EXPECT_EQ(writePixels(file, Pixels::pattern(zelUChar, 10, 10, 1, 1)), zelOKAY);
    for (const auto& [name, text] : texts)
        EXPECT_EQ(setText(file, name, text), zelOKAY) << name;
    EXPECT_EQ(file->setTag(description(file, "ResolutionUnit")->tag, 9), zelBADFIELDSET);
    EXPECT_EQ(setText(file, "PageNumber", "-1 70000"), zelBADFIELDSET);
    EXPECT_EQ(setText(file, "XResolution", "-1"), zelBADFIELDSET);
    EXPECT_EQ(file->setTag(1, 5), zelUNSUPPORTEDBYFORMAT);
    EXPECT_EQ(file->close(0), zelOKAY);

    const std::string info = output("tiffinfo a.tif");
    for (const char* const line :
         {"Resolution: 300, 72.5 pixels/cm", "Software: a program, 1.0",
          "DateTime: 2024:01:02 03:04:05", "DocumentName: a book", "PageName: a page",
          "Page Number: 4-60000", "Copyright: nobody", "Max Sample Value: 65000"})
        EXPECT_NE(info.find(line), std::string::npos) << line << " in\n" << info;

    run("tiffset -s 305 other a.tif");
    file = open("a.tif", 2);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(getText(file, "ResolutionUnit"), "centimeter");
    EXPECT_EQ(getText(file, "YResolution"), "72.5");
    EXPECT_EQ(getText(file, "PageNumber"), "4, 60000");
    EXPECT_EQ(getText(file, "SMaxSampleValue"), "200");
    EXPECT_EQ(getText(file, "Software"), "other");
    EXPECT_EQ(file->setTag(description(file, "Software")->tag, nullptr), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_EQ(output("tiffinfo a.tif").find("Software"), std::string::npos);
    EXPECT_TRUE(read("a.tif") == Pixels::pattern(zelUChar, 10, 10, 1, 1));
}

TEST_F(TiffUpdate, CarriesProfiles) {
    const std::string profile = "not a real profile, but bytes" + std::string(3000, '\7');
    zelFile* file = create("a.tif", config(30, 30, 3));
    ASSERT_NE(file, nullptr);
    const Pixels image = Pixels::pattern(zelUChar, 30, 30, 3, 1);
    EXPECT_EQ(writePixels(file, image), zelOKAY);
    EXPECT_EQ(file->setICCProfile(static_cast<int>(profile.size()), profile.data()), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    file = open("a.tif", 2);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(readPixels(file) == image);
    int size = 0;
    void* data = nullptr;
    ASSERT_EQ(file->getICCProfile(size, data), zelOKAY);
    EXPECT_EQ(std::string(static_cast<char*>(data), static_cast<std::size_t>(size)), profile);
    EXPECT_EQ(file->freeICCProfile(data), zelOKAY);
    EXPECT_EQ(file->setICCProfile(0, nullptr), zelOKAY);
    EXPECT_EQ(file->getICCProfile(size, data), zelBADFIELDGET);
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_EQ(output("tiffinfo a.tif").find("ICC"), std::string::npos);
}

TEST_F(TiffUpdate, ReadsLargeBlocksBehindTagsThatAreTooLong) {
    const std::string profile(4 << 20, 'p');
    const Pixels small = Pixels::pattern(zelUChar, 30, 30, 3, 1);
    const Pixels large = Pixels::pattern(zelUShort, 700, 700, 3, 2);
    const zelSize page(704, 704, 1, 3);
    createFrom("a.tif", small, zelRGB, zelInterleaved, zelLZW);
    createFrom("b.tif", large, zelRGB, zelInterleaved, zelLZW, &page);
    run("tiffcp a.tif b.tif both.tif");
    zelFile* file = open("both.tif", 2);
    ASSERT_NE(file, nullptr);
    for (const int image : {0, 1}) {
        ASSERT_EQ(file->setCurrentImg(image), zelOKAY);
        EXPECT_EQ(file->setICCProfile(static_cast<int>(profile.size()), profile.data()), zelOKAY);
    }
    EXPECT_EQ(file->close(0), zelOKAY);
    file = open("both.tif");
    ASSERT_NE(file, nullptr);
    int size = 0;
    void* data = nullptr;
    EXPECT_EQ(file->getICCProfile(size, data), zelBADFIELDGET);
    EXPECT_TRUE(readPixels(file) == small);
    ASSERT_EQ(file->setCurrentImg(1), zelOKAY);
    EXPECT_TRUE(readPixels(file) == large);
    ASSERT_EQ(file->setCurrentImg(0), zelOKAY);
    EXPECT_TRUE(readPixels(file) == small);
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

} // namespace zel::test
