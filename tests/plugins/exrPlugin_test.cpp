#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"
#include "plugins/pluginSuite.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>
#include <zel/zelTag.h>

#include <cmath>

namespace zel::test {

namespace {

PluginTraits exrTraits() {
    PluginTraits traits;
    traits.format = "EXR";
    traits.randomAccessWrite = false;
    Combo kind;
    kind.suffix = ".exr";
    const auto add = [&](zelDataType type, zelColorModel cm, int channels,
                         zelCompression compression, const char* arguments) {
        kind.type = type;
        kind.colorModel = cm;
        kind.channels = channels;
        kind.compression = compression;
        kind.arguments = arguments;
        traits.combos.push_back(kind);
    };
    add(zelFloat, zelLuminance, 1, zelNoCompression, "");
    add(zelFloat, zelRGB, 3, zelZIP, "");
    add(zelFloat, zelLuminanceAlpha, 2, zelZIP, "%zips");
    add(zelUInt, zelRGBA, 4, zelZIP, "");
    add(zelUInt, zelMultiSpectral, 12, zelNoCompression, "");
    return traits;
}

INSTANTIATE_TEST_SUITE_P(Exr, PluginSuite, testing::Values(exrTraits()));
INSTANTIATE_TEST_SUITE_P(Exr, CorpusSuite,
                         testing::Values(CorpusFolder{
                             "exr", {{"OpenImageIO__tinydeep.exr", "deep data"}}}));

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
    zelFile* create(const std::string& name, const Pixels& pixels, zelColorModel cm) const {
        const zelSize size(pixels.width, pixels.height, 1, pixels.channels);
        const zelFileConfig config(&size, pixels.type, zelOrder(0), cm);
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
