#include "jpegFile.h"

#include "kit/exif.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace zeljpeg {

namespace {

constexpr zelNameDesc subsamplings[] = {
    {"444", 0x11}, {"422", 0x21}, {"420", 0x22}, {"440", 0x12}, {nullptr, 0}};

struct ColorSpace {
    zelColorModel model;
    J_COLOR_SPACE space;
};

constexpr ColorSpace colorSpaces[] = {
    {zelLuminance, JCS_GRAYSCALE}, {zelRGB, JCS_RGB}, {zelCMYK, JCS_CMYK}};

} // namespace

void JpegFile::readOptions() {
    const zelkit::Argument known[] = {{"quality", &options_.quality, 1, 100},
                                      {"subsampling", &options_.subsampling, 0, 0, subsamplings},
                                      {"progressive", &options_.progressive},
                                      {"optimize", &options_.optimize}};
    readArguments(known);
}

zelStatus JpegFile::openDecoder(bool quiet) {
    decoder_.reset(new (std::nothrow) Decoder(fd, nameForMessages(), quiet));
    decoderIsFresh_ = true;
    return decoder_ ? decoder_->open(header_) : zelkit::noMemory();
}

zelStatus JpegFile::openFile() {
    readOptions();
    const zelStatus status = openDecoder(false);
    if (status != zelOKAY)
        return status;
    Metadata metadata;
    decoder_->getMetadata(metadata);
    fields = std::move(metadata.fields);
    iccProfile = std::move(metadata.iccProfile);
    showHeader();
    return beginReading();
}

void JpegFile::showHeader() {
    const auto* const known = std::ranges::find(colorSpaces, header_.colors, &ColorSpace::space);
    size = zelSize(header_.width, header_.height, 1, header_.channels);
    dtype = zelUChar;
    order = zelInterleaved;
    cm = known == std::end(colorSpaces) ? zelMultiSpectral : known->model;
    orientation = zelkit::orientationOf(fields);
    compression = zelJPEG;
}

zelStatus JpegFile::startDecoding() {
    zelStatus status = zelOKAY;
    if (!decoderIsFresh_)
        status = openDecoder(true);
    decoderIsFresh_ = false;
    return status == zelOKAY ? decoder_->start() : status;
}

zelStatus JpegFile::decodeRows(std::uint8_t* rows, int count) {
    return decoder_->decodeRows(rows, count);
}

zelStatus JpegFile::skipRows(int count) {
    return decoder_->skipRows(count);
}

zelStatus JpegFile::createFile() {
    readOptions();
    const auto* const known = std::ranges::find(colorSpaces, cm, &ColorSpace::model);
    if (known == std::end(colorSpaces) || size.c != zelColorModelChans(cm))
        return refuseAttributes();
    header_ = {size.x, size.y, size.c, known->space};
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

zelStatus JpegFile::startEncoding() {
    Metadata metadata{fields, iccProfile};
    if (orientation != zelUpperLeftOrigin)
        metadata.fields.set(zelkit::exifOrientation, static_cast<double>(orientation));
    encoder_.reset(new (std::nothrow) Encoder(fd, nameForMessages()));
    return encoder_ ? encoder_->open(header_, options_, metadata) : zelkit::noMemory();
}

zelStatus JpegFile::encodeRows(const std::uint8_t* rows, int count) {
    return encoder_->encodeRows(rows, count);
}

zelStatus JpegFile::finishEncoding() {
    const zelStatus status = encoder_->finish();
    encoder_.reset();
    return status;
}

} // namespace zeljpeg
