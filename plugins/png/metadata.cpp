#include "metadata.h"

#include "kit/exif.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace zelpng {

namespace {

using zelkit::Fields;

// Numbers above those of EXIF.
enum Tag : int {
    gammaTag = 0x10000,
    titleTag,
    creationTimeTag,
    disclaimerTag,
    warningTag,
    sourceTag,
    commentTag
};
constexpr int dateTimeTag = 306;

struct Keyword {
    const char* word;
    int tag;
};

constexpr Keyword keywords[] = {
    {"Title", titleTag},
    {"Author", zelkit::exifArtist},
    {"Description", zelkit::exifImageDescription},
    {"Copyright", zelkit::exifCopyright},
    {"Creation Time", creationTimeTag},
    {"Software", zelkit::exifSoftware},
    {"Disclaimer", disclaimerTag},
    {"Warning", warningTag},
    {"Source", sourceTag},
    {"Comment", commentTag},
};

constexpr unsigned text = zelkit::oneOf(zelTagString);

constexpr zelTagDescription ownTags[] = {
    {gammaTag, zelkit::oneOf(zelTagDouble),
     "Gamma that the samples are encoded with, as in 0.45455", "Gamma", "", nullptr},
    {titleTag, text, "Title of the image", "Title", "", nullptr},
    {creationTimeTag, text, "Time of making, in any form", "CreationTime", "", nullptr},
    {disclaimerTag, text, "Legal disclaimer", "Disclaimer", "", nullptr},
    {warningTag, text, "Warning of the image's nature", "Warning", "", nullptr},
    {sourceTag, text, "Device that made the image", "Source", "", nullptr},
    {commentTag, text, "Any other text", "Comment", "", nullptr},
};

bool isAscii(const std::string& value) {
    return std::ranges::all_of(value, [](char c) { return static_cast<unsigned char>(c) < 128; });
}

// Whether all bytes beyond ASCII form characters of UTF-8. Texts from elsewhere may be in Latin-1.
bool isUtf8(const std::string& value) {
    int missing = 0;
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        const bool goesOn = (byte & 0xc0) == 0x80;
        if (goesOn != (missing > 0))
            return false;
        if (goesOn)
            missing--;
        else if (byte >= 0x80)
            missing = byte >= 0xf0 ? 3 : byte >= 0xe0 ? 2 : 1;
        if (byte > 0xf4)
            return false;
    }
    return missing == 0;
}

std::string utf8OfLatin1(const std::string& latin) {
    std::string out;
    for (const char c : latin) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 128) {
            out += c;
        } else {
            out += static_cast<char>(0xc0 | code >> 6);
            out += static_cast<char>(0x80 | (code & 0x3f));
        }
    }
    return out;
}

const Keyword* findKeyword(const char* word) {
    const auto* const known = std::ranges::find_if(
        keywords, [&](const Keyword& k) { return std::strcmp(k.word, word) == 0; });
    return known == std::end(keywords) ? nullptr : known;
}

void readTexts(png_structp png, png_infop info, Fields& fields) {
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(png, info, &texts, &count);
    for (int i = 0; i < count; i++) {
        const Keyword* const known = findKeyword(texts[i].key);
        if (!known || !texts[i].text)
            continue;
        const bool unicode = texts[i].compression >= PNG_ITXT_COMPRESSION_NONE;
        fields.set(known->tag, unicode ? std::string(texts[i].text) : utf8OfLatin1(texts[i].text));
    }
}

void readTime(png_structp png, png_infop info, Fields& fields) {
    png_timep time = nullptr;
    if (!png_get_tIME(png, info, &time) || !time)
        return;
    char out[40];
    std::snprintf(out, sizeof out, "%04d:%02d:%02d %02d:%02d:%02d", time->year, time->month,
                  time->day, time->hour, time->minute, time->second);
    fields.set(dateTimeTag, std::string(out));
}

void readResolution(png_structp png, png_infop info, Fields& fields) {
    png_uint_32 x = 0, y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (!png_get_pHYs(png, info, &x, &y, &unit))
        return;
    const int width = static_cast<int>(x), height = static_cast<int>(y);
    if (unit == PNG_RESOLUTION_METER) {
        zelkit::setResolution(fields, {width, height});
    } else {
        fields.set(zelkit::exifXResolution, double(width));
        fields.set(zelkit::exifYResolution, double(height));
        fields.set(zelkit::exifResolutionUnit, double{zelkit::resolutionNone});
    }
}

void readPalette(png_structp png, png_infop info, Metadata& metadata) {
    png_colorp colors = nullptr;
    int count = 0;
    png_bytep alphas = nullptr;
    int alphaCount = 0;
    if (png_get_color_type(png, info) != PNG_COLOR_TYPE_PALETTE ||
        !png_get_PLTE(png, info, &colors, &count))
        return;
    png_get_tRNS(png, info, &alphas, &alphaCount, nullptr);
    metadata.colorChannels = alphas ? 4 : 3;
    for (int i = 0; i < count; i++) {
        const png_color& color = colors[i];
        metadata.colors.insert(metadata.colors.end(), {color.red, color.green, color.blue});
        if (alphas)
            metadata.colors.push_back(i < alphaCount ? alphas[i] : png_byte{255});
    }
}

} // namespace

std::span<const zelTagDescription> tagTable() {
    static const std::vector<zelTagDescription> all =
        zelkit::joinTags({ownTags, zelkit::exifTagDescriptions()});
    return all;
}

bool isKeyword(const char* word) {
    return findKeyword(word) != nullptr;
}

void readMetadata(png_structp png, png_infop info, Metadata& metadata) {
    png_bytep exif = nullptr;
    png_uint_32 exifBytes = 0;
    if (png_get_eXIf_1(png, info, &exifBytes, &exif))
        zelkit::readExif({exif, exifBytes}, metadata.fields);
    readTime(png, info, metadata.fields);
    readTexts(png, info, metadata.fields);
    readResolution(png, info, metadata.fields);
    double gamma = 0;
    if (png_get_gAMA(png, info, &gamma) && gamma > 0)
        metadata.fields.set(gammaTag, gamma);

    png_charp profileName = nullptr;
    int method = 0;
    png_bytep profile = nullptr;
    png_uint_32 profileBytes = 0;
    if (png_get_iCCP(png, info, &profileName, &method, &profile, &profileBytes))
        metadata.iccProfile.assign(profile, profile + profileBytes);
    png_free_data(png, info, PNG_FREE_ICCP, -1);
    readPalette(png, info, metadata);
}

ChunkSet::ChunkSet(const Metadata& metadata) : from_(metadata) {
    Fields rest = metadata.fields;
    for (const auto& [word, tag] : keywords)
        if (const std::string* const value = metadata.fields.text(tag)) {
            addText(word, *value);
            rest.erase(tag);
        }
    gamma_ = metadata.fields.numberOr(gammaTag, 0);
    setResolution();
    for (const int tag :
         {zelkit::exifXResolution, zelkit::exifYResolution, zelkit::exifResolutionUnit})
        rest.erase(tag);
    exif_ = zelkit::writeExif(rest);
    addPalette();
}

void ChunkSet::addText(const char* keyword, const std::string& value) {
    constexpr std::size_t worthDeflating = 1024;
    png_text entry = {};
    const bool deflated = value.size() > worthDeflating;
    if (isAscii(value) || !isUtf8(value))
        entry.compression = deflated ? PNG_TEXT_COMPRESSION_zTXt : PNG_TEXT_COMPRESSION_NONE;
    else
        entry.compression = deflated ? PNG_ITXT_COMPRESSION_zTXt : PNG_ITXT_COMPRESSION_NONE;
    entry.key = const_cast<png_charp>(keyword);
    entry.text = const_cast<png_charp>(value.c_str());
    texts_.push_back(entry);
}

void ChunkSet::addPalette() {
    const auto step = static_cast<std::size_t>(from_.colorChannels);
    for (std::size_t i = 0; i + step <= from_.colors.size(); i += step) {
        colors_.push_back({from_.colors[i], from_.colors[i + 1], from_.colors[i + 2]});
        if (step == 4)
            alphas_.push_back(from_.colors[i + 3]);
    }
}

void ChunkSet::setResolution() {
    const Fields& fields = from_.fields;
    resolution_ = zelkit::resolutionOf(fields);
    if (std::lround(fields.numberOr(zelkit::exifResolutionUnit, zelkit::resolutionPerInch)) !=
        zelkit::resolutionNone)
        return;
    resolutionUnit_ = PNG_RESOLUTION_UNKNOWN;
    const double x = fields.numberOr(zelkit::exifXResolution, 0);
    const double y = fields.numberOr(zelkit::exifYResolution, x);
    if (std::fabs(x) < INT_MAX && std::fabs(y) < INT_MAX)
        resolution_ = {static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))};
}

void ChunkSet::store(png_structp png, png_infop info) {
    if (!colors_.empty())
        png_set_PLTE(png, info, colors_.data(), static_cast<int>(colors_.size()));
    if (!alphas_.empty())
        png_set_tRNS(png, info, alphas_.data(), static_cast<int>(alphas_.size()), nullptr);
    if (gamma_ > 0 && gamma_ < 21474)
        png_set_gAMA(png, info, gamma_);
    if (resolution_.x > 0 && resolution_.y > 0)
        png_set_pHYs(png, info, static_cast<png_uint_32>(resolution_.x),
                     static_cast<png_uint_32>(resolution_.y), resolutionUnit_);
    if (!from_.iccProfile.empty())
        png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, from_.iccProfile.data(),
                     static_cast<png_uint_32>(from_.iccProfile.size()));
    if (!exif_.empty())
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif_.size()), exif_.data());
    if (!texts_.empty())
        png_set_text(png, info, texts_.data(), static_cast<int>(texts_.size()));
}

} // namespace zelpng
