#include "kind.h"

#include <zel/zelFormat.h>
#include <zel/zelTypeNames.h>

#include <algorithm>

namespace zel::check {

namespace {

// The members of an enumeration that the format supports, the preferred one first.
template <typename Value>
std::vector<Value> supported(const std::vector<Value>& all, Value preferred, zelFormat* format,
                             int (zelFormat::*query)(Value)) {
    std::vector<Value> list;
    for (const Value value : all)
        if ((format->*query)(value))
            list.push_back(value);
    std::stable_partition(list.begin(), list.end(),
                          [=](Value value) { return value == preferred; });
    return list;
}

// The channels to try a colour model with; 0 if the format takes none of them.
int channelsOf(zelColorModel model, zelFormat* format, zelOrientation orientation) {
    const int fixed = zelColorModelChans(model);
    const std::vector<int> choice = fixed > 0 ? std::vector{fixed} : std::vector{5, 3, 2, 1};
    for (const int channels : choice)
        if (format->sizeIsSupported(7, 5, 1, channels, orientation))
            return channels;
    return 0;
}

} // namespace

zelFileConfig Kind::config(const zelSize& size, const zelSize* page) const {
    return zelFileConfig(&size, type, order, model, orientation, compression, page);
}

std::string Kind::text() const {
    return std::string(zelDataTypeName(type)) + ", " + zelColorModelName(model) + " (" +
           std::to_string(channels) + "), " + zelCompressionName(compression) + ", " +
           zelOrderName(order) + ", " + zelOrientationName(orientation);
}

std::vector<Kind> candidates(zelFormat* format) {
    const auto types =
        supported(allTypes(), format->getPreferredType(), format, &zelFormat::typeIsSupported);
    const auto models = supported(allModels(), format->getPreferredColorModel(0), format,
                                  &zelFormat::colorModelIsSupported);
    const auto compressions = supported(allCompressions(), format->getPreferredCompression(),
                                        format, &zelFormat::compressionIsSupported);
    const auto orders =
        supported(allOrders(), format->getPreferredOrder(), format, &zelFormat::orderIsSupported);
    const auto orientations = supported(allOrientations(), format->getPreferredOrientation(),
                                        format, &zelFormat::orientationIsSupported);
    std::vector<Kind> kinds;
    for (const zelDataType type : types)
        for (const zelColorModel model : models)
            for (const zelCompression compression : compressions)
                for (const zelOrder order : orders)
                    for (const zelOrientation orientation : orientations)
                        if (const int channels = channelsOf(model, format, orientation))
                            kinds.push_back({type, model, channels, compression, order, orientation,
                                             compression, "", false});
    return kinds;
}

bool sameButLayout(const Kind& a, const Kind& b) {
    return a.type == b.type && a.model == b.model && a.compression == b.compression;
}

const std::vector<zelDataType>& allTypes() {
    static const std::vector<zelDataType> list = {zelBit,  zelUChar, zelChar,  zelUShort, zelShort,
                                                  zelUInt, zelInt,   zelFloat, zelDouble};
    return list;
}

const std::vector<zelColorModel>& allModels() {
    static const std::vector<zelColorModel> list = {
        zelNegative, zelLuminance, zelRGB,  zelRGBPalette,    zelRGBA, zelHSV,           zelCMY,
        zelCMYK,     zelBGR,       zelABGR, zelMultiSpectral, zelYCC,  zelLuminanceAlpha};
    return list;
}

const std::vector<zelCompression>& allCompressions() {
    static const std::vector<zelCompression> list = {zelUnknownCompression,
                                                     zelNoCompression,
                                                     zelOSKRLE,
                                                     zelCCITTFAX3,
                                                     zelCCITTFAX4,
                                                     zelLZW,
                                                     zelJPEG,
                                                     zelPACKBITS,
                                                     zelZIP};
    return list;
}

const std::vector<zelOrder>& allOrders() {
    static const std::vector<zelOrder> list = {zelInterleaved, zelSequential, zelSeparate};
    return list;
}

const std::vector<zelOrientation>& allOrientations() {
    static const std::vector<zelOrientation> list = {
        zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin,
        zelLeftUpperOrigin, zelRightUpperOrigin, zelRightLowerOrigin, zelLeftLowerOrigin};
    return list;
}

} // namespace zel::check
