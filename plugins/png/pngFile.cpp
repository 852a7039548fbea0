#include "pngFile.h"

#include "looseChunks.h"

#include "kit/palette.h"

#include <algorithm>

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

void PngFile::describe(Decoder& decoder) {
    Metadata metadata;
    readLooseChunks(fd, nameForMessages(), metadata);
    decoder.getMetadata(metadata);
    fields = std::move(metadata.fields);
    iccProfile = std::move(metadata.iccProfile);
    palette = zelkit::makePalette(metadata.colors, metadata.colorChannels);
    size = zelSize(header_.width, header_.height, 1, header_.channels);
    dtype = header_.bits == 1 ? zelBit : header_.bits == 8 ? zelUChar : zelUShort;
    cm = std::ranges::find(colorTypes, header_.colorType, &ColorType::type)->model;
    compression = zelZIP;
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
    Metadata metadata{fieldsToWrite(), iccProfile, {}, 3};
    if (!palette)
        return metadata;
    metadata.colorChannels = palette->getNumChans();
    const int most = 1 << header_.bits;
    const int entries = header_.bits == 1 ? most : std::min(palette->getLength(), most);
    metadata.colors = zelkit::paletteBytes(*palette, entries, metadata.colorChannels);
    return metadata;
}

zelStatus PngFile::open(Encoder& encoder) {
    return encoder.open(header_, options_, metadataToWrite());
}

} // namespace zelpng
