#include "hdrFile.h"

#include "pixels.h"
#include "scanline.h"

namespace zelhdr {

zelStatus HdrFile::makeLine() {
    return line_.allocate(static_cast<std::size_t>(size.x) * 4) ? zelOKAY : zelkit::noMemory();
}

// Reading

zelStatus HdrFile::openFile() {
    readArguments({});
    const zelStatus status = readHeader(fd, nameForMessages(), header_);
    if (status != zelOKAY)
        return status;
    size = zelSize(header_.width, header_.height, 1, 3);
    dtype = zelFloat;
    order = zelInterleaved;
    cm = header_.xyz ? zelMultiSpectral : zelRGB;
    orientation = header_.orientation;
    compression = zelUnknownCompression;
    fields = header_.fields;
    return beginReading();
}

zelStatus HdrFile::startDecoding() {
    reader_.emplace(fd, header_.dataOffset);
    return makeLine();
}

zelStatus HdrFile::decodeRows(std::uint8_t* rows, int count) {
    for (int i = 0; i < count; i++, rows += rowBytes()) {
        const zelStatus status = readScanline(*reader_, line_.data(), size.x);
        if (status != zelOKAY)
            return status;
        decodePixels(line_.data(), reinterpret_cast<float*>(rows), size.x);
    }
    return zelOKAY;
}

zelStatus HdrFile::skipRows(int count) {
    zelStatus status = zelOKAY;
    for (int i = 0; i < count && status == zelOKAY; i++)
        status = readScanline(*reader_, line_.data(), size.x);
    return status;
}

// Writing

zelStatus HdrFile::createFile() {
    readArguments({});
    const bool channelsFit = size.c == 3 && (cm == zelRGB || cm == zelMultiSpectral);
    if (!channelsFit || dtype != zelFloat || orientation < zelUpperLeftOrigin ||
        orientation > zelLeftLowerOrigin)
        return refuseAttributes();
    header_.width = size.x;
    header_.height = size.y;
    header_.orientation = orientation;
    header_.xyz = cm == zelMultiSpectral;
    compression = zelUnknownCompression;
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

zelStatus HdrFile::startEncoding() {
    header_.fields = fields;
    const std::string text = formatHeader(header_);
    coded_.begin(fd, static_cast<std::int64_t>(text.size()));
    const zelStatus status = zelkit::writeExact(fd, text.data(), text.size(), 0);
    return status == zelOKAY ? makeLine() : status;
}

zelStatus HdrFile::encodeRows(const std::uint8_t* rows, int count) {
    for (int i = 0; i < count; i++, rows += rowBytes()) {
        encodePixels(reinterpret_cast<const float*>(rows), line_.data(), size.x);
        appendScanline(coded_.pending, line_.data(), size.x);
    }
    return coded_.flush();
}

} // namespace zelhdr
