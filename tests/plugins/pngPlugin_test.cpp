#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"
#include "plugins/pluginSuite.h"

namespace zel::test {

namespace {

const std::vector<zelOrientation> allOrientations = {
    zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin,
    zelLeftUpperOrigin, zelRightUpperOrigin, zelRightLowerOrigin, zelLeftLowerOrigin};

PluginTraits pngTraits() {
    PluginTraits traits;
    traits.format = "PNG";
    traits.randomAccessWrite = false;
    Combo kind;
    kind.suffix = ".png";
    kind.compression = zelZIP;
    const auto add = [&](zelColorModel cm, int channels, const char* arguments,
                         const std::vector<zelDataType>& types,
                         const std::vector<zelOrientation>& orientations = {zelUpperLeftOrigin}) {
        kind.colorModel = cm;
        kind.channels = channels;
        kind.arguments = arguments;
        const std::vector<Combo> more = makeCombos(kind, types, {zelInterleaved}, orientations);
        traits.combos.insert(traits.combos.end(), more.begin(), more.end());
    };
    add(zelRGB, 3, "", {zelUChar}, allOrientations);
    add(zelLuminance, 1, "%level=9%filter=paeth", {zelBit, zelUChar, zelUShort});
    add(zelLuminanceAlpha, 2, "%level=0", {zelUChar, zelUShort});
    add(zelRGB, 3, "%filter=none", {zelUShort});
    add(zelRGBA, 4, "%filter=sub", {zelUChar, zelUShort});
    add(zelRGBPalette, 1, "", {zelBit, zelUChar});
    return traits;
}

INSTANTIATE_TEST_SUITE_P(Png, PluginSuite, testing::Values(pngTraits()));
INSTANTIATE_TEST_SUITE_P(Png, CorpusSuite, testing::Values(CorpusFolder{"png"}));

} // namespace

} // namespace zel::test
