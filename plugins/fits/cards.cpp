#include "cards.h"

#include <cstdio>

namespace zelfits {

namespace {

struct ChannelAxis {
    zelColorModel model;
    const char* name;
    int channels; ///< 0: any number
};

constexpr ChannelAxis channelAxes[] = {
    {zelRGB, "RGB", 3}, {zelRGBA, "RGBA", 4}, {zelMultiSpectral, "CHANNEL", 0}};

constexpr std::size_t cardLength = 80;

void addCard(std::string& header, std::string card) {
    card.resize(cardLength, ' ');
    header += card;
}

// Logical values and numbers end in column 30.
void addValue(std::string& header, const std::string& keyword, const std::string& value) {
    char card[cardLength + 1];
    std::snprintf(card, sizeof card, "%-8.8s= %20.20s", keyword.c_str(), value.c_str());
    addCard(header, card);
}

void addNumber(std::string& header, const std::string& keyword, std::int64_t number) {
    addValue(header, keyword, std::to_string(number));
}

void addAxes(std::string& header, const Image& image) {
    std::string axes;
    int count = 0;
    const auto add = [&](int extent) {
        addNumber(axes, "NAXIS" + std::to_string(++count), extent);
    };
    add(image.size.x);
    add(image.size.y);
    const char* const channels = channelAxisName(image.colorModel);
    if (channels)
        add(image.size.c);
    if (image.size.z > 1)
        add(image.size.z);
    addNumber(header, "NAXIS", count);
    header += axes;
}

} // namespace

const char* channelAxisName(zelColorModel model) {
    for (const ChannelAxis& axis : channelAxes)
        if (axis.model == model)
            return axis.name;
    return nullptr;
}

zelColorModel channelAxisModel(const std::string& name, std::int64_t extent) {
    for (const ChannelAxis& axis : channelAxes)
        if (name == axis.name && (axis.channels == 0 || axis.channels == extent))
            return axis.model;
    return zelLuminance;
}

std::string formatHeader(const Image& image, bool first) {
    std::string header;
    if (first)
        addValue(header, "SIMPLE", "T");
    else
        addCard(header, "XTENSION= 'IMAGE   '");
    addNumber(header, "BITPIX", image.storage.bitpix);
    addAxes(header, image);
    if (first) {
        addValue(header, "EXTEND", "T");
    } else {
        addNumber(header, "PCOUNT", 0);
        addNumber(header, "GCOUNT", 1);
    }
    if (image.storage.zero != 0) {
        addNumber(header, "BZERO", static_cast<std::int64_t>(image.storage.zero));
        addNumber(header, "BSCALE", 1);
    }
    if (const char* const channels = channelAxisName(image.colorModel)) {
        char card[cardLength + 1];
        std::snprintf(card, sizeof card, "CTYPE3  = '%-8s'", channels);
        addCard(header, card);
    }
    addCard(header, "END");
    header.resize((header.size() + blockBytes - 1) / blockBytes * blockBytes, ' ');
    return header;
}

} // namespace zelfits
