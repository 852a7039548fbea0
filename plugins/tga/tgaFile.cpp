#include "tgaFile.h"

#include "kit/littleEndian.h"
#include "kit/palette.h"

#include <algorithm>

namespace zeltga {

void TgaFile::readOptions() {
    const zelkit::Argument arguments[] = {{"rle", &rle_}};
    readArguments(arguments);
}

// Reading

zelStatus TgaFile::openFile() {
    readOptions();
    const zelStatus status = readHeader(fd, nameForMessages(), header_);
    if (status != zelOKAY)
        return status;
    pixels_ = header_.packing();
    cm = header_.colorModel;
    size = zelSize(header_.width, header_.height, 1, zelColorModelChans(cm));
    dtype = cm == zelRGBPalette && header_.pixelBytes == 2 ? zelUShort : zelUChar;
    order = zelInterleaved;
    orientation = header_.orientation;
    compression = header_.runLengths ? zelUnknownCompression : zelNoCompression;
    if (cm == zelRGBPalette) {
        palette = zelkit::makePalette(header_.colors, header_.colorChannels, 1 << 16);
        if (!palette)
            return zelkit::noMemory();
    }
    return beginReading();
}

zelStatus TgaFile::startDecoding() {
    if (!header_.runLengths)
        return rows_.begin(fd, header_.dataOffset, header_.rowBytes(), header_.height);
    packets_.emplace(fd, header_.dataOffset, header_.pixelBytes);
    return row_.allocate(static_cast<std::size_t>(header_.rowBytes())) ? zelOKAY
                                                                       : zelkit::noMemory();
}

zelStatus TgaFile::skipRows(int count) {
    if (header_.runLengths)
        return ScanlineFile::skipRows(count);
    rows_.skip(count);
    return zelOKAY;
}

zelStatus TgaFile::decodeRows(std::uint8_t* rows, int count) {
    if (!header_.runLengths)
        return rows_.read(count, [&](const std::uint8_t* stored) {
            decodeRow(stored, rows);
            rows += rowBytes();
        });
    for (int i = 0; i < count; i++, rows += rowBytes()) {
        const zelStatus status = packets_->decode(row_.data(), size.x);
        if (status != zelOKAY)
            return status;
        decodeRow(row_.data(), rows);
    }
    return zelOKAY;
}

void TgaFile::decodeRow(const std::uint8_t* stored, std::uint8_t* elements) const {
    if (cm == zelRGB || cm == zelRGBA)
        pixels_.decode(stored, elements, size.x);
    else if (dtype == zelUShort)
        for (int x = 0; x < size.x; x++)
            reinterpret_cast<std::uint16_t*>(elements)[x] =
                static_cast<std::uint16_t>(zelkit::get16(stored + std::ptrdiff_t{x} * 2));
    else
        std::copy_n(stored, rowBytes(), elements);
}

// Writing

// Fills the header from the attributes; false if no file holds such pixels.
bool TgaFile::describeNewFile() {
    constexpr int longestSide = 65535;
    header_.width = size.x;
    header_.height = size.y;
    header_.colorModel = cm;
    header_.orientation = orientation;
    header_.pixelBytes = zelColorModelChans(cm);
    header_.runLengths = rle_;
    pixels_ = header_.packing();
    return dtype == zelUChar && size.x <= longestSide && size.y <= longestSide && size.z == 1 &&
           size.c == header_.pixelBytes;
}

zelStatus TgaFile::createFile() {
    readOptions();
    if (!describeNewFile())
        return refuseAttributes();
    compression = rle_ ? zelUnknownCompression : zelNoCompression;
    if (cm == zelRGBPalette)
        palette = zelkit::greyPalette(zelkit::largestPalette);
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

zelStatus TgaFile::startEncoding() {
    if (palette) {
        header_.colorChannels = palette->getNumChans() == 4 ? 4 : 3;
        header_.colors =
            zelkit::paletteBytes(*palette, zelkit::largestPalette, header_.colorChannels);
    }
    const std::vector<std::uint8_t> bytes = formatHeader(header_);
    const zelStatus status = zelkit::writeExact(fd, bytes.data(), bytes.size(), 0);
    if (status != zelOKAY)
        return status;
    coded_.begin(fd, header_.dataOffset);
    if (!rle_)
        return rows_.begin(fd, header_.dataOffset, header_.rowBytes(), header_.height);
    return row_.allocate(static_cast<std::size_t>(header_.rowBytes())) ? zelOKAY
                                                                       : zelkit::noMemory();
}

zelStatus TgaFile::encodeRows(const std::uint8_t* rows, int count) {
    if (!rle_)
        return rows_.write(count, [&](std::uint8_t* stored) {
            encodeRow(rows, stored);
            rows += rowBytes();
        });
    for (int i = 0; i < count; i++, rows += rowBytes()) {
        encodeRow(rows, row_.data());
        appendPackets(coded_.pending, row_.data(), size.x, header_.pixelBytes);
    }
    return coded_.flush();
}

void TgaFile::encodeRow(const std::uint8_t* elements, std::uint8_t* stored) const {
    if (cm == zelRGB || cm == zelRGBA)
        pixels_.encode(elements, stored, size.x);
    else
        std::copy_n(elements, rowBytes(), stored);
}

} // namespace zeltga
