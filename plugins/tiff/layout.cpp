#include "layout.h"

#include "kit/sizes.h"

#include <algorithm>
#include <climits>
#include <optional>

namespace zeltiff {

namespace {

// A compressed strip of more bytes than this is decoded row by row.
constexpr std::int64_t largestWholeStrip = 1 << 20;
// Strips that have to be rewritten as a whole are held in memory up to this size.
constexpr std::int64_t largestRewrittenStrip = 64 << 20;
constexpr std::int64_t alwaysJustified = 16 << 20;
constexpr std::int64_t largestRatio = 4096;

// The tags of a directory that decide on the layout.
struct Tags {
    std::uint32_t width = 0, height = 0, depth = 1;
    std::uint16_t bits = 1, samples = 1, sampleFormat = SAMPLEFORMAT_UINT;
    std::uint16_t scheme = COMPRESSION_NONE, photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t planar = PLANARCONFIG_CONTIG, orientation = ORIENTATION_TOPLEFT;
    std::uint16_t fillOrder = FILLORDER_MSB2LSB, inkSet = INKSET_CMYK;
    std::uint16_t extras = 0;
    const std::uint16_t* extraKinds = nullptr;
};

std::uint16_t guessPhotometric(const Tags& tags) {
    switch (tags.scheme) {
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTRLEW:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
        return PHOTOMETRIC_MINISWHITE;
    default:
        return tags.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    }
}

Tags readTags(TIFF* tiff) {
    Tags tags;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &tags.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &tags.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_IMAGEDEPTH, &tags.depth);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &tags.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &tags.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &tags.sampleFormat);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &tags.scheme);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &tags.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &tags.orientation);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_FILLORDER, &tags.fillOrder);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_INKSET, &tags.inkSet);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &tags.extras, &tags.extraKinds);
    if (!TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &tags.photometric))
        tags.photometric = guessPhotometric(tags);
    return tags;
}

bool isLogLuv(const Tags& tags) {
    return tags.scheme == COMPRESSION_SGILOG || tags.scheme == COMPRESSION_SGILOG24;
}

// Has the codec deliver samples that need no further colour conversion, as far as it can.
bool setUpCodec(TIFF* tiff, Use use, Tags& tags) {
    if (tags.scheme == COMPRESSION_JPEG && tags.photometric == PHOTOMETRIC_YCBCR &&
        tags.planar == PLANARCONFIG_CONTIG) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        tags.photometric = PHOTOMETRIC_RGB;
    }
    if (isLogLuv(tags)) {
        // The codec changes the directory's own bits per sample for this.
        if (use != Use::Read)
            return false;
        TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT);
        tags.bits = 32;
        tags.sampleFormat = SAMPLEFORMAT_IEEEFP;
    }
    return true;
}

bool hasSharedTables(TIFF* tiff, const Tags& tags) {
    std::uint32_t bytes = 0;
    void* tables = nullptr;
    return tags.scheme == COMPRESSION_JPEG &&
           TIFFGetField(tiff, TIFFTAG_JPEGTABLES, &bytes, &tables) == 1;
}

bool lastExtraIsAlpha(const Tags& tags) {
    return tags.extras == 1 && (tags.extraKinds[0] == EXTRASAMPLE_ASSOCALPHA ||
                                tags.extraKinds[0] == EXTRASAMPLE_UNASSALPHA);
}

zelColorModel modelOf(const Tags& tags) {
    const bool alpha = lastExtraIsAlpha(tags);
    switch (tags.photometric) {
    case PHOTOMETRIC_MINISWHITE:
        return tags.samples == 1 ? zelNegative : zelMultiSpectral;
    case PHOTOMETRIC_RGB:
        return tags.samples == 3 ? zelRGB : tags.samples == 4 && alpha ? zelRGBA : zelMultiSpectral;
    case PHOTOMETRIC_PALETTE:
        return tags.samples == 1 ? zelRGBPalette : zelMultiSpectral;
    case PHOTOMETRIC_SEPARATED:
        return tags.samples == 4 && tags.inkSet == INKSET_CMYK ? zelCMYK
               : tags.samples == 3                             ? zelCMY
                                                               : zelMultiSpectral;
    case PHOTOMETRIC_YCBCR:
        return tags.samples == 3 ? zelYCC : zelMultiSpectral;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_ITULAB:
    case PHOTOMETRIC_LOGLUV:
        return tags.samples == 1 ? zelLuminance : zelMultiSpectral;
    default:
        return tags.samples == 1            ? zelLuminance
               : tags.samples == 2 && alpha ? zelLuminanceAlpha
                                            : zelMultiSpectral;
    }
}

bool chromaIsSubsampled(TIFF* tiff, const Tags& tags, Layout& layout) {
    std::uint16_t columns = 1, rows = 1;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_YCBCRSUBSAMPLING, &columns, &rows);
    layout.groupColumns = columns;
    layout.groupRows = rows;
    return tags.planar == PLANARCONFIG_CONTIG && (columns != 1 || rows != 1);
}

// YCbCr of 8 bits that no codec turns into RGB is turned here; other YCbCr stays as it is.
bool settleColor(TIFF* tiff, const Tags& tags, Layout& layout) {
    layout.attributes.model = modelOf(tags);
    layout.palette = tags.photometric == PHOTOMETRIC_PALETTE;
    if (tags.photometric != PHOTOMETRIC_YCBCR)
        return true;
    const bool subsampled = chromaIsSubsampled(tiff, tags, layout);
    layout.ycc = tags.samples == 3 && tags.bits == 8 && tags.planar == PLANARCONFIG_CONTIG;
    if (layout.ycc) {
        layout.attributes.model = zelRGB;
        const auto known = [](int step) { return step == 1 || step == 2 || step == 4; };
        return known(layout.groupColumns) && known(layout.groupRows);
    }
    layout.groupColumns = layout.groupRows = 1;
    return !subsampled;
}

zelStatus readSize(const Tags& tags, Layout& layout) {
    if (tags.width == 0 || tags.height == 0 || tags.depth == 0 || tags.samples == 0)
        return zelStatusEncode(zelCORRUPTED);
    if (tags.width > INT_MAX || tags.height > INT_MAX || tags.depth > INT_MAX)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    Attributes& image = layout.attributes;
    image.size = zelSize(static_cast<int>(tags.width), static_cast<int>(tags.height),
                         static_cast<int>(tags.depth), tags.samples);
    image.order = layout.separate ? zelSeparate : zelInterleaved;
    image.orientation = tags.orientation >= 1 && tags.orientation <= 8
                            ? static_cast<zelOrientation>(tags.orientation)
                            : zelUpperLeftOrigin;
    image.compression = compressionOf(tags.scheme);
    return zelOKAY;
}

zelStatus readBlocks(TIFF* tiff, const Tags& tags, Layout& layout) {
    layout.tiled = TIFFIsTiled(tiff) != 0;
    if (layout.tiled) {
        std::uint32_t depth = 1;
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &layout.blockWidth);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &layout.blockHeight);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_TILEDEPTH, &depth);
        if (depth != 1)
            return zelStatusEncode(zelUNSUPPORTEDBYFILE);
        layout.blockCount = TIFFNumberOfTiles(tiff);
    } else {
        std::uint32_t rows = 0;
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
        layout.blockWidth = tags.width;
        layout.blockHeight = std::min(rows, tags.height);
        // libtiff has no strips in a third direction.
        if (tags.depth != 1)
            return zelStatusEncode(zelUNSUPPORTEDBYFILE);
        layout.blockCount = TIFFNumberOfStrips(tiff);
    }
    const bool sound = layout.blockWidth > 0 && layout.blockHeight > 0 && layout.blockCount > 0;
    return sound ? zelOKAY : zelStatusEncode(zelCORRUPTED);
}

std::optional<std::int64_t> expectedGroupBytes(const Layout& layout) {
    const std::int64_t width = layout.blockWidth;
    if (layout.ycc)
        return zelkit::checkedProduct({(width + layout.groupColumns - 1) / layout.groupColumns,
                                       layout.groupColumns * layout.groupRows + 2});
    const auto bits = zelkit::checkedProduct({width, layout.blockChannels, layout.storedBits});
    return bits ? std::optional((*bits + 7) / 8) : std::nullopt;
}

// libtiff has to agree on the bytes of a row, since it fills buffers by its own reckoning.
zelStatus readRowBytes(Handle& handle, Layout& layout) {
    TIFF* const tiff = handle.get();
    const auto rows = static_cast<std::uint32_t>(layout.groupRows);
    const std::uint64_t stored =
        layout.tiled ? TIFFVTileSize64(tiff, rows) : TIFFVStripSize64(tiff, rows);
    const auto expected = expectedGroupBytes(layout);
    if (!expected || stored == 0)
        return handle.check(false, zelCORRUPTED);
    if (static_cast<std::uint64_t>(*expected) != stored)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    layout.groupBytes = *expected;
    return zelOKAY;
}

std::int64_t pageRowBytes(const Layout& layout) {
    const int bits = layout.samples.type == zelBit
                         ? 1
                         : 8 * static_cast<int>(zelDataSize(layout.samples.type, 1));
    const auto product = zelkit::checkedProduct({layout.blockWidth, layout.blockChannels, bits});
    return product ? (*product + 7) / 8 : LLONG_MAX;
}

int stripPageRows(const Layout& layout, Use use, std::int64_t rowBytes, bool& banded) {
    const int height = layout.attributes.size.y;
    const int strip = static_cast<int>(layout.blockHeight);
    const int band = zelkit::bandRows(rowBytes, height);
    banded = false;
    if (use == Use::Create)
        return strip;
    if (strip <= band)
        return band == height ? height : band - band % strip;
    if (layout.raw)
        return std::min(height,
                        (band + layout.groupRows - 1) / layout.groupRows * layout.groupRows);
    const auto bytes = zelkit::checkedProduct({rowBytes, strip});
    const std::int64_t limit = use == Use::Read ? largestWholeStrip : largestRewrittenStrip;
    if (layout.ycc || (bytes && *bytes <= limit))
        return strip;
    banded = true;
    return band;
}

bool isJustified(const Handle& handle, const Layout& layout, Use use, std::int64_t bytes) {
    if (use == Use::Create)
        return true;
    const std::int64_t length = handle.fileLength();
    const auto stored = zelkit::checkedProduct({length, layout.raw ? 1 : largestRatio});
    return bytes <= alwaysJustified || !stored || bytes - alwaysJustified <= *stored;
}

zelStatus settlePages(const Handle& handle, Use use, Layout& layout) {
    const std::int64_t rowBytes = pageRowBytes(layout);
    Attributes& image = layout.attributes;
    const int rows = layout.tiled
                         ? static_cast<int>(std::min<std::uint32_t>(layout.blockHeight, INT_MAX))
                         : stripPageRows(layout, use, rowBytes, layout.banded);
    const auto elements = zelkit::checkedProduct({layout.blockWidth, rows, layout.blockChannels});
    if (!elements || *elements > INT_MAX || rowBytes == LLONG_MAX)
        return zelStatusEncode(zelCORRUPTED);
    const auto bytes = zelkit::checkedProduct({rowBytes, rows});
    if (!bytes || *bytes > UINT_MAX || !isJustified(handle, layout, use, *bytes))
        return zelStatusEncode(zelCORRUPTED);
    image.pageSize = zelSize(static_cast<int>(layout.blockWidth), rows, 1, layout.blockChannels);
    return zelOKAY;
}

} // namespace

zelCompression compressionOf(int scheme) {
    switch (scheme) {
    case COMPRESSION_NONE:
        return zelNoCompression;
    case COMPRESSION_CCITTFAX3:
        return zelCCITTFAX3;
    case COMPRESSION_CCITTFAX4:
        return zelCCITTFAX4;
    case COMPRESSION_LZW:
        return zelLZW;
    case COMPRESSION_JPEG:
        return zelJPEG;
    case COMPRESSION_PACKBITS:
        return zelPACKBITS;
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
        return zelZIP;
    default:
        return zelUnknownCompression;
    }
}

zelStatus readLayout(Handle& handle, Use use, Layout& layout) {
    layout = Layout();
    TIFF* const tiff = handle.get();
    Tags tags = readTags(tiff);
    const auto unsupported = zelStatusEncode(zelUNSUPPORTEDBYFILE);
    if (!TIFFIsCODECConfigured(tags.scheme) || !setUpCodec(tiff, use, tags))
        return unsupported;
    layout.separate = tags.planar == PLANARCONFIG_SEPARATE;
    layout.blockChannels = layout.separate ? 1 : tags.samples;
    if (!settleColor(tiff, tags, layout))
        return unsupported;
    const auto samples = sampleFormatOf(tags.bits, tags.sampleFormat, layout.palette);
    if (!samples)
        return unsupported;
    layout.samples = *samples;
    layout.attributes.type = samples->type;
    layout.storedBits = tags.bits;
    layout.raw = tags.scheme == COMPRESSION_NONE;
    layout.sharedTables = hasSharedTables(tiff, tags);
    layout.swap = TIFFIsByteSwapped(tiff) != 0;
    layout.reverse = tags.fillOrder == FILLORDER_LSB2MSB;

    zelStatus status = readSize(tags, layout);
    if (status == zelOKAY)
        status = readBlocks(tiff, tags, layout);
    if (status == zelOKAY)
        status = readRowBytes(handle, layout);
    if (status == zelOKAY)
        status = settlePages(handle, use, layout);
    layout.direct = !layout.ycc &&
                    (layout.samples.kind == SampleKind::Copy ||
                     (layout.samples.kind == SampleKind::Bit && layout.pageRowElements() % 8 == 0));
    return status;
}

} // namespace zeltiff
