#include "bmpFile.h"

#include "kit/exif.h"
#include "kit/palette.h"

#include <algorithm>
#include <cmath>

namespace zelbmp {

namespace {

// Colours for a new palette image until the client sets its own: 3 bits of red and green, 2 of
// blue.
std::vector<std::uint8_t> standardColors() {
    std::vector<std::uint8_t> colors;
    for (int i = 0; i < zelkit::largestPalette; i++)
        for (const int level : {(i >> 5) * 255 / 7, (i >> 2 & 7) * 255 / 7, (i & 3) * 85})
            colors.push_back(static_cast<std::uint8_t>(level));
    return colors;
}

} // namespace

// Reading

void BmpFile::readOptions() {
    static constexpr zelNameDesc bits[] = {{"4", 4}, {"8", 8}, {nullptr, 0}};
    const zelkit::Argument arguments[] = {{"rle", &rle_}, {"bits", &bits_, 4, 8, bits}};
    readArguments(arguments);
}

zelStatus BmpFile::readProfile() {
    iccProfile.resize(static_cast<std::size_t>(header_.profileBytes));
    return zelkit::readExact(fd, iccProfile.data(), iccProfile.size(), header_.profileOffset);
}

zelStatus BmpFile::openFile() {
    readOptions();
    zelStatus status = readHeader(fd, nameForMessages(), header_);
    if (status == zelOKAY)
        status = readProfile();
    if (status != zelOKAY)
        return status;
    if (header_.bits >= 16)
        pixels_ = zelkit::PackedPixels(header_.bits / 8, header_.masks);
    cm = header_.colorModel();
    size = zelSize(header_.width, header_.height, 1, zelColorModelChans(cm));
    dtype = header_.bits == 1 ? zelBit : zelUChar;
    order = zelInterleaved;
    orientation = header_.topDown ? zelUpperLeftOrigin : zelLowerLeftOrigin;
    zelkit::setResolution(fields, header_.resolution);
    compression = header_.runLengths ? zelUnknownCompression : zelNoCompression;
    if (cm == zelRGBPalette) {
        palette = zelkit::makePalette(header_.colors, 3);
        if (!palette)
            return zelkit::noMemory();
    }
    return beginReading();
}

zelStatus BmpFile::startDecoding() {
    if (!header_.runLengths)
        return rows_.begin(fd, header_.dataOffset, header_.rowBytes(), header_.height);
    runs_.emplace(fd, header_.dataOffset, header_.bits, header_.width);
    return zelOKAY;
}

zelStatus BmpFile::skipRows(int count) {
    if (header_.runLengths)
        return ScanlineFile::skipRows(count);
    rows_.skip(count);
    return zelOKAY;
}

zelStatus BmpFile::decodeRows(std::uint8_t* rows, int count) {
    if (!header_.runLengths)
        return rows_.read(count, [&](const std::uint8_t* stored) {
            decodeRow(stored, rows);
            rows += rowBytes();
        });
    zelStatus status = zelOKAY;
    for (int i = 0; i < count && status == zelOKAY; i++, rows += rowBytes())
        status = runs_->decodeRow(rows);
    return status;
}

void BmpFile::decodeRow(const std::uint8_t* stored, std::uint8_t* elements) const {
    const int bits = header_.bits;
    if (bits >= 16) {
        pixels_.decode(stored, elements, size.x);
    } else if (bits == 1 || bits == 8) {
        std::copy_n(stored, rowBytes(), elements);
    } else {
        const int mask = (1 << bits) - 1;
        const int inByte = 8 / bits;
        for (int x = 0; x < size.x; x++)
            elements[x] = static_cast<std::uint8_t>(
                stored[x / inByte] >> (8 - bits * (x % inByte + 1)) & mask);
    }
}

// Writing

// Run lengths are for bytes whose rows run from the bottom up.
void BmpFile::describePalette() {
    const bool fewColors = cm == zelRGBPalette && bits_ == 4;
    header_.bits = dtype == zelBit ? 1 : fewColors ? 4 : 8;
    header_.runLengths = rle_ && header_.bits > 1 && !header_.topDown;
    header_.colors =
        cm == zelLuminance || fewColors ? greyColors(1 << header_.bits) : standardColors();
    header_.colors.resize(std::size_t{3} << header_.bits);
}

// Fills the header from the attributes; false if no file holds such pixels.
bool BmpFile::describeNewFile() {
    header_.width = size.x;
    header_.height = size.y;
    header_.topDown = orientation == zelUpperLeftOrigin;
    if (size.z != 1 || size.c != zelColorModelChans(cm))
        return false;
    switch (cm) {
    case zelNegative:
        header_.bits = 1;
        header_.colors = {255, 255, 255, 0, 0, 0};
        return dtype == zelBit;
    case zelLuminance:
    case zelRGBPalette:
        describePalette();
        return true;
    case zelRGB:
    case zelRGBA:
        header_.bits = cm == zelRGB ? 24 : 32;
        header_.masks =
            cm == zelRGB ? zelkit::PackedPixels::rgb888 : zelkit::PackedPixels::argb8888;
        pixels_ = zelkit::PackedPixels(header_.bits / 8, header_.masks);
        return dtype == zelUChar;
    default:
        return false;
    }
}

zelStatus BmpFile::createFile() {
    readOptions();
    if (!describeNewFile() || formatHeader(header_).empty())
        return refuseAttributes();
    compression = header_.runLengths ? zelUnknownCompression : zelNoCompression;
    if (rle_ && !header_.runLengths)
        zelError(zelSevWarning, "%s: run lengths are for 4 and 8 bits in rows from the bottom up",
                 nameForMessages());
    if (cm == zelRGBPalette)
        palette = zelkit::makePalette(header_.colors, 3);
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

// Alpha has no place in the file, so that it is not shown as if it had.
zelStatus BmpFile::setColormap(const zelColormap* colormap) {
    const zelStatus status = ScanlineFile::setColormap(colormap);
    if (status != zelOKAY || palette->getNumChans() == 3)
        return status;
    palette = zelkit::makePalette(zelkit::paletteBytes(*palette, palette->getLength(), 3), 3);
    return palette ? zelOKAY : zelkit::noMemory();
}

zelStatus BmpFile::startEncoding() {
    header_.resolution = zelkit::resolutionOf(fields);
    if (palette)
        header_.colors =
            zelkit::paletteBytes(*palette, static_cast<int>(header_.colors.size() / 3), 3);
    header_.profileBytes = static_cast<std::int64_t>(iccProfile.size());
    const zelStatus status = writeHeader();
    coded_.begin(fd, header_.dataOffset);
    if (status != zelOKAY || header_.runLengths)
        return status;
    return rows_.begin(fd, header_.dataOffset, header_.rowBytes(), header_.height);
}

zelStatus BmpFile::writeHeader() {
    const std::vector<std::uint8_t> bytes = formatHeader(header_);
    if (!bytes.empty())
        return zelkit::writeExact(fd, bytes.data(), bytes.size(), 0);
    zelError(zelSevWarning, "%s: a bitmap cannot be longer than 4 GiB", nameForMessages());
    return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

zelStatus BmpFile::encodeRows(const std::uint8_t* rows, int count) {
    constexpr std::uint8_t mostOf4Bits = 15;
    const std::size_t elements = rowBytes() * static_cast<std::size_t>(count);
    if (header_.bits == 4 && std::any_of(rows, rows + elements,
                                         [](std::uint8_t index) { return index > mostOf4Bits; })) {
        zelError(zelSevWarning, "%s: an index is greater than 15", nameForMessages());
        return zelStatusEncode(zelBADPARAMS);
    }
    if (header_.runLengths)
        return encodeRunLengths(rows, count);
    return rows_.write(count, [&](std::uint8_t* stored) {
        encodeRow(rows, stored);
        rows += rowBytes();
    });
}

zelStatus BmpFile::encodeRunLengths(const std::uint8_t* rows, int count) {
    for (int i = 0; i < count; i++, rows += rowBytes())
        appendRunLengths(coded_.pending, rows, size.x, header_.bits);
    return coded_.flush();
}

void BmpFile::encodeRow(const std::uint8_t* elements, std::uint8_t* stored) const {
    if (header_.bits >= 16) {
        pixels_.encode(elements, stored, size.x);
    } else if (header_.bits != 4) {
        std::copy_n(elements, rowBytes(), stored);
    } else {
        for (int x = 0; x < size.x; x++) {
            const int before = x % 2 == 0 ? 0 : stored[x / 2] << 4;
            stored[x / 2] = static_cast<std::uint8_t>(before | elements[x]);
        }
        if (size.x % 2 != 0)
            stored[size.x / 2] = static_cast<std::uint8_t>(stored[size.x / 2] << 4);
    }
}

// The lengths of run lengths are known now.
zelStatus BmpFile::finishEncoding() {
    zelStatus status = zelOKAY;
    if (header_.runLengths) {
        appendEnd(coded_.pending);
        status = coded_.flush();
        header_.codedBytes = coded_.position() - header_.dataOffset;
        if (status == zelOKAY)
            status = writeHeader();
    }
    return status == zelOKAY
               ? zelkit::writeExact(fd, iccProfile.data(), iccProfile.size(), header_.profileOffset)
               : status;
}

} // namespace zelbmp
