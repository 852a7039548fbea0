#include <zel/zelTypeNames.h>

#include <cstddef>

namespace {

template <class Enum>
struct Name {
    Enum value;
    const char* text;
};

template <class Enum, std::size_t count>
const char* nameOf(Enum value, const Name<Enum> (&names)[count]) {
    for (const Name<Enum>& name : names) {
        if (name.value == value)
            return name.text;
    }
    return "unknown";
}

constexpr Name<zelDataType> dataTypeNames[] = {
    {zelBit, "bit"},       {zelUChar, "unsigned char"},
    {zelChar, "char"},     {zelUShort, "unsigned short"},
    {zelShort, "short"},   {zelUInt, "unsigned integer"},
    {zelInt, "integer"},   {zelFloat, "float"},
    {zelDouble, "double"},
};

constexpr Name<zelOrientation> orientationNames[] = {
    {zelUpperLeftOrigin, "upper-left"},   {zelUpperRightOrigin, "upper-right"},
    {zelLowerRightOrigin, "lower-right"}, {zelLowerLeftOrigin, "lower-left"},
    {zelLeftUpperOrigin, "left-upper"},   {zelRightUpperOrigin, "right-upper"},
    {zelRightLowerOrigin, "right-lower"}, {zelLeftLowerOrigin, "left-lower"},
};

constexpr Name<zelOrder> orderNames[] = {
    {zelInterleaved, "interleaved"},
    {zelSequential, "sequential"},
    {zelSeparate, "separate"},
};

constexpr Name<zelColorModel> colorModelNames[] = {
    {zelNegative, "negative"},
    {zelLuminance, "luminance"},
    {zelRGB, "RGB"},
    {zelRGBPalette, "palette"},
    {zelRGBA, "RGBA"},
    {zelHSV, "HSV"},
    {zelCMY, "CMY"},
    {zelCMYK, "CMYK"},
    {zelBGR, "BGR"},
    {zelABGR, "ABGR"},
    {zelMultiSpectral, "multi-spectral"},
    {zelYCC, "YCC"},
    {zelLuminanceAlpha, "luminance-alpha"},
};

constexpr Name<zelCompression> compressionNames[] = {
    {zelNoCompression, "none"},      {zelOSKRLE, "OSK-RLE"},
    {zelCCITTFAX3, "CCITT Group 3"}, {zelCCITTFAX4, "CCITT Group 4"},
    {zelLZW, "Lempel-Ziv & Welch"},  {zelJPEG, "JPEG"},
    {zelPACKBITS, "Mac-RLE"},        {zelZIP, "ZIP deflate/inflate"},
};

} // namespace

const char* zelDataTypeName(zelDataType type) {
    return nameOf(type, dataTypeNames);
}

const char* zelOrientationName(zelOrientation orientation) {
    return nameOf(orientation, orientationNames);
}

const char* zelOrderName(zelOrder order) {
    return nameOf(order, orderNames);
}

const char* zelColorModelName(zelColorModel cm) {
    return nameOf(cm, colorModelNames);
}

const char* zelCompressionName(zelCompression compress) {
    return nameOf(compress, compressionNames);
}
