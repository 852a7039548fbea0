#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>
#include <zel/zelTag.h>

#include <cmath>
#include <cstdint>

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Exr, CorpusSuite, testing::Values(CorpusFolder{"exr"}));

class Exr : public FileScene {
protected:
    // Numbers that half floats hold.
    static Pixels halves(int channels) {
        Pixels pixels(zelFloat, 150, 110, channels);
        for (int y = 0; y < pixels.height; y++)
            for (int x = 0; x < pixels.width; x++)
                for (int c = 0; c < channels; c++)
                    pixels.set(x, y, c, (x * 7 + y * 11 + c * 1000) % 2048 / 8. - 20);
        return pixels;
    }
    zelFile* create(const std::string& name, const Pixels& pixels, zelColorModel cm,
                    const zelSize* page = nullptr) const {
        const zelSize size(pixels.width, pixels.height, 1, pixels.channels);
        const zelFileConfig config(&size, pixels.type, zelOrder(0), cm, zelOrientation(0),
                                   zelCompression(0), page);
        return zelFile::create(path(name).c_str(), nullptr, &config, nullptr);
    }
    void expectPixels(const std::string& name, const Pixels& expected) const {
        SCOPED_TRACE(name);
        zelFile* const file = zelFile::open(path(name).c_str(), 0);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(readPixels(file) == expected);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
};

TEST_F(Exr, WritesWhatOtherProgramsReadAndReadsTheirTilesAndParts) {
    const Pixels pixels = halves(4);
    for (const char* method : {"", "%half", "%half%piz", "%half%rle", "%pxr24%half"}) {
        zelFile* const file = create(std::string("a.exr") + method, pixels, zelRGBA);
        ASSERT_NE(file, nullptr) << method;
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
        expectPixels("a.exr", pixels);
        const std::string header = output("exrheader a.exr");
        EXPECT_NE(header.find(*method ? "A, 16-bit floating-point" : "A, 32-bit floating-point"),
                  std::string::npos)
            << header;
    }
    run("exrmaketiled -m -t 32 16 a.exr t.exr && exrmultipart -combine "
        "-i a.exr t.exr -o m.exr -override 1 >/dev/null");
    expectPixels("t.exr", pixels);
    expectPixels("m.exr:0", pixels);
    expectPixels("m.exr:1", pixels);
    // One tile of 2^30 x 2^30 pixels in a small file.
    run("offset=$(grep -abo tiledesc t.exr | head -1 | cut -d: -f1) && "
        "printf '\\0\\0\\0\\100\\0\\0\\0\\100' | dd of=t.exr bs=1 conv=notrunc "
        "seek=$((offset + 13)) 2>/dev/null");
    EXPECT_EQ(zelFile::open(path("t.exr").c_str(), 0), nullptr);
}

TEST_F(Exr, WritesPagesThatAreTiles) {
    const Pixels pixels = halves(3);
    const zelSize page(32, 48, 1, 3);
    for (const char* method : {"", "%half%piz"}) {
        zelFile* const file = create(std::string("a.exr") + method, pixels, zelRGB, &page);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->setTag(30, -30), zelOKAY); // dataWindowX
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->setTag(30, 0), zelUNSUPPORTEDBYFORMAT);
        EXPECT_EQ(file->close(0), zelOKAY);
        expectPixels("a.exr", pixels);
        EXPECT_NE(output("exrheader a.exr").find("tile size 32 by 48 pixels"), std::string::npos);
        run("exrmaketiled -t 64 64 a.exr b.exr");
        expectPixels("b.exr", pixels);
    }
    const zelSize small(8, 8, 1, 3);
    EXPECT_EQ(create("a.exr", pixels, zelRGB, &small), nullptr);
}

TEST_F(Exr, WritesTilesOnceInRisingOrder) {
    Pixels pixels = halves(1);
    const zelSize page(32, 48, 1, 1);
    zelFile* file = create("a.exr", pixels, zelLuminance, &page);
    ASSERT_NE(file, nullptr);
    const auto put = [&](int x, int y, int w, int h) {
        return writePixels(file, pixels.cut(x, y, w, h), x, y);
    };
    EXPECT_EQ(put(40, 10, 5, 20), zelOKAY);
    EXPECT_EQ(put(50, 0, 14, 48), zelOKAY) << "the tile in hand";
    EXPECT_EQ(put(0, 0, 32, 48), zelUNSUPPORTEDBYFORMAT);
    EXPECT_EQ(put(128, 96, 22, 14), zelOKAY);
    EXPECT_EQ(put(40, 0, 2, 2), zelUNSUPPORTEDBYFILE) << "it would have to be read";
    EXPECT_EQ(file->close(0), zelOKAY);
    const auto isPut = [](int x, int y) {
        return (x >= 40 && x < 45 && y >= 10 && y < 30) || (x >= 50 && x < 64 && y < 48) ||
               (x >= 128 && y >= 96);
    };
    for (int y = 0; y < pixels.height; y++)
        for (int x = 0; x < pixels.width; x++)
            if (!isPut(x, y))
                pixels.set(x, y, 0, 0);
    expectPixels("a.exr", pixels);
}

template <typename... Numbers>
std::string bytesOf(Numbers... numbers) {
    std::string bytes;
    (bytes.append(reinterpret_cast<const char*>(&numbers), sizeof numbers), ...);
    return bytes;
}

std::string attribute(const std::string& name, const std::string& type, const std::string& value) {
    return name + '\0' + type + '\0' + bytesOf(static_cast<int>(value.size())) + value;
}

// Two pixels: one of two samples, the farther one first, and one of none.
std::string deepFile() {
    std::string channels;
    for (const char name : {'A', 'R', 'Z'})
        channels += std::string{name, '\0'} + bytesOf(2, 0, 1, 1); // floats
    std::string file = bytesOf(20000630, 0x802) + attribute("channels", "chlist", channels + '\0') +
                       attribute("compression", "compression", std::string(1, '\0')) +
                       attribute("dataWindow", "box2i", bytesOf(0, 0, 1, 0)) +
                       attribute("displayWindow", "box2i", bytesOf(0, 0, 1, 0)) +
                       attribute("lineOrder", "lineOrder", std::string(1, '\0')) +
                       attribute("pixelAspectRatio", "float", bytesOf(1.F)) +
                       attribute("screenWindowCenter", "v2f", bytesOf(0.F, 0.F)) +
                       attribute("screenWindowWidth", "float", bytesOf(1.F)) +
                       attribute("type", "string", "deepscanline") +
                       attribute("version", "int", bytesOf(1)) +
                       attribute("chunkCount", "int", bytesOf(1)) + '\0';
    file += bytesOf(file.size() + 8);
    const std::string samples = bytesOf(.5F, .5F, .5F, .125F, 2.F, 1.F);
    return file + bytesOf(0, std::uint64_t{8}, samples.size(), samples.size(), 2, 2) + samples;
}

TEST_F(Exr, FlattensDeepPixels) {
    write("d.exr", deepFile());
    // Red: 0.125 and half of 0.5 behind it; the depth is that of the nearer one.
    EXPECT_EQ(numbers(read("d.exr")), (std::vector<double>{.375, .75, 1, 0, 0, 0}));
    std::string many = deepFile();
    // Far more samples than the file has bytes for.
    const std::string counts = bytesOf(0x7fffff00, 0x7fffff00);
    many.replace(many.size() - 24 - counts.size(), counts.size(), counts);
    write("m.exr", many);
    EXPECT_NE(statusOfReading("m.exr"), zelOKAY);
}

TEST_F(Exr, PlacesTheImageOnItsDisplayWindow) {
    const Pixels pixels = halves(1);
    zelFile* file = create("a.exr", pixels, zelLuminance);
    ASSERT_NE(file, nullptr);
    const auto tagOf = [&](const std::string& name) {
        int count = 0;
        zelTagDescription* const tags = file->getFormat()->getTagDescriptions(count);
        for (int i = 0; i < count; i++)
            if (name == tags[i].name)
                return tags[i].tag;
        return -1;
    };
    EXPECT_EQ(file->setTag(tagOf("dataWindowX"), -30), zelOKAY);
    EXPECT_EQ(file->setTag(tagOf("dataWindowY"), 7), zelOKAY);
    EXPECT_EQ(file->setTag(tagOf("displayWindowX"), 0), zelOKAY);
    EXPECT_EQ(file->setTag(tagOf("displayWindowWidth"), 64), zelOKAY);
    EXPECT_EQ(file->setTag(tagOf("owner"), "nobody"), zelOKAY);
    EXPECT_EQ(file->setTag(tagOf("channels"), "Z"), zelBADFIELDSET);
    EXPECT_EQ(writePixels(file, pixels), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    const std::string header = output("exrheader a.exr");
    for (const char* line : {"(-30 7) - (119 116)", "(0 7) - (63 116)", "\"nobody\""})
        EXPECT_NE(header.find(line), std::string::npos) << line << "\n" << header;
    expectPixels("a.exr", pixels);
}

} // namespace

} // namespace zel::test
