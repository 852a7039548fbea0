// What TIFF shares with every other format. What only TIFF has is in the other tiff*_test.cpp.

#include "plugins/corpusSuite.h"
#include "plugins/pluginSuite.h"

namespace zel::test {

namespace {

const std::vector<zelDataType> allTypes = {zelBit,  zelUChar, zelChar,  zelUShort, zelShort,
                                           zelUInt, zelInt,   zelFloat, zelDouble};
const std::vector<zelOrientation> allOrientations = {
    zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin,
    zelLeftUpperOrigin, zelRightUpperOrigin, zelRightLowerOrigin, zelLeftLowerOrigin};

PluginTraits tiffTraits() {
    PluginTraits traits;
    traits.format = "TIFF";
    Combo kind;
    kind.suffix = ".tif";
    kind.severalImages = true;
    const auto add = [&](zelColorModel cm, int channels, zelCompression compression,
                         const char* arguments, const std::vector<zelDataType>& types,
                         const std::vector<zelOrder>& orders = {zelInterleaved},
                         const std::vector<zelOrientation>& orientations = {zelUpperLeftOrigin}) {
        kind.colorModel = cm;
        kind.channels = channels;
        kind.compression = compression;
        kind.arguments = arguments;
        const std::vector<Combo> more = makeCombos(kind, types, orders, orientations);
        traits.combos.insert(traits.combos.end(), more.begin(), more.end());
    };
    const std::vector<zelOrder> bothOrders = {zelInterleaved, zelSeparate};
    add(zelLuminance, 1, zelNoCompression, "", allTypes);
    add(zelRGB, 3, zelLZW, "", {zelUChar}, bothOrders, allOrientations);
    add(zelRGB, 3, zelZIP, "%predictor=2%level=9", {zelUShort}, bothOrders);
    add(zelRGB, 3, zelZIP, "%predictor=3", {zelFloat}, bothOrders);
    add(zelRGB, 3, zelLZW, "%predictor=2%bigtiff", {zelUInt, zelDouble});
    add(zelRGB, 3, zelNoCompression, "%bigtiff%rowsperstrip=3", {zelBit}, bothOrders);
    add(zelNegative, 1, zelCCITTFAX3, "", {zelBit});
    add(zelNegative, 1, zelCCITTFAX4, "", {zelBit});
    add(zelRGBPalette, 1, zelPACKBITS, "", {zelBit, zelUChar});
    add(zelLuminanceAlpha, 2, zelPACKBITS, "", {zelUChar});
    add(zelRGBA, 4, zelZIP, "", {zelShort});
    add(zelCMY, 3, zelLZW, "", {zelUChar});
    add(zelCMYK, 4, zelPACKBITS, "", {zelUChar});
    add(zelMultiSpectral, 7, zelZIP, "", {zelInt}, bothOrders);
    return traits;
}

INSTANTIATE_TEST_SUITE_P(Tiff, PluginSuite, testing::Values(tiffTraits()));
INSTANTIATE_TEST_SUITE_P(Tiff, CorpusSuite, testing::Values(CorpusFolder{"tiff"}));

} // namespace

} // namespace zel::test
