#include "kit/exif.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <optional>

namespace zelkit {

namespace {

using Block = std::span<const std::uint8_t>;

enum ValueType : unsigned {
    byteValue = 1,
    textValue = 2,
    shortValue = 3,
    longValue = 4,
    rationalValue = 5,
    undefinedValue = 7,
    signedLongValue = 9,
    signedRationalValue = 10
};

constexpr int exifDirectoryPointer = 34665;
constexpr int exifVersion = 36864;

struct Known {
    int tag;
    bool inExifDirectory;
    ValueType type; ///< as it is written
};

constexpr Known knownFields[] = {
    {exifImageDescription, false, textValue},
    {271, false, textValue},
    {272, false, textValue},
    {exifOrientation, false, shortValue},
    {exifXResolution, false, rationalValue},
    {exifYResolution, false, rationalValue},
    {exifResolutionUnit, false, shortValue},
    {exifSoftware, false, textValue},
    {306, false, textValue},
    {exifArtist, false, textValue},
    {exifCopyright, false, textValue},
    {33434, true, rationalValue},
    {33437, true, rationalValue},
    {34855, true, shortValue},
    {36867, true, textValue},
    {37386, true, rationalValue},
    {42036, true, textValue},
};

zelEnumSpec resolutionUnits[] = {{"none", resolutionNone},
                                 {"inch", resolutionPerInch},
                                 {"centimeter", resolutionPerCentimeter},
                                 {nullptr, 0}};

constexpr unsigned text = oneOf(zelTagString);

constexpr zelTagDescription descriptions[] = {
    {exifImageDescription, text, "What the image shows", "ImageDescription", "", nullptr},
    {271, text, "Maker of the scanner or camera", "Make", "", nullptr},
    {272, text, "Model of the scanner or camera", "Model", "", nullptr},
    {exifXResolution, oneOf(zelTagFloat), "Pixels per resolution unit in x", "XResolution", "",
     nullptr},
    {exifYResolution, oneOf(zelTagFloat), "Pixels per resolution unit in y", "YResolution", "",
     nullptr},
    {exifResolutionUnit, oneOf(zelTagShortEnum), "Unit of the resolution", "ResolutionUnit", "inch",
     resolutionUnits},
    {exifSoftware, text, "Program that made the image", "Software", "", nullptr},
    {306, text, "Time of making, as YYYY:MM:DD HH:MM:SS", "DateTime", "", nullptr},
    {exifArtist, text, "Person who made the image", "Artist", "", nullptr},
    {exifCopyright, text, "Copyright notice", "Copyright", "", nullptr},
    {33434, oneOf(zelTagDouble), "Time of exposure in seconds", "ExposureTime", "", nullptr},
    {33437, oneOf(zelTagDouble), "F number of the lens at exposure", "FNumber", "", nullptr},
    {34855, oneOf(zelTagInt), "Sensitivity by ISO", "ISOSpeed", "", nullptr},
    {36867, text, "Time of exposure, as YYYY:MM:DD HH:MM:SS", "DateTimeOriginal", "", nullptr},
    {37386, oneOf(zelTagDouble), "Focal length in millimetres", "FocalLength", "", nullptr},
    {42036, text, "Model of the lens", "LensModel", "", nullptr},
};

const Known* find(int tag) {
    const auto found = std::ranges::find(knownFields, tag, &Known::tag);
    return found == std::end(knownFields) ? nullptr : found;
}

std::size_t elementBytes(unsigned type) {
    switch (type) {
    case byteValue:
    case textValue:
    case undefinedValue:
        return 1;
    case shortValue:
        return 2;
    case longValue:
    case signedLongValue:
        return 4;
    case rationalValue:
    case signedRationalValue:
        return 8;
    default:
        return 0;
    }
}

class Reader {
public:
    Reader(Block block, Fields& fields) : block_(block), fields_(fields) {}

    void read() {
        constexpr std::size_t smallest = 8;
        if (block_.size() < smallest)
            return;
        little_ = block_[0] == 'I';
        if (block_[0] != block_[1] || (!little_ && block_[0] != 'M') || number(2, 2) != 42)
            return;
        readDirectory(number(4, 4).value_or(0), false);
        // One directory leads to one other and no further: no chain can be endless.
        if (exifDirectory_ != 0)
            readDirectory(exifDirectory_, true);
    }

private:
    std::optional<unsigned> number(std::size_t at, std::size_t bytes) const {
        if (at > block_.size() || block_.size() - at < bytes)
            return std::nullopt;
        unsigned value = 0;
        for (std::size_t i = 0; i < bytes; i++)
            value = value << 8 | block_[little_ ? at + bytes - 1 - i : at + i];
        return value;
    }

    void readDirectory(std::size_t at, bool exif) {
        const unsigned entries = number(at, 2).value_or(0);
        for (std::size_t i = 0; i < entries; i++) {
            const std::size_t entry = at + 2 + i * 12;
            if (!number(entry + 8, 4))
                return;
            readEntry(entry, exif);
        }
    }

    void readEntry(std::size_t entry, bool exif) {
        const int tag = static_cast<int>(*number(entry, 2));
        const unsigned type = *number(entry + 2, 2);
        const std::size_t count = *number(entry + 4, 4);
        const std::size_t bytes = elementBytes(type) * count;
        const std::size_t at = bytes <= 4 ? entry + 8 : *number(entry + 8, 4);
        if (bytes == 0 || at > block_.size() || block_.size() - at < bytes)
            return;
        if (tag == exifDirectoryPointer && !exif && type == longValue)
            exifDirectory_ = *number(at, 4);
        const Known* const known = find(tag);
        if (!known || known->inExifDirectory != exif ||
            (known->type == textValue) != (type == textValue))
            return;
        if (type == textValue)
            readText(tag, at, bytes);
        else
            readNumber(tag, type, at);
    }

    void readText(int tag, std::size_t at, std::size_t bytes) {
        const Block all = block_.subspan(at, bytes);
        std::string value(all.begin(), std::ranges::find(all, 0));
        value.erase(value.find_last_not_of(' ') + 1);
        fields_.set(tag, std::move(value));
    }

    void readNumber(int tag, unsigned type, std::size_t at) {
        const bool isSigned = type == signedLongValue || type == signedRationalValue;
        const auto real = [=](unsigned bits) {
            return isSigned ? static_cast<double>(static_cast<std::int32_t>(bits))
                            : double{1} * bits;
        };
        const std::size_t bytes = elementBytes(type);
        if (bytes < 8) {
            fields_.set(tag, real(*number(at, bytes)));
            return;
        }
        const double denominator = real(*number(at + 4, 4));
        if (denominator != 0)
            fields_.set(tag, real(*number(at, 4)) / denominator);
    }

    Block block_;
    Fields& fields_;
    bool little_ = false;
    std::size_t exifDirectory_ = 0;
};

class Bytes {
public:
    void add(unsigned value, int bytes) {
        for (int i = 0; i < bytes; i++)
            data.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
    std::vector<std::uint8_t> data;
};

// The denominator is the power of ten that keeps the most digits.
void addRational(Bytes& out, double value) {
    unsigned denominator = 1;
    while (denominator < 100'000'000 && std::fabs(value) * denominator * 10 < 4e9 &&
           std::fabs(value) * denominator != std::floor(std::fabs(value) * denominator))
        denominator *= 10;
    out.add(static_cast<unsigned>(std::llround(std::clamp(value * denominator, 0.0, 4294967295.0))),
            4);
    out.add(denominator, 4);
}

Bytes valueBytes(const Known& known, const Fields::Value& value) {
    Bytes out;
    if (const auto* const string = std::get_if<std::string>(&value)) {
        out.data.assign(string->begin(), string->end());
        out.data.push_back(0);
    } else if (known.type == rationalValue) {
        addRational(out, std::get<double>(value));
    } else {
        out.add(static_cast<unsigned>(std::clamp(std::get<double>(value), 0.0, 65535.0)), 2);
    }
    return out;
}

struct Entry {
    int tag;
    unsigned type;
    Bytes value;
};

std::vector<Entry> entriesOf(const Fields& fields, bool exif) {
    std::vector<Entry> entries;
    for (const auto& [tag, value] : fields.all()) {
        const Known* const known = find(tag);
        const bool isText = std::holds_alternative<std::string>(value);
        if (known && known->inExifDirectory == exif && isText == (known->type == textValue))
            entries.push_back({tag, known->type, valueBytes(*known, value)});
    }
    return entries;
}

// Writes a directory and behind it the values that do not fit in its entries.
void addDirectory(Bytes& out, const std::vector<Entry>& entries) {
    out.add(static_cast<unsigned>(entries.size()), 2);
    std::size_t place = out.data.size() + entries.size() * 12 + 4;
    Bytes values;
    for (const Entry& entry : entries) {
        const std::size_t bytes = entry.value.data.size();
        out.add(static_cast<unsigned>(entry.tag), 2);
        out.add(entry.type, 2);
        out.add(static_cast<unsigned>(bytes / std::max<std::size_t>(elementBytes(entry.type), 1)),
                4);
        Bytes inPlace;
        if (bytes <= 4)
            inPlace = entry.value;
        else
            inPlace.add(static_cast<unsigned>(place + values.data.size()), 4);
        inPlace.data.resize(4);
        out.data.insert(out.data.end(), inPlace.data.begin(), inPlace.data.end());
        if (bytes > 4)
            values.data.insert(values.data.end(), entry.value.data.begin(), entry.value.data.end());
        if (values.data.size() % 2 != 0)
            values.data.push_back(0);
    }
    out.add(0, 4);
    out.data.insert(out.data.end(), values.data.begin(), values.data.end());
}

} // namespace

void readExif(Block block, Fields& fields) {
    constexpr std::array<std::uint8_t, 6> prefix = {'E', 'x', 'i', 'f', 0, 0};
    if (block.size() >= prefix.size() && std::ranges::equal(block.first(prefix.size()), prefix))
        block = block.subspan(prefix.size());
    Reader(block, fields).read();
}

std::vector<std::uint8_t> writeExif(const Fields& fields) {
    std::vector<Entry> main = entriesOf(fields, false);
    std::vector<Entry> exif = entriesOf(fields, true);
    if (main.empty() && exif.empty())
        return {};
    Bytes out;
    out.data = {'I', 'I', 42, 0, 8, 0, 0, 0};
    if (exif.empty()) {
        addDirectory(out, main);
        return out.data;
    }
    Bytes version;
    version.data = {'0', '2', '3', '2'};
    exif.push_back({exifVersion, undefinedValue, version});
    std::ranges::sort(exif, {}, &Entry::tag);
    // Where the second directory goes is known once the first one is laid out.
    main.push_back({exifDirectoryPointer, longValue, {}});
    main.back().value.add(0, 4);
    Bytes trial = out;
    addDirectory(trial, main);
    main.back().value.data.clear();
    main.back().value.add(static_cast<unsigned>(trial.data.size()), 4);
    addDirectory(out, main);
    addDirectory(out, exif);
    return out.data;
}

zelOrientation orientationOf(const Fields& fields) {
    const double value = fields.numberOr(exifOrientation, 1);
    return value >= 1 && value <= 8 ? zelOrientation(static_cast<int>(value)) : zelUpperLeftOrigin;
}

std::span<const zelTagDescription> exifTagDescriptions() {
    return descriptions;
}

std::span<const zelTagDescription> resolutionTagDescriptions() {
    // The three stand together.
    const auto first =
        std::ranges::find(descriptions, int{exifXResolution}, &zelTagDescription::tag);
    return {first, 3};
}

} // namespace zelkit
