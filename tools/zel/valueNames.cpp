#include "valueNames.h"

#include "messages.h"

#include <zel/zelTypeNames.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <string_view>

namespace zel::tool {
namespace {

constexpr std::array kDataTypes{zelBit,  zelUChar, zelChar,  zelUShort, zelShort,
                                zelUInt, zelInt,   zelFloat, zelDouble};
constexpr std::array kOrders{zelInterleaved, zelSequential, zelSeparate};
constexpr std::array kOrientations{zelUpperLeftOrigin,  zelUpperRightOrigin, zelLowerRightOrigin,
                                   zelLowerLeftOrigin,  zelLeftUpperOrigin,  zelRightUpperOrigin,
                                   zelRightLowerOrigin, zelLeftLowerOrigin};
constexpr std::array kColorModels{
    zelNegative, zelLuminance, zelRGB,  zelRGBPalette,    zelRGBA, zelHSV,           zelCMY,
    zelCMYK,     zelBGR,       zelABGR, zelMultiSpectral, zelYCC,  zelLuminanceAlpha};
constexpr std::array kCompressions{zelNoCompression, zelOSKRLE, zelCCITTFAX3, zelCCITTFAX4,
                                   zelLZW,           zelJPEG,   zelPACKBITS,  zelZIP};

/// One word for a value. The first word of a value is the one that messages use.
struct Word {
    std::string text;
    int value;
};
using Words = std::vector<Word>;

template <class T, size_t N>
void addLibraryNames(Words& words, const std::array<T, N>& values, const char* (*nameOf)(T)) {
    for (const T value : values) {
        words.push_back({nameOf(value), value});
    }
}

Words dataTypeWords() {
    Words words{
        {"bit", zelBit},       {"uchar", zelUChar},   {"char", zelChar},   {"ushort", zelUShort},
        {"short", zelShort},   {"uint", zelUInt},     {"int", zelInt},     {"float", zelFloat},
        {"double", zelDouble}, {"u1", zelBit},        {"u8", zelUChar},    {"i8", zelChar},
        {"u16", zelUShort},    {"i16", zelShort},     {"u32", zelUInt},    {"i32", zelInt},
        {"f32", zelFloat},     {"f64", zelDouble},    {"uint8", zelUChar}, {"int8", zelChar},
        {"uint16", zelUShort}, {"int16", zelShort},   {"uint32", zelUInt}, {"int32", zelInt},
        {"float32", zelFloat}, {"float64", zelDouble}};
    addLibraryNames(words, kDataTypes, zelDataTypeName);
    return words;
}

Words orderWords() {
    Words words;
    addLibraryNames(words, kOrders, zelOrderName);
    words.push_back({"planar", zelSeparate});
    return words;
}

Words orientationWords() {
    Words words;
    addLibraryNames(words, kOrientations, zelOrientationName);
    words.insert(words.end(), {{"top-left", zelUpperLeftOrigin},
                               {"top-right", zelUpperRightOrigin},
                               {"bottom-right", zelLowerRightOrigin},
                               {"bottom-left", zelLowerLeftOrigin},
                               {"left-top", zelLeftUpperOrigin},
                               {"right-top", zelRightUpperOrigin},
                               {"right-bottom", zelRightLowerOrigin},
                               {"left-bottom", zelLeftLowerOrigin}});
    return words;
}

Words colorModelWords() {
    Words words;
    addLibraryNames(words, kColorModels, zelColorModelName);
    words.insert(words.end(), {{"grey", zelLuminance},
                               {"gray", zelLuminance},
                               {"grey-alpha", zelLuminanceAlpha},
                               {"gray-alpha", zelLuminanceAlpha}});
    return words;
}

Words compressionWords() {
    Words words{{"none", zelNoCompression}, {"lzw", zelLZW},           {"zip", zelZIP},
                {"deflate", zelZIP},        {"packbits", zelPACKBITS}, {"fax3", zelCCITTFAX3},
                {"g3", zelCCITTFAX3},       {"ccitt3", zelCCITTFAX3},  {"fax4", zelCCITTFAX4},
                {"g4", zelCCITTFAX4},       {"ccitt4", zelCCITTFAX4}};
    addLibraryNames(words, kCompressions, zelCompressionName);
    return words;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return result;
}

std::vector<std::string> splitAt(std::string_view text, std::string_view separators) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (separators.find(c) != std::string_view::npos) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

/// Whether each part of `word` begins the part of `full` at the same place.
bool abbreviates(const std::string& word, const std::string& full) {
    const auto given = splitAt(lowered(word), "- _");
    const auto wanted = splitAt(lowered(full), "- _");
    return given.size() <= wanted.size() &&
           std::equal(given.begin(), given.end(), wanted.begin(),
                      [](const std::string& a, const std::string& b) {
                          return !a.empty() && b.starts_with(a);
                      });
}

/// The first word of each value of `chosen`, in the order of the table.
std::string choiceOf(const Words& words, const std::set<int>& chosen) {
    std::vector<std::string> names;
    std::set<int> seen;
    for (const Word& candidate : words) {
        if (chosen.contains(candidate.value) && seen.insert(candidate.value).second) {
            names.push_back(candidate.text);
        }
    }
    return joinWords(names);
}

template <class T>
T parseWord(const Words& words, const std::string& option, const std::string& word) {
    std::set<int> exact;
    std::set<int> shortenedFirst; // the first word of a value goes before its others
    std::set<int> shortened;
    std::set<int> all;
    for (const Word& candidate : words) {
        const bool isFirst = all.insert(candidate.value).second;
        if (lowered(candidate.text) == lowered(word)) {
            exact.insert(candidate.value);
        } else if (abbreviates(word, candidate.text)) {
            shortened.insert(candidate.value);
            if (isFirst) {
                shortenedFirst.insert(candidate.value);
            }
        }
    }
    const std::set<int>& found = !exact.empty()               ? exact
                                 : shortenedFirst.size() == 1 ? shortenedFirst
                                                              : shortened;
    if (found.empty()) {
        throw UsageError{option + ": \"" + word + "\" is none of " + choiceOf(words, all)};
    }
    if (found.size() > 1) {
        throw UsageError{option + ": \"" + word + "\" may mean " + choiceOf(words, found)};
    }
    return static_cast<T>(*found.begin());
}

UsageError notA(const std::string& option, const std::string& word, const char* what) {
    return {option + ": \"" + word + "\" is no " + what};
}

template <class T>
std::vector<T> parseList(const std::string& option, const std::string& text, const char* what) {
    std::vector<T> values;
    for (const std::string& part : splitAt(text, ",")) {
        T value{};
        const char* const end = part.data() + part.size();
        const auto [stop, error] = std::from_chars(part.data(), end, value);
        if (error != std::errc() || stop != end) {
            throw notA(option, part, what);
        }
        values.push_back(value);
    }
    return values;
}

} // namespace

zelDataType parseDataType(const std::string& option, const std::string& word) {
    return parseWord<zelDataType>(dataTypeWords(), option, word);
}

zelOrder parseOrder(const std::string& option, const std::string& word) {
    return parseWord<zelOrder>(orderWords(), option, word);
}

zelOrientation parseOrientation(const std::string& option, const std::string& word) {
    return parseWord<zelOrientation>(orientationWords(), option, word);
}

zelColorModel parseColorModel(const std::string& option, const std::string& word) {
    return parseWord<zelColorModel>(colorModelWords(), option, word);
}

zelCompression parseCompression(const std::string& option, const std::string& word) {
    return parseWord<zelCompression>(compressionWords(), option, word);
}

std::string dataTypeWord(zelDataType type) {
    return choiceOf(dataTypeWords(), {type});
}

std::span<const zelDataType> allDataTypes() {
    return kDataTypes;
}

std::span<const zelOrder> allOrders() {
    return kOrders;
}

std::span<const zelOrientation> allOrientations() {
    return kOrientations;
}

std::span<const zelColorModel> allColorModels() {
    return kColorModels;
}

std::span<const zelCompression> allCompressions() {
    return kCompressions;
}

std::vector<int> parseIntegers(const std::string& option, const std::string& text) {
    return parseList<int>(option, text, "whole number");
}

std::vector<double> parseNumbers(const std::string& option, const std::string& text) {
    return parseList<double>(option, text, "number");
}

std::string numberText(double value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

std::string shortNumberText(double value) {
    char text[32];
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, 8).ptr;
    return {text, end};
}

std::string joinWords(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += text.empty() ? "" : ", ";
        text += word;
    }
    return text;
}

} // namespace zel::tool
