#include "jpegFile.h"

#include <algorithm>
#include <iterator>

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

void JpegFile::describe(Decoder& decoder) {
    Metadata metadata;
    decoder.getMetadata(metadata);
    fields = std::move(metadata.fields);
    iccProfile = std::move(metadata.iccProfile);
    const auto* const known = std::ranges::find(colorSpaces, header_.colors, &ColorSpace::space);
    size = zelSize(header_.width, header_.height, 1, header_.channels);
    dtype = zelUChar;
    cm = known == std::end(colorSpaces) ? zelMultiSpectral : known->model;
    compression = zelJPEG;
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

zelStatus JpegFile::open(Encoder& encoder) {
    return encoder.open(header_, options_, {fieldsToWrite(), iccProfile});
}

} // namespace zeljpeg
