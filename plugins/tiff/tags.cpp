#include "tags.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zeltiff {

namespace {

zelEnumSpec resolutionUnits[] = {{"none", RESUNIT_NONE},
                                 {"inch", RESUNIT_INCH},
                                 {"centimeter", RESUNIT_CENTIMETER},
                                 {nullptr, 0}};

constexpr unsigned one(zelTagType type) {
    return static_cast<unsigned>(type) | 1U;
}

// Numbers of 16 bits without sign do not fit the short types.
constexpr zelTagDescription descriptions[] = {
    {TIFFTAG_XRESOLUTION, one(zelTagFloat), "Pixels per resolution unit in x", "XResolution", "",
     nullptr},
    {TIFFTAG_YRESOLUTION, one(zelTagFloat), "Pixels per resolution unit in y", "YResolution", "",
     nullptr},
    {TIFFTAG_RESOLUTIONUNIT, one(zelTagShortEnum), "Unit of the resolution", "ResolutionUnit",
     "inch", resolutionUnits},
    {TIFFTAG_SOFTWARE, one(zelTagString), "Program that made the image", "Software", "", nullptr},
    {TIFFTAG_ARTIST, one(zelTagString), "Person who made the image", "Artist", "", nullptr},
    {TIFFTAG_DATETIME, one(zelTagString), "Time of making, as YYYY:MM:DD HH:MM:SS", "DateTime", "",
     nullptr},
    {TIFFTAG_IMAGEDESCRIPTION, one(zelTagString), "What the image shows", "ImageDescription", "",
     nullptr},
    {TIFFTAG_DOCUMENTNAME, one(zelTagString), "Document that the image is from", "DocumentName", "",
     nullptr},
    {TIFFTAG_PAGENAME, one(zelTagString), "Page that the image is from", "PageName", "", nullptr},
    {TIFFTAG_PAGENUMBER, static_cast<unsigned>(zelTagInt) | 2U,
     "Number of the page, from 0, and how many there are", "PageNumber", "", nullptr},
    {TIFFTAG_COPYRIGHT, one(zelTagString), "Copyright notice", "Copyright", "", nullptr},
    {TIFFTAG_MAKE, one(zelTagString), "Maker of the scanner or camera", "Make", "", nullptr},
    {TIFFTAG_MODEL, one(zelTagString), "Model of the scanner or camera", "Model", "", nullptr},
    {TIFFTAG_HOSTCOMPUTER, one(zelTagString), "Computer that made the image", "HostComputer", "",
     nullptr},
    {TIFFTAG_MINSAMPLEVALUE, one(zelTagInt), "Smallest sample value to show", "MinSampleValue", "0",
     nullptr},
    {TIFFTAG_MAXSAMPLEVALUE, one(zelTagInt), "Largest sample value to show", "MaxSampleValue", "",
     nullptr},
    {TIFFTAG_SMINSAMPLEVALUE, one(zelTagDouble), "Smallest sample value in the image",
     "SMinSampleValue", "", nullptr},
    {TIFFTAG_SMAXSAMPLEVALUE, one(zelTagDouble), "Largest sample value in the image",
     "SMaxSampleValue", "", nullptr},
};

const zelTagDescription* find(int tag) {
    const auto found = std::find_if(std::begin(descriptions), std::end(descriptions),
                                    [tag](const auto& known) { return known.tag == tag; });
    return found == std::end(descriptions) ? nullptr : found;
}

int typeOf(const zelTagDescription& known) {
    return static_cast<int>(known.flags & 0xF0U);
}

int countOf(const zelTagDescription& known) {
    return static_cast<int>(known.flags & 0x0FU);
}

// A tag that the image lacks has a default in libtiff, which is no value of the image.
template <typename Element, typename Target>
bool getOne(TIFF* tiff, std::uint32_t tag, va_list arguments) {
    Element element{};
    Target* const target = va_arg(arguments, Target*);
    if (!target || TIFFGetField(tiff, tag, &element) != 1)
        return false;
    *target = static_cast<Target>(element);
    return true;
}

bool getPair(TIFF* tiff, std::uint32_t tag, va_list arguments) {
    std::uint16_t first = 0, second = 0;
    int* const firstTarget = va_arg(arguments, int*);
    int* const secondTarget = va_arg(arguments, int*);
    if (!firstTarget || !secondTarget || TIFFGetField(tiff, tag, &first, &second) != 1)
        return false;
    *firstTarget = first;
    *secondTarget = second;
    return true;
}

bool fitsShort(int value) {
    return value >= 0 && value <= 65535;
}

bool isUnit(int value) {
    return std::any_of(std::begin(resolutionUnits), std::end(resolutionUnits) - 1,
                       [value](const zelEnumSpec& unit) { return unit.value == value; });
}

bool setNumbers(TIFF* tiff, const zelTagDescription& known, va_list arguments) {
    const auto tag = static_cast<std::uint32_t>(known.tag);
    const int first = va_arg(arguments, int);
    if (countOf(known) == 2) {
        const int second = va_arg(arguments, int);
        return fitsShort(first) && fitsShort(second) && TIFFSetField(tiff, tag, first, second);
    }
    const bool enumerated = typeOf(known) == zelTagShortEnum;
    return (enumerated ? isUnit(first) : fitsShort(first)) && TIFFSetField(tiff, tag, first);
}

bool setReal(TIFF* tiff, const zelTagDescription& known, double value) {
    // A rational holds no negative number.
    if (!std::isfinite(value) || (typeOf(known) == zelTagFloat && value < 0))
        return false;
    return TIFFSetField(tiff, static_cast<std::uint32_t>(known.tag), value) == 1;
}

bool setText(TIFF* tiff, std::uint32_t tag, const char* text) {
    return (text ? TIFFSetField(tiff, tag, text) : TIFFUnsetField(tiff, tag)) == 1;
}

} // namespace

std::span<const zelTagDescription> tagTable() {
    return descriptions;
}

zelStatus getTag(TIFF* tiff, int tag, va_list arguments) {
    const zelTagDescription* const known = find(tag);
    if (!known)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    const auto number = static_cast<std::uint32_t>(tag);
    bool got = false;
    switch (typeOf(*known)) {
    case zelTagFloat:
        got = getOne<float, float>(tiff, number, arguments);
        break;
    case zelTagDouble:
        got = getOne<double, double>(tiff, number, arguments);
        break;
    case zelTagString:
        got = getOne<char*, char*>(tiff, number, arguments);
        break;
    case zelTagShortEnum:
        got = getOne<std::uint16_t, short>(tiff, number, arguments);
        break;
    default:
        got = countOf(*known) == 2 ? getPair(tiff, number, arguments)
                                   : getOne<std::uint16_t, int>(tiff, number, arguments);
    }
    return got ? zelOKAY : zelStatusEncode(zelBADFIELDGET);
}

zelStatus setTag(Handle& handle, int tag, va_list arguments) {
    const zelTagDescription* const known = find(tag);
    if (!known)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    TIFF* const tiff = handle.get();
    bool set = false;
    switch (typeOf(*known)) {
    case zelTagFloat:
    case zelTagDouble:
        set = setReal(tiff, *known, va_arg(arguments, double));
        break;
    case zelTagString:
        set = setText(tiff, static_cast<std::uint32_t>(tag), va_arg(arguments, char*));
        break;
    default:
        set = setNumbers(tiff, *known, arguments);
    }
    return handle.check(set, zelBADFIELDSET);
}

} // namespace zeltiff
