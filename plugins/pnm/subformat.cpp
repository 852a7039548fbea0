#include "subformat.h"

#include <algorithm>
#include <string_view>

namespace zelpnm {

namespace {

struct Suffix {
    std::string_view text;
    Kind kind;
};

constexpr Suffix suffixes[] = {
    {".pbm", Kind::pbm}, {".pgm", Kind::pgm}, {".ppm", Kind::ppm},
    {".pam", Kind::pam}, {".pfm", Kind::pfm},
};

bool endsWith(std::string_view name, std::string_view suffix) {
    const auto toLower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return name.size() >= suffix.size() &&
           std::ranges::equal(name.substr(name.size() - suffix.size()), suffix, {}, toLower);
}

std::optional<Kind> kindOfSuffix(const char* fileName) {
    if (fileName)
        for (const Suffix& suffix : suffixes)
            if (endsWith(fileName, suffix.text))
                return suffix.kind;
    return std::nullopt;
}

Kind kindOfPixels(const Wish& wish) {
    if (wish.type == zelFloat)
        return Kind::pfm;
    if (wish.colorModel == zelNegative)
        return Kind::pbm;
    if (wish.colorModel == zelLuminance)
        return Kind::pgm;
    return wish.colorModel == zelRGB ? Kind::ppm : Kind::pam;
}

bool canHold(Kind kind, const Wish& wish) {
    const int modelChannels = zelColorModelChans(wish.colorModel);
    if (modelChannels < 0 || (modelChannels > 0 && modelChannels != wish.channels))
        return false;
    if ((wish.type == zelFloat) != (kind == Kind::pfm))
        return false;
    if (wish.colorModel == zelNegative && wish.type != zelBit)
        return false;
    const bool oneChannel = wish.colorModel == zelNegative || wish.colorModel == zelLuminance;
    switch (kind) {
    case Kind::pbm:
        return oneChannel && wish.type == zelBit;
    case Kind::pgm:
        return oneChannel;
    case Kind::ppm:
        return wish.colorModel == zelRGB;
    case Kind::pam:
        return !wish.plain;
    case Kind::pfm:
        return !wish.plain && (oneChannel || wish.colorModel == zelRGB);
    }
    return false;
}

int chooseMaxval(const Wish& wish) {
    const int lowest = wish.type == zelUShort ? 256 : wish.type == zelUChar ? 2 : 1;
    const int highest = wish.type == zelUShort ? 65535 : wish.type == zelUChar ? 255 : 1;
    if (wish.maxval == 0 || (wish.maxval >= lowest && wish.maxval <= highest))
        return wish.maxval ? wish.maxval : highest;
    zelError(zelSevWarning,
             "%s: format argument \"maxval\": %d does not suit the element type; %d is used",
             wish.nameForMessages, wish.maxval, highest);
    return highest;
}

} // namespace

std::optional<Header> chooseHeader(const Wish& wish) {
    const Kind kind = kindOfSuffix(wish.fileName).value_or(kindOfPixels(wish));
    if (!canHold(kind, wish))
        return std::nullopt;
    Header header;
    header.kind = kind;
    header.plain = wish.plain;
    header.width = wish.width;
    header.height = wish.height;
    header.channels = wish.channels;
    header.maxval = chooseMaxval(wish);
    header.colorModel = kind == Kind::pbm                ? zelNegative
                        : wish.colorModel == zelNegative ? zelLuminance
                                                         : wish.colorModel;
    return header;
}

} // namespace zelpnm
