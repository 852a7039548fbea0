#include "plugins/corpusSuite.h"
#include "plugins/fileScene.h"
#include "plugins/pluginSuite.h"

namespace zel::test {

namespace {

const std::vector<zelOrientation> allOrientations = {
    zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin,
    zelLeftUpperOrigin, zelRightUpperOrigin, zelRightLowerOrigin, zelLeftLowerOrigin};

PluginTraits jpegTraits() {
    PluginTraits traits;
    traits.format = "JPEG";
    traits.randomAccessWrite = false;
    Combo kind;
    kind.suffix = ".jpg";
    kind.compression = zelJPEG;
    kind.tolerance = 4;
    const auto add = [&](zelColorModel cm, int channels, const char* arguments,
                         const std::vector<zelOrientation>& orientations = {zelUpperLeftOrigin}) {
        kind.colorModel = cm;
        kind.channels = channels;
        kind.arguments = arguments;
        const std::vector<Combo> more =
            makeCombos(kind, {zelUChar}, {zelInterleaved}, orientations);
        traits.combos.insert(traits.combos.end(), more.begin(), more.end());
    };
    add(zelRGB, 3, "%quality=100%subsampling=444", allOrientations);
    add(zelRGB, 3, "%quality=98%progressive");
    add(zelLuminance, 1, "%quality=100%optimize");
    add(zelCMYK, 4, "%quality=100%subsampling=422");
    return traits;
}

INSTANTIATE_TEST_SUITE_P(Jpeg, PluginSuite, testing::Values(jpegTraits()));
INSTANTIATE_TEST_SUITE_P(Jpeg, CorpusSuite, testing::Values(CorpusFolder{"jpeg"}));

} // namespace

} // namespace zel::test
