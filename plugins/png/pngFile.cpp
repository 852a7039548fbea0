#include "pngFile.h"

#include "laterChunks.h"

#include "kit/exif.h"
#include "kit/palette.h"
#include "kit/sizes.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace zelpng {

namespace {

constexpr zelNameDesc filterNames[] = {{"none", PNG_FILTER_NONE},
                                       {"sub", PNG_FILTER_SUB},
                                       {"up", PNG_FILTER_UP},
                                       {"average", PNG_FILTER_AVG},
                                       {"paeth", PNG_FILTER_PAETH},
                                       {"all", PNG_ALL_FILTERS},
                                       {nullptr, 0}};

struct ColorType {
    zelColorModel model;
    int type;
};

constexpr ColorType colorTypes[] = {
    {zelLuminance, PNG_COLOR_TYPE_GRAY},     {zelRGB, PNG_COLOR_TYPE_RGB},
    {zelRGBPalette, PNG_COLOR_TYPE_PALETTE}, {zelLuminanceAlpha, PNG_COLOR_TYPE_GRAY_ALPHA},
    {zelRGBA, PNG_COLOR_TYPE_RGB_ALPHA},
};

int bitsOf(zelDataType type) {
    return type == zelBit ? 1 : type == zelUChar ? 8 : 16;
}

// Not every element type goes with every colour model.
bool canStore(const ColorType& color, int bits) {
    if (bits == 1)
        return color.type == PNG_COLOR_TYPE_GRAY || color.type == PNG_COLOR_TYPE_PALETTE;
    return bits == 8 || color.type != PNG_COLOR_TYPE_PALETTE;
}

} // namespace

void PngFile::readOptions() {
    const zelkit::Argument known[] = {{"level", &options_.level, 0, 9},
                                      {"filter", &options_.filter, 0, 0, filterNames}};
    readArguments(known);
}

zelStatus PngFile::openDecoder(bool quiet) {
    decoder_.reset(new (std::nothrow) Decoder(fd, nameForMessages(), quiet));
    decoderIsFresh_ = true;
    return decoder_ ? decoder_->open(header_) : zelkit::noMemory();
}

zelStatus PngFile::openFile() {
    readOptions();
    const zelStatus status = openDecoder(false);
    if (status != zelOKAY)
        return status;
    Metadata metadata;
    decoder_->getMetadata(metadata);
    readLaterChunks(fd, nameForMessages(), metadata);
    fields = std::move(metadata.fields);
    iccProfile = std::move(metadata.iccProfile);
    palette = zelkit::makePalette(metadata.colors, metadata.colorChannels);
    showHeader();
    return beginReading();
}

void PngFile::showHeader() {
    size = zelSize(header_.width, header_.height, 1, header_.channels);
    dtype = header_.bits == 1 ? zelBit : header_.bits == 8 ? zelUChar : zelUShort;
    order = zelInterleaved;
    cm = std::ranges::find(colorTypes, header_.colorType, &ColorType::type)->model;
    orientation = zelkit::orientationOf(fields);
    compression = zelZIP;
}

zelStatus PngFile::startDecoding() {
    row_ = 0;
    if (image_.size() > 0)
        return zelOKAY;
    zelStatus status = zelOKAY;
    if (!decoderIsFresh_)
        status = openDecoder(true);
    decoderIsFresh_ = false;
    return status == zelOKAY && header_.interlaced ? decodeInterlaced() : status;
}

zelStatus PngFile::decodeInterlaced() {
    const auto bytes =
        zelkit::checkedProduct({static_cast<std::int64_t>(header_.rowBytes), header_.height});
    if (!bytes || !image_.allocate(static_cast<std::size_t>(*bytes)))
        return zelkit::noMemory();
    const zelStatus status = decoder_->decodeImage(image_.data());
    decoder_.reset();
    if (status != zelOKAY)
        image_ = zelkit::Buffer();
    return status;
}

zelStatus PngFile::decodeRows(std::uint8_t* rows, int count) {
    if (!header_.interlaced)
        return decoder_->decodeRows(rows, count);
    const std::size_t bytes = header_.rowBytes * static_cast<std::size_t>(count);
    std::memcpy(rows, image_.data() + header_.rowBytes * static_cast<std::size_t>(row_), bytes);
    row_ += count;
    return zelOKAY;
}

zelStatus PngFile::skipRows(int count) {
    if (!header_.interlaced)
        return decoder_->decodeRows(nullptr, count);
    row_ += count;
    return zelOKAY;
}

zelStatus PngFile::createFile() {
    readOptions();
    const auto* const color = std::ranges::find(colorTypes, cm, &ColorType::model);
    const int bits = bitsOf(dtype);
    if (color == std::end(colorTypes) || size.c != zelColorModelChans(cm) ||
        !canStore(*color, bits))
        return refuseAttributes();
    header_ = {size.x, size.y, bits, color->type, size.c, false, rowBytes()};
    if (cm == zelRGBPalette)
        palette = zelkit::greyPalette(1 << bits);
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

Metadata PngFile::metadataToWrite() const {
    Metadata metadata{fields, iccProfile, {}, 3};
    if (orientation != zelUpperLeftOrigin)
        metadata.fields.set(zelkit::exifOrientation, static_cast<double>(orientation));
    if (!palette)
        return metadata;
    metadata.colorChannels = palette->getNumChans();
    const int entries = std::min(palette->getLength(), 1 << header_.bits);
    for (int i = 0; i < entries; i++)
        for (int c = 0; c < metadata.colorChannels; c++)
            metadata.colors.push_back(zelkit::paletteByte(*palette, i, c));
    return metadata;
}

zelStatus PngFile::startEncoding() {
    encoder_.reset(new (std::nothrow) Encoder(fd, nameForMessages(), false));
    return encoder_ ? encoder_->open(header_, options_, metadataToWrite()) : zelkit::noMemory();
}

zelStatus PngFile::encodeRows(const std::uint8_t* rows, int count) {
    return encoder_->encodeRows(rows, count);
}

zelStatus PngFile::finishEncoding() {
    const zelStatus status = encoder_->finish();
    encoder_.reset();
    return status;
}

} // namespace zelpng
