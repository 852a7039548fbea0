#include "header.h"

#include "kit/fileIo.h"
#include "kit/littleEndian.h"
#include "kit/sizes.h"

#include <algorithm>
#include <array>
#include <climits>

namespace zelbmp {

namespace {

using zelkit::append;
using zelkit::get16;
using zelkit::get32;
using Bytes = std::vector<std::uint8_t>;

// The first header is that of the file, of 14 bytes; the second one's length is its first field.
constexpr unsigned fileHeader = 14;
constexpr unsigned coreHeader = 12;
constexpr unsigned shortestOs2Header = 16;
constexpr unsigned longestOs2Header = 64;
constexpr unsigned infoHeader = 40;
constexpr unsigned infoHeaderWithMasks = 52;
constexpr unsigned infoHeaderWithAlpha = 56;
constexpr unsigned version4Header = 108;
constexpr unsigned version5Header = 124;

// Offsets in the file, as later headers have them; a shorter header lacks the fields at its end.
constexpr std::size_t masksAt = fileHeader + 40;
constexpr std::size_t colorSpaceAt = fileHeader + 56;
constexpr std::size_t profileAt = fileHeader + 112; // from the second header on, and its length

constexpr std::uint32_t standardColorSpace = 0x73524742; // "sRGB"; what follows is unused with it
constexpr std::uint32_t embeddedColorSpace = 0x4d424544; // "MBED"
constexpr std::uint32_t pictureIntent = 4;

enum Compression : std::uint32_t {
    uncompressed = 0,
    runLengths8 = 1,
    runLengths4 = 2,
    bitFields = 3,
    jpegFile = 4,
    pngFile = 5,
    alphaBitFields = 6
};

using Raw = std::array<std::uint8_t, fileHeader + version5Header>;

bool isOs2(unsigned length) {
    return length == coreHeader ||
           (length >= shortestOs2Header && length <= longestOs2Header && length != infoHeader &&
            length != infoHeaderWithMasks && length != infoHeaderWithAlpha);
}

bool isKnownLength(unsigned length) {
    return isOs2(length) || (length >= infoHeader && length <= infoHeaderWithAlpha) ||
           length == version4Header || length == version5Header;
}

// The bytes of both headers and of masks behind them, and zeros for what they lack.
zelStatus readRaw(int fd, Raw& raw, unsigned& length) {
    std::size_t got = 0;
    const zelStatus status = zelkit::readSome(fd, raw.data(), raw.size(), 0, got);
    if (status != zelOKAY)
        return status;
    if (got < 2 || raw[0] != 'B' || raw[1] != 'M')
        return zelStatusEncode(zelBADMAGIC);
    if (got < fileHeader + 4)
        return zelStatusEncode(zelPREMATUREEOF);
    length = get32(&raw[fileHeader]);
    if (!isKnownLength(length))
        return zelStatusEncode(zelCORRUPTED);
    if (got < fileHeader + length)
        return zelStatusEncode(zelPREMATUREEOF);
    if (length == infoHeader) {
        const std::uint32_t compression = get32(&raw[30]);
        length += compression == bitFields ? 12U : compression == alphaBitFields ? 16U : 0U;
    }
    std::fill(raw.begin() + fileHeader + length, raw.end(), std::uint8_t{0});
    return zelOKAY;
}

zelStatus unsupported(const char* fileName, const char* what, std::uint32_t number) {
    zelError(zelSevWarning, "%s: %s %u is not supported", fileName, what, number);
    return zelStatusEncode(zelUNSUPPORTEDBYFILE);
}

zelStatus readSizes(const Raw& raw, unsigned length, Header& header) {
    if (length == coreHeader) {
        header.width = static_cast<int>(get16(&raw[18]));
        header.height = static_cast<int>(get16(&raw[20]));
        header.bits = static_cast<int>(get16(&raw[24]));
    } else {
        header.width = static_cast<int>(get32(&raw[18]));
        const auto height = static_cast<int>(get32(&raw[22]));
        header.bits = static_cast<int>(get16(&raw[28]));
        header.topDown = height < 0;
        header.resolution.x = static_cast<int>(get32(&raw[38]));
        header.resolution.y = static_cast<int>(get32(&raw[42]));
        header.height = height == INT_MIN ? 0 : header.topDown ? -height : height;
    }
    return header.width > 0 && header.height > 0 ? zelOKAY : zelStatusEncode(zelCORRUPTED);
}

// Tells how a pixel is stored, for pixels without a palette by masks.
zelStatus readEncoding(const Raw& raw, unsigned length, const char* fileName, Header& header) {
    constexpr std::array known = {1, 2, 4, 8, 16, 24, 32};
    const std::uint32_t compression = length == coreHeader ? uncompressed : get32(&raw[30]);
    if (header.bits == 0 && (compression == jpegFile || compression == pngFile))
        return unsupported(fileName, "compression", compression);
    if (std::ranges::find(known, header.bits) == known.end())
        return zelStatusEncode(zelCORRUPTED);
    header.runLengths = (compression == runLengths8 && header.bits == 8) ||
                        (compression == runLengths4 && header.bits == 4);
    const bool masks = (compression == bitFields || compression == alphaBitFields) &&
                       (header.bits == 16 || header.bits == 32) && !isOs2(length);
    if (compression != uncompressed && !header.runLengths && !masks)
        return unsupported(fileName, "compression", compression);
    if (header.runLengths && header.topDown)
        return zelStatusEncode(zelCORRUPTED);
    header.masks = header.bits == 16 ? zelkit::PackedPixels::rgb555 : zelkit::PackedPixels::rgb888;
    if (masks)
        for (std::size_t c = 0; c < header.masks.size(); c++)
            header.masks[c] = get32(&raw[masksAt + 4 * c]);
    return std::ranges::all_of(header.masks,
                               [&](std::uint32_t mask) {
                                   return header.bits < 16 ||
                                          zelkit::PackedPixels::isMask(mask, header.bits / 8);
                               })
               ? zelOKAY
               : zelStatusEncode(zelCORRUPTED);
}

// Entries that the file lacks are black.
zelStatus readColors(int fd, const Raw& raw, unsigned length, Header& header) {
    const std::int64_t at = fileHeader + length;
    const std::size_t entryBytes = length == coreHeader ? 3 : 4;
    const std::size_t indexes = std::size_t{1} << header.bits;
    const std::size_t stated = length == coreHeader ? 0 : get32(&raw[46]);
    const std::size_t entries =
        std::min({stated ? stated : indexes, indexes,
                  static_cast<std::size_t>(header.dataOffset - at) / entryBytes});
    Bytes stored(entries * entryBytes);
    const zelStatus status = zelkit::readExact(fd, stored.data(), stored.size(), at);
    header.colors.assign(indexes * 3, 0);
    for (std::size_t i = 0; i < entries; i++)
        for (std::size_t c = 0; c < 3; c++)
            header.colors[i * 3 + c] = stored[i * entryBytes + 2 - c];
    return status;
}

// A profile that does not lie in the file is none.
void readProfilePlace(int fd, const Raw& raw, unsigned length, Header& header) {
    constexpr std::int64_t most = 32 << 20;
    std::int64_t fileBytes = 0;
    if (length != version5Header || get32(&raw[colorSpaceAt]) != embeddedColorSpace ||
        zelkit::getFileLength(fd, fileBytes) != zelOKAY)
        return;
    const std::int64_t offset = std::int64_t{fileHeader} + get32(&raw[profileAt]);
    const std::int64_t bytes = get32(&raw[profileAt + 4]);
    if (bytes > most || offset + bytes > fileBytes)
        return;
    header.profileOffset = offset;
    header.profileBytes = bytes;
}

// Whether the file is long enough for its pixels. A run of 2 bytes gives 255 pixels at most, and a
// move of 4 bytes passes over 255 rows: of a larger image the file could show a part only, and
// would make readers work for all of it.
zelStatus checkLength(int fd, const Header& header) {
    std::int64_t length = 0;
    const zelStatus status = zelkit::getFileLength(fd, length);
    if (status != zelOKAY)
        return status;
    const std::int64_t left = length - header.dataOffset;
    const auto needed = zelkit::checkedProduct({header.rowBytes(), header.height});
    const bool enough = header.runLengths
                            ? left > 0 && header.width / 128 <= left && header.height / 128 <= left
                            : needed && *needed <= left;
    return enough ? zelOKAY : zelStatusEncode(zelPREMATUREEOF);
}

// The fields behind those of the shortest header.
void appendColorSpace(Bytes& out, const Header& header, unsigned length) {
    for (const std::uint32_t mask : header.masks)
        append(out, header.masks[3] ? mask : 0, 4);
    append(out, length == version5Header ? embeddedColorSpace : standardColorSpace, 4);
    if (length == version5Header) {
        out.resize(profileAt - 4);
        append(out, pictureIntent, 4);
        append(out, static_cast<std::uint32_t>(header.profileOffset - fileHeader), 4);
        append(out, static_cast<std::uint32_t>(header.profileBytes), 4);
    }
    out.resize(fileHeader + length);
}

} // namespace

std::int64_t Header::rowBytes() const {
    return (std::int64_t{width} * bits + 31) / 32 * 4;
}

Bytes greyColors(int entries) {
    Bytes colors;
    for (int i = 0; i < entries; i++)
        colors.insert(colors.end(), 3, static_cast<std::uint8_t>(i * 255 / (entries - 1)));
    return colors;
}

zelColorModel Header::colorModel() const {
    if (bits >= 16)
        return masks[3] ? zelRGBA : zelRGB;
    if (bits == 1 && colors == Bytes{255, 255, 255, 0, 0, 0})
        return zelNegative;
    return (bits == 1 || bits == 8) && colors == greyColors(1 << bits) ? zelLuminance
                                                                       : zelRGBPalette;
}

zelStatus readHeader(int fd, const char* fileName, Header& header) {
    Raw raw{};
    unsigned length = 0;
    zelStatus status = readRaw(fd, raw, length);
    if (status == zelOKAY)
        status = readSizes(raw, length, header);
    if (status == zelOKAY)
        status = readEncoding(raw, length, fileName, header);
    if (status != zelOKAY)
        return status;
    header.dataOffset = get32(&raw[10]);
    if (header.dataOffset < fileHeader + length)
        return zelStatusEncode(zelCORRUPTED);
    readProfilePlace(fd, raw, length, header);
    if (header.bits <= 8)
        status = readColors(fd, raw, length, header);
    return status == zelOKAY ? checkLength(fd, header) : status;
}

Bytes formatHeader(Header& header) {
    const bool alpha = header.masks[3] != 0;
    const unsigned length = header.profileBytes > 0 ? version5Header
                            : alpha                 ? version4Header
                                                    : infoHeader;
    const auto entries = static_cast<std::uint32_t>(header.colors.size() / 3);
    header.dataOffset = fileHeader + length + entries * 4;
    const auto bytes =
        header.runLengths
            ? header.codedBytes
            : zelkit::checkedProduct({header.rowBytes(), header.height}).value_or(INT64_MAX);
    if (bytes > UINT32_MAX - header.dataOffset - header.profileBytes)
        return {};
    header.profileOffset = header.dataOffset + bytes;
    const std::uint32_t runLengths = header.bits == 8 ? runLengths8 : runLengths4;
    Bytes out = {'B', 'M'};
    append(out, static_cast<std::uint32_t>(header.profileOffset + header.profileBytes), 4);
    append(out, 0, 4);
    append(out, static_cast<std::uint32_t>(header.dataOffset), 4);
    append(out, length, 4);
    append(out, static_cast<std::uint32_t>(header.width), 4);
    append(out, static_cast<std::uint32_t>(header.topDown ? -header.height : header.height), 4);
    append(out, 1, 2); // planes
    append(out, static_cast<std::uint32_t>(header.bits), 2);
    append(out, alpha ? bitFields : header.runLengths ? runLengths : uncompressed, 4);
    append(out, static_cast<std::uint32_t>(bytes), 4);
    append(out, static_cast<std::uint32_t>(header.resolution.x), 4);
    append(out, static_cast<std::uint32_t>(header.resolution.y), 4);
    append(out, entries, 4);
    append(out, 0, 4); // all entries are important
    if (length > infoHeader)
        appendColorSpace(out, header, length);
    for (std::size_t i = 0; i < header.colors.size(); i += 3)
        out.insert(out.end(), {header.colors[i + 2], header.colors[i + 1], header.colors[i], 0});
    return out;
}

} // namespace zelbmp
