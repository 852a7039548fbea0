#include "attributes.h"

#include "kit/sizes.h"

#include <zel/zelTypeNames.h>

#include <algorithm>
#include <climits>
#include <vector>

namespace zeltiff {

namespace {

// Chroma is halved both ways, so that JPEG works on squares of 16 pixels.
constexpr int jpegRows = 16;

bool isIntegral(zelDataType type) {
    return zelDataIsIntegral(type) != 0;
}

bool suits(zelCompression compression, const Attributes& image) {
    switch (compression) {
    case zelCCITTFAX3:
    case zelCCITTFAX4:
        return image.type == zelBit && (image.size.c == 1 || image.order == zelSeparate);
    case zelJPEG:
        return image.type == zelUChar && image.model != zelRGBPalette &&
               (image.order == zelSeparate || image.size.c <= 4) && image.size.x <= 65500 &&
               image.pageSize.x <= 65500 && image.pageSize.y <= 65500;
    default:
        return true;
    }
}

bool modelFits(const Attributes& image) {
    if (image.model == zelRGBPalette)
        return image.size.c == 1 && (image.type & (zelBit | zelUChar | zelUShort)) != 0;
    return image.size.c >= std::max(1, zelColorModelChans(image.model));
}

bool predictorFits(const Attributes& image, int predictor) {
    const bool predicted = image.compression == zelLZW || image.compression == zelZIP;
    if (!predicted || predictor == PREDICTOR_NONE)
        return true;
    return predictor == PREDICTOR_HORIZONTAL ? image.type != zelBit : !isIntegral(image.type);
}

bool isTiled(const Attributes& image) {
    return image.pageSize.x != image.size.x || image.size.z != 1;
}

zelStatus settlePages(Attributes& image, const Options& options) {
    zelSize& page = image.pageSize;
    page.c = image.order == zelSeparate ? 1 : image.size.c;
    if (isTiled(image))
        return page.x % 16 == 0 && page.y % 16 == 0 ? zelOKAY
                                                    : zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    if (options.rowsPerStrip > 0)
        page.y = options.rowsPerStrip;
    if (image.compression == zelJPEG && page.y < image.size.y)
        page.y += (jpegRows - page.y % jpegRows) % jpegRows;
    page.y = std::min(page.y, image.size.y);
    const auto elements = zelkit::checkedProduct({page.x, page.y, page.c});
    return elements && *elements <= INT_MAX ? zelOKAY : zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

int schemeOf(zelCompression compression) {
    switch (compression) {
    case zelCCITTFAX3:
        return COMPRESSION_CCITTFAX3;
    case zelCCITTFAX4:
        return COMPRESSION_CCITTFAX4;
    case zelLZW:
        return COMPRESSION_LZW;
    case zelJPEG:
        return COMPRESSION_JPEG;
    case zelPACKBITS:
        return COMPRESSION_PACKBITS;
    case zelZIP:
        return COMPRESSION_ADOBE_DEFLATE;
    default:
        return COMPRESSION_NONE;
    }
}

int bitsOf(zelDataType type) {
    return type == zelBit ? 1 : 8 * static_cast<int>(zelDataSize(type, 1));
}

int sampleFormatTag(zelDataType type) {
    if (!isIntegral(type))
        return SAMPLEFORMAT_IEEEFP;
    return zelDataIsSigned(type) ? SAMPLEFORMAT_INT : SAMPLEFORMAT_UINT;
}

bool isYccJpeg(const Attributes& image) {
    return image.compression == zelJPEG && image.model == zelRGB && image.size.c == 3 &&
           image.order != zelSeparate;
}

int photometricOf(const Attributes& image) {
    switch (image.model) {
    case zelNegative:
        return PHOTOMETRIC_MINISWHITE;
    case zelRGB:
    case zelRGBA:
        return isYccJpeg(image) ? PHOTOMETRIC_YCBCR : PHOTOMETRIC_RGB;
    case zelRGBPalette:
        return PHOTOMETRIC_PALETTE;
    case zelCMY:
    case zelCMYK:
        return PHOTOMETRIC_SEPARATED;
    default:
        return PHOTOMETRIC_MINISBLACK;
    }
}

// Samples beyond those that the photometric interpretation names have to be declared.
bool setExtraSamples(TIFF* tiff, const Attributes& image) {
    const bool alpha = zelColorModelHasAlpha(image.model) != 0;
    const int colors =
        image.model == zelMultiSpectral ? 1 : zelColorModelChans(image.model) - (alpha ? 1 : 0);
    if (image.size.c <= colors)
        return true;
    std::vector<std::uint16_t> kinds(static_cast<std::size_t>(image.size.c - colors),
                                     EXTRASAMPLE_UNSPECIFIED);
    if (alpha)
        kinds.front() = EXTRASAMPLE_UNASSALPHA;
    return TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(kinds.size()), kinds.data()) !=
           0;
}

bool setInks(TIFF* tiff, const Attributes& image) {
    static const char names[] = "Cyan\0Magenta\0Yellow";
    if (image.model == zelCMYK)
        return TIFFSetField(tiff, TIFFTAG_INKSET, INKSET_CMYK) != 0;
    if (image.model != zelCMY || image.size.c != 3)
        return true;
    return TIFFSetField(tiff, TIFFTAG_INKSET, INKSET_MULTIINK) &&
           TIFFSetField(tiff, TIFFTAG_INKNAMES, static_cast<int>(sizeof names), names);
}

// A palette image without colours is no image to other readers: start with a grey ramp.
bool setGreyRamp(TIFF* tiff, const Attributes& image) {
    if (image.model != zelRGBPalette)
        return true;
    const std::size_t count = std::size_t(1) << bitsOf(image.type);
    std::vector<std::uint16_t> ramp(count);
    for (std::size_t i = 0; i < count; i++)
        ramp[i] = static_cast<std::uint16_t>(i * 65535 / (count - 1));
    return TIFFSetField(tiff, TIFFTAG_COLORMAP, ramp.data(), ramp.data(), ramp.data()) != 0;
}

bool setSamples(TIFF* tiff, const Attributes& image) {
    return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.size.x) &&
           TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.size.y) &&
           (image.size.z == 1 || (TIFFSetField(tiff, TIFFTAG_IMAGEDEPTH, image.size.z) &&
                                  TIFFSetField(tiff, TIFFTAG_TILEDEPTH, 1))) &&
           TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bitsOf(image.type)) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.size.c) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, sampleFormatTag(image.type)) &&
           TIFFSetField(tiff, TIFFTAG_ORIENTATION, static_cast<int>(image.orientation)) &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                        image.order == zelSeparate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
}

bool setBlocks(TIFF* tiff, const Attributes& image) {
    if (!isTiled(image))
        return TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, image.pageSize.y) != 0;
    return TIFFSetField(tiff, TIFFTAG_TILEWIDTH, image.pageSize.x) &&
           TIFFSetField(tiff, TIFFTAG_TILELENGTH, image.pageSize.y);
}

bool setCompression(TIFF* tiff, const Attributes& image, const Options& options) {
    const bool predicted = image.compression == zelLZW || image.compression == zelZIP;
    return TIFFSetField(tiff, TIFFTAG_COMPRESSION, schemeOf(image.compression)) &&
           (!predicted || options.predictor == PREDICTOR_NONE ||
            TIFFSetField(tiff, TIFFTAG_PREDICTOR, options.predictor));
}

} // namespace

zelStatus settleAttributes(Attributes& image, const Options& options, const char* fileName) {
    if (!modelFits(image))
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    if (!suits(image.compression, image)) {
        zelError(zelSevWarning, "%.100s: %s does not suit the image; deflate is used", fileName,
                 zelCompressionName(image.compression));
        image.compression = zelZIP;
    }
    if (!predictorFits(image, options.predictor)) {
        zelError(zelSevWarning, "%.100s: predictor %d does not suit elements of type %s", fileName,
                 options.predictor, zelDataTypeName(image.type));
        return zelStatusEncode(zelBADPARAMS);
    }
    return settlePages(image, options);
}

bool needsBigTiff(const Attributes& image) {
    constexpr std::int64_t largestClassic = std::int64_t(4) << 30;
    constexpr std::int64_t margin = 64 << 20;
    // Noise makes some codecs write more than they were given, the fax codecs several times over.
    const bool fax = image.compression == zelCCITTFAX3 || image.compression == zelCCITTFAX4;
    const int growth = image.compression == zelNoCompression ? 1 : fax ? 8 : 2;
    const auto blocks = [](int extent, int page) {
        return (static_cast<std::int64_t>(extent) + page - 1) / page * page;
    };
    const auto bits = zelkit::checkedProduct({blocks(image.size.x, image.pageSize.x),
                                              blocks(image.size.y, image.pageSize.y), image.size.z,
                                              image.size.c, bitsOf(image.type)});
    return !bits || *bits / 8 > (largestClassic - margin) / growth;
}

void setUpCodec(TIFF* tiff, const Options& options) {
    std::uint16_t scheme = COMPRESSION_NONE;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &scheme);
    if (scheme == COMPRESSION_JPEG) {
        TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, options.quality);
        // With tables of its own, a block can be made anew at another quality.
        TIFFSetField(tiff, TIFFTAG_JPEGTABLESMODE, 0);
    }
    if (scheme == COMPRESSION_ADOBE_DEFLATE || scheme == COMPRESSION_DEFLATE)
        TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, options.level);
}

zelStatus writeDirectory(Handle& handle, const Attributes& image, const Options& options) {
    TIFF* const tiff = handle.get();
    const bool described =
        setCompression(tiff, image, options) && setSamples(tiff, image) &&
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometricOf(image)) && setBlocks(tiff, image) &&
        setExtraSamples(tiff, image) && setInks(tiff, image) && setGreyRamp(tiff, image) &&
        (!isYccJpeg(image) || TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB));
    if (!described)
        return handle.check(false, zelBADFIELDSET);
    setUpCodec(tiff, options);
    const bool written =
        TIFFWriteCheck(tiff, isTiled(image) ? 1 : 0, "zel") == 1 && TIFFWriteDirectory(tiff) == 1;
    return handle.check(written, zelWRITEFAILED);
}

} // namespace zeltiff
