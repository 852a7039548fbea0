#include "header.h"

#include "kit/fileIo.h"
#include "kit/littleEndian.h"
#include "kit/palette.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zeltga {

namespace {

using zelkit::append;
using zelkit::get16;
using zelkit::get32;
using zelkit::PackedPixels;

constexpr std::size_t headerBytes = 18;
constexpr std::size_t wideIndexes = 1 << 16; // of 16 bits
using Raw = std::array<std::uint8_t, headerBytes>;

// Numbers of the header's fields.
enum ImageType : int {
    paletteImage = 1,
    colorImage = 2,
    greyImage = 3,
    withRunLengths = 8 ///< added to one of the others
};
enum Descriptor : unsigned {
    alphaBits = 0x0f,
    fromRight = 0x10,
    fromTop = 0x20,
    interleavedRows = 0xc0
};

// What alpha is, by the extension area at the file's end.
enum AlphaMeaning : int {
    usefulAlpha = 3,
    multipliedAlpha = 4
};

// A file of the second version ends with the place of the extension area and this text.
constexpr char footerText[] = "TRUEVISION-XFILE.";
constexpr std::size_t footerBytes = 8 + sizeof footerText;
constexpr std::int64_t extensionBytes = 495; // the last byte tells what alpha is

// Whether attribute bits are alpha: as the extension area says, or else if there are any.
zelStatus readAlphaMeaning(int fd, std::int64_t length, unsigned descriptor, bool& alpha) {
    alpha = (descriptor & alphaBits) != 0;
    std::array<std::uint8_t, footerBytes> footer{};
    const std::int64_t at = length - static_cast<std::int64_t>(footer.size());
    if (at < 0)
        return zelOKAY;
    zelStatus status = zelkit::readExact(fd, footer.data(), footer.size(), at);
    if (status != zelOKAY || std::memcmp(&footer[8], footerText, sizeof footerText) != 0)
        return status;
    const std::int64_t extension = get32(footer.data());
    if (extension == 0 || extension + extensionBytes > at)
        return zelOKAY;
    std::uint8_t meaning = 0;
    status = zelkit::readExact(fd, &meaning, 1, extension + extensionBytes - 1);
    alpha = meaning == usefulAlpha || meaning == multipliedAlpha;
    return status;
}

// Tells what the pixels are; false if no file of this format says so.
bool readPixelForm(const Raw& raw, bool alpha, Header& header) {
    const int type = raw[2];
    const int bits = raw[16];
    header.runLengths = (type & withRunLengths) != 0;
    header.pixelBytes = (bits + 7) / 8;
    switch (type & ~withRunLengths) {
    case paletteImage:
        header.colorModel = zelRGBPalette;
        return raw[1] == 1 && (bits == 8 || bits == 15 || bits == 16);
    case colorImage:
        header.colorModel = alpha && (bits == 16 || bits == 32) ? zelRGBA : zelRGB;
        return bits == 15 || bits == 16 || bits == 24 || bits == 32;
    case greyImage:
        header.colorModel = bits == 16 ? zelLuminanceAlpha : zelLuminance;
        return bits == 8 || bits == 16;
    default:
        return false;
    }
}

PackedPixels packingOf(int bytes, bool alpha) {
    if (bytes == 2)
        return {bytes, alpha ? PackedPixels::argb1555 : PackedPixels::rgb555};
    return {bytes, alpha && bytes == 4 ? PackedPixels::argb8888 : PackedPixels::rgb888};
}

// Indexes of one byte that the file gives no colour are black.
zelStatus readColors(int fd, const Raw& raw, std::int64_t at, bool alpha, Header& header) {
    const std::size_t first = get16(&raw[3]);
    const int bits = raw[7];
    const int entryBytes = (bits + 7) / 8;
    const PackedPixels packing = packingOf(entryBytes, alpha && bits != 15);
    header.colorChannels = packing.channels();
    const auto channels = static_cast<std::size_t>(header.colorChannels);
    const std::size_t stated = get16(&raw[5]);
    const std::size_t indexes = header.pixelBytes == 1
                                    ? std::size_t{zelkit::largestPalette}
                                    : std::clamp<std::size_t>(first + stated, 1, wideIndexes);
    header.colors.assign(indexes * channels, 0);
    if (first >= indexes)
        return zelOKAY;
    const std::size_t entries = std::min(stated, indexes - first);
    std::vector<std::uint8_t> stored(entries * static_cast<std::size_t>(entryBytes));
    const zelStatus status = zelkit::readExact(fd, stored.data(), stored.size(), at);
    packing.decode(stored.data(), header.colors.data() + first * channels,
                   static_cast<std::int64_t>(entries));
    return status;
}

// Whether the file is long enough for its pixels: a packet holds 128 of them at most.
bool holdsPixels(const Header& header, std::int64_t bytes) {
    constexpr std::int64_t packetPixels = 128;
    const std::int64_t pixels = std::int64_t{header.width} * header.height;
    return bytes >= (header.runLengths
                         ? (pixels + packetPixels - 1) / packetPixels * (1 + header.pixelBytes)
                         : header.rowBytes() * header.height);
}

zelStatus unsupported(const char* fileName, const char* what) {
    zelError(zelSevWarning, "%s: %s are not supported", fileName, what);
    return zelStatusEncode(zelUNSUPPORTEDBYFILE);
}

} // namespace

PackedPixels Header::packing() const {
    return packingOf(pixelBytes, colorModel == zelRGBA);
}

zelStatus readHeader(int fd, const char* fileName, Header& header) {
    Raw raw{};
    std::int64_t length = 0;
    bool alpha = false;
    zelStatus status = zelkit::readExact(fd, raw.data(), raw.size(), 0);
    if (status == zelOKAY)
        status = zelkit::getFileLength(fd, length);
    const unsigned descriptor = raw[17];
    if (status == zelOKAY)
        status = readAlphaMeaning(fd, length, descriptor, alpha);
    if (status != zelOKAY)
        return status;
    header.width = static_cast<int>(get16(&raw[12]));
    header.height = static_cast<int>(get16(&raw[14]));
    const bool colorsAreKnown =
        raw[1] == 0 || raw[7] == 15 || raw[7] == 16 || raw[7] == 24 || raw[7] == 32;
    if (raw[1] > 1 || !colorsAreKnown || header.width == 0 || header.height == 0 ||
        !readPixelForm(raw, alpha, header))
        return zelStatusEncode(zelBADMAGIC);
    if ((descriptor & interleavedRows) != 0)
        return unsupported(fileName, "interleaved rows");
    const bool top = (descriptor & fromTop) != 0;
    header.orientation = (descriptor & fromRight) != 0
                             ? (top ? zelUpperRightOrigin : zelLowerRightOrigin)
                             : (top ? zelUpperLeftOrigin : zelLowerLeftOrigin);
    const std::int64_t colorsAt = std::int64_t{headerBytes} + raw[0];
    header.dataOffset =
        colorsAt + (raw[1] == 1 ? std::int64_t{get16(&raw[5])} * ((raw[7] + 7) / 8) : 0);
    if (!holdsPixels(header, length - header.dataOffset))
        return zelStatusEncode(zelPREMATUREEOF);
    return header.colorModel == zelRGBPalette ? readColors(fd, raw, colorsAt, alpha, header)
                                              : zelOKAY;
}

std::vector<std::uint8_t> formatHeader(Header& header) {
    const bool palette = header.colorModel == zelRGBPalette;
    const bool grey = header.colorModel == zelLuminance || header.colorModel == zelLuminanceAlpha;
    const bool alpha = header.colorModel == zelRGBA || header.colorModel == zelLuminanceAlpha ||
                       (palette && header.colorChannels == 4);
    const int type = palette ? paletteImage : grey ? greyImage : colorImage;
    const bool top =
        header.orientation == zelUpperLeftOrigin || header.orientation == zelUpperRightOrigin;
    const bool right =
        header.orientation == zelUpperRightOrigin || header.orientation == zelLowerRightOrigin;

    std::vector<std::uint8_t> out;
    append(out, 0, 1); // no text of identification
    append(out, palette, 1);
    append(out, static_cast<unsigned>(header.runLengths ? type + withRunLengths : type), 1);
    append(out, 0, 2); // the first entry
    append(out, palette ? zelkit::largestPalette : 0, 2);
    append(out, palette ? static_cast<unsigned>(header.colorChannels) * 8 : 0, 1);
    append(out, 0, 4); // the place on a screen
    append(out, static_cast<unsigned>(header.width), 2);
    append(out, static_cast<unsigned>(header.height), 2);
    append(out, static_cast<unsigned>(header.pixelBytes) * 8, 1);
    append(out, (alpha ? 8U : 0U) | (top ? fromTop : 0U) | (right ? fromRight : 0U), 1);
    if (palette) {
        out.resize(headerBytes + header.colors.size());
        packingOf(header.colorChannels, header.colorChannels == 4)
            .encode(header.colors.data(), out.data() + headerBytes, zelkit::largestPalette);
    }
    header.dataOffset = static_cast<std::int64_t>(out.size());
    return out;
}

} // namespace zeltga
