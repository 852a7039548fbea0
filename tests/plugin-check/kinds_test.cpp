// What each plug-in of this tree can make. zel-plugin-check tries all that a plug-in claims; that a
// claim goes missing is seen here.

#include "plugin-check/suite.h"
#include "support/tempDir.h"

#include <zel/zelDatabase.h>
#include <zel/zelTypeNames.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <tuple>

namespace zel::check {

namespace {

constexpr int bytes = zelUChar | zelChar;
constexpr int words = zelUShort | zelShort;
constexpr int numbers = bytes | words | zelUInt | zelInt | zelFloat | zelDouble;

struct Made {
    std::vector<zelColorModel> models;
    int types;
    std::vector<zelCompression> compressions;
};

struct Promise {
    const char* format;
    std::vector<Made> made;
    int orders;
    std::set<zelOrientation> orientations;
};

const std::set<zelOrientation>& every() {
    static const std::set<zelOrientation> all(allOrientations().begin(), allOrientations().end());
    return all;
}

const std::vector<zelColorModel> colors = {zelLuminance, zelLuminanceAlpha, zelRGB, zelRGBA};

std::vector<zelColorModel> with(std::vector<zelColorModel> models,
                                const std::vector<zelColorModel>& more) {
    models.insert(models.end(), more.begin(), more.end());
    return models;
}

const std::vector<zelCompression> lossless = {zelNoCompression, zelLZW, zelPACKBITS, zelZIP};
const std::vector<zelCompression> fax = {zelCCITTFAX3, zelCCITTFAX4};

const Promise promises[] = {
    {"PNM",
     {{with(colors, {zelCMYK, zelMultiSpectral}),
       zelBit | zelUChar | zelUShort,
       {zelNoCompression}},
      {{zelNegative}, zelBit, {zelNoCompression}},
      {{zelLuminance, zelRGB}, zelFloat, {zelNoCompression}}},
     zelInterleaved,
     {zelUpperLeftOrigin, zelLowerLeftOrigin}},
    {"TIFF",
     {{with(colors, {zelNegative, zelCMY, zelCMYK, zelMultiSpectral}), zelBit | numbers, lossless},
      {{zelRGBPalette}, zelBit | zelUChar | zelUShort, lossless},
      {{zelLuminance, zelNegative, zelRGBPalette}, zelBit, fax},
      {with(colors, {zelNegative, zelCMY, zelCMYK}), zelUChar, {zelJPEG}}},
     zelInterleaved | zelSeparate,
     every()},
    {"PNG",
     {{colors, zelUChar | zelUShort, {zelZIP}},
      {{zelLuminance}, zelBit, {zelZIP}},
      {{zelRGBPalette}, zelBit | zelUChar, {zelZIP}}},
     zelInterleaved,
     every()},
    {"JPEG", {{{zelLuminance, zelRGB, zelCMYK}, zelUChar, {zelJPEG}}}, zelInterleaved, every()},
    {"GIF",
     {{{zelLuminance, zelRGBPalette}, zelBit | zelUChar, {zelLZW}}},
     zelInterleaved,
     {zelUpperLeftOrigin}},
    {"WEBP", {{{zelRGB, zelRGBA}, zelUChar, {zelZIP, zelJPEG}}}, zelInterleaved, every()},
    {"JP2",
     {{with(colors, {zelCMYK, zelMultiSpectral}), bytes | words, {zelUnknownCompression}},
      {{zelLuminance}, zelBit, {zelUnknownCompression}}},
     zelInterleaved,
     {zelUpperLeftOrigin}},
    {"EXR",
     {{with(colors, {zelMultiSpectral}), zelFloat | zelUInt, {zelNoCompression, zelZIP}}},
     zelInterleaved,
     {zelUpperLeftOrigin}},
    {"BMP",
     {{{zelLuminance, zelRGBPalette}, zelBit | zelUChar, {zelNoCompression}},
      {{zelNegative}, zelBit, {zelNoCompression}},
      {{zelRGB, zelRGBA}, zelUChar, {zelNoCompression}}},
     zelInterleaved,
     {zelUpperLeftOrigin, zelLowerLeftOrigin}},
    {"TGA",
     {{with(colors, {zelRGBPalette}), zelUChar, {zelNoCompression}}},
     zelInterleaved,
     {zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin}},
    {"HDR",
     {{{zelRGB, zelMultiSpectral}, zelFloat, {zelUnknownCompression}}},
     zelInterleaved,
     every()},
    {"FITS",
     {{{zelLuminance, zelRGB, zelRGBA, zelMultiSpectral}, numbers, {zelNoCompression}}},
     zelSeparate,
     {zelLowerLeftOrigin}},
};

using Combination = std::tuple<zelColorModel, zelDataType, zelCompression>;

// What is in one set alone, for the reader of a failure.
std::string textOf(const std::set<Combination>& set, const std::set<Combination>& other) {
    std::string text;
    for (const Combination& one : set)
        if (!other.contains(one)) {
            const auto& [model, type, compression] = one;
            text += std::string("\n  ") + zelColorModelName(model) + ", " + zelDataTypeName(type) +
                    ", " + zelCompressionName(compression);
        }
    return text;
}

std::set<Combination> promised(const Promise& promise) {
    std::set<Combination> set;
    for (const Made& made : promise.made)
        for (const zelColorModel model : made.models)
            for (const zelDataType type : allTypes())
                for (const zelCompression compression : made.compressions)
                    if (made.types & type)
                        set.emplace(model, type, compression);
    return set;
}

} // namespace

TEST(Plugins, MakeWhatTheyPromise) {
    const test::TempDir directory;
    std::filesystem::current_path(directory.path());
    watchReports();
    int tried = 0;
    for (const Promise& promise : promises) {
        SCOPED_TRACE(promise.format);
        if (!zelDatabase::findByFormatName(promise.format))
            continue; // its codec library is missing
        Options options;
        options.format = promise.format;
        options.quick = true;
        options.only = {"capabilities"};
        Shared* const shared = makeShared();
        for (const Row& row : runChecks(options, *shared))
            EXPECT_TRUE(row.outcome.held()) << row.name << ": " << row.outcome.failure;
        std::set<Combination> made;
        int orders = 0;
        std::set<zelOrientation> orientations;
        for (const Kind& kind : std::span(shared->kinds, shared->kindCount)) {
            made.emplace(kind.model, kind.type, kind.compression);
            orders |= kind.order;
            orientations.insert(kind.orientation);
        }
        EXPECT_EQ(textOf(made, promised(promise)), "") << "made but not promised";
        EXPECT_EQ(textOf(promised(promise), made), "") << "promised but not made";
        EXPECT_EQ(orders, promise.orders);
        EXPECT_EQ(orientations, promise.orientations);
        tried++;
    }
    EXPECT_GT(tried, 0);
    std::filesystem::current_path("/");
}

} // namespace zel::check
