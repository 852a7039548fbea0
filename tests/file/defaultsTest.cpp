#include <gtest/gtest.h>

#include <zel/zelFileConfig.h>

#include "support/childProcess.h"
#include "support/memoryFile.h"

namespace {

using namespace zel::test;

std::string shown(const zelSize& s) {
    return std::to_string(s.x) + "x" + std::to_string(s.y) + "x" + std::to_string(s.z) + "x" +
           std::to_string(s.c);
}

std::string shown(const zelFileConfig& fc) {
    std::string text;
    for (int value : {int{fc.getDataType()}, int{fc.getOrder()}, int{fc.getColorModel()},
                      int{fc.getOrientation()}, int{fc.getCompression()}})
        text += std::to_string(value) + " ";
    return text + shown(fc.getDimensions()) + " " + shown(fc.getPageDimensions());
}

/// Runs `scenario` on a fresh format, and gives what it returned followed by the recorded queries.
std::string settle(const std::function<std::string(MemoryFormat&)>& scenario) {
    return runWithDatabase("format MEM description \"m\" dll none.so subsystem base suffixes .m\n",
                           [&] {
                               MemoryFormat format("MEM");
                               const std::string text = scenario(format);
                               return text + "\n" + joined(format.log);
                           })
        .text;
}

/// The same, but the first line alone.
std::string outcome(const std::function<std::string(MemoryFormat&)>& scenario) {
    const std::string text = settle(scenario);
    return text.substr(0, text.find('\n'));
}

template <class Source>
std::string apply(MemoryFormat& format, Source* source, zelFileConfig& fc) {
    const zelStatus status = format.applyDefaults(source, fc);
    return std::to_string(status) + ": " + shown(fc);
}

zelFileConfig* const noSource = nullptr;

zelFileConfig fullConfig() {
    const zelSize image(100, 50, 1, 3);
    const zelSize page(64, 16, 1, 3);
    return zelFileConfig(&image, zelUChar, zelInterleaved, zelRGB, zelUpperLeftOrigin,
                         zelNoCompression, &page);
}

TEST(Defaults, onlyVetWhatIsGivenWhole) {
    EXPECT_EQ(settle([](MemoryFormat& format) {
                  zelFileConfig fc = fullConfig();
                  return apply(format, noSource, fc);
              }),
              "0: 2 1 3 1 1 100x50x1x3 64x16x1x3\n"
              "size 100 50 1 3 1\ntype 2\norder 1\npageSize 100 50 1 3 64 16 1 3 1\n"
              "orientation 1\nmodel 3\ncompression 1\n");
    EXPECT_EQ(settle([](MemoryFormat& format) {
                  zelFileConfig fc = fullConfig();
                  fc.setPageDimensions(zelSize(65, 16, 1, 3));
                  return apply(format, noSource, fc);
              }),
              "5: 2 1 3 1 1 100x50x1x3 65x16x1x3\n"
              "size 100 50 1 3 1\ntype 2\norder 1\npageSize 100 50 1 3 65 16 1 3 1\n");
}

TEST(Defaults, comeFromTheFormatWithoutASource) {
    EXPECT_EQ(settle([](MemoryFormat& format) {
                  zelFileConfig fc;
                  fc.setDimensions(zelSize(100, 100, 0, 0));
                  fc.setPageDimensions(zelSize(7, 0, 0, 0));
                  return apply(format, static_cast<zelFile*>(nullptr), fc);
              }),
              "0: 2 1 3 1 8 100x100x1x3 64x32x1x3\n"
              "preferredType\npreferredOrder\npreferredOrientation\npreferredModel 0\n"
              "preferredCompression\npreferredPageSize 100 100 1 3 7 0 0 0 1\n"
              "size 100 100 1 3 1\ntype 2\norder 1\npageSize 100 100 1 3 64 32 1 3 1\n"
              "orientation 1\nmodel 3\ncompression 8\n");
    EXPECT_EQ(outcome([](MemoryFormat& format) {
                  zelFileConfig fc;
                  return apply(format, noSource, fc);
              }),
              "5: 2 1 3 1 8 0x0x1x3 64x32x1x3");
}

TEST(Defaults, comeFromTheSourceInOrder) {
    EXPECT_EQ(
        settle([](MemoryFormat& format) {
            zelFileConfig source = fullConfig();
            source.setOrder(zelSequential);
            source.setOrientation(zelLowerLeftOrigin);
            source.setCompression(zelLZW);
            source.setPageDimensions(zelSize(100, 1, 1, 3));
            zelFileConfig fc;
            return apply(format, &source, fc);
        }),
        "0: 2 1 3 1 8 100x50x1x3 64x32x1x3\n"
        "type 2\ntype 2\norder 2\npreferredOrder\norientation 4\npreferredOrientation\nmodel 3\n"
        "model 3\ncompression 5\npreferredCompression\npageSize 100 50 1 3 100 1 1 3 1\n"
        "preferredPageSize 100 50 1 3 100 1 1 3 1\n"
        "size 100 50 1 3 1\ntype 2\norder 1\npageSize 100 50 1 3 64 32 1 3 1\n"
        "orientation 1\nmodel 3\ncompression 8\n");
    // A source file that stores x along the vertical gives its sizes turned.
    EXPECT_EQ(outcome([](MemoryFormat& format) {
                  Log log;
                  const Plan plan;
                  MemoryFile source(log, plan);
                  source.describe(zelSize(20, 10, 1, 3), zelSize(20, 2, 1, 3), zelUChar,
                                  zelInterleaved, zelLeftUpperOrigin);
                  zelFileConfig fc;
                  fc.setOrder(zelSeparate);
                  return apply(format, &source, fc);
              }),
              "0: 2 4 3 5 1 10x20x1x3 2x20x1x1");
}

TEST(Defaults, findTheNearestType) {
    struct Case {
        int source;
        std::set<int> supported;
        int result;
        int status;
    };
    const Case cases[] = {{zelShort, {zelUChar, zelFloat}, zelFloat, 0},
                          {zelDouble, {zelUChar, zelFloat}, zelFloat, 0},
                          {zelUShort, {zelUChar}, zelUChar, 0},
                          {zelInt, {zelInt, zelDouble}, zelInt, 0},
                          {zelInt, {}, zelBit, 5},
                          {0, {zelUChar}, zelUChar, 0},
                          {-4, {zelUChar}, zelUChar, 0},
                          {INT32_MAX, {zelUChar}, 1, 5}};
    for (const Case& c : cases)
        EXPECT_EQ(outcome([&](MemoryFormat& format) {
                      format.types = c.supported;
                      zelFileConfig source = fullConfig();
                      source.setDataType(static_cast<zelDataType>(c.source));
                      zelFileConfig fc;
                      const int status = format.applyDefaults(&source, fc);
                      return std::to_string(status) + " " + std::to_string(fc.getDataType());
                  }),
                  std::to_string(c.status) + " " + std::to_string(c.result))
            << c.source;
}

TEST(Defaults, findTheNearestColourModel) {
    struct Case {
        int source;
        int sourceChans;
        zelSize wish;
        zelOrder order;
        std::set<int> supported;
        const char* result; // model, channels of the image, of a page
    };
    const zelSize open(0, 0, 0, 0);
    const Case cases[] = {
        {zelRGBA, 4, open, zelInterleaved, {zelRGB}, "3 3 3"},
        {zelLuminance, 1, open, zelInterleaved, {zelRGB}, "3 3 3"},
        {zelYCC, 3, open, zelInterleaved, {zelYCC, zelRGB}, "12 3 3"},
        {zelRGB, 3, zelSize(0, 0, 0, 2), zelInterleaved, {zelRGB, zelMultiSpectral}, "11 2 5"},
        {zelMultiSpectral, 7, open, zelInterleaved, {zelMultiSpectral}, "11 7 5"},
        {zelMultiSpectral, 7, open, zelSeparate, {zelMultiSpectral}, "11 7 1"},
        {0, 3, open, zelInterleaved, {zelRGB}, "3 3 3"},
        {INT32_MIN, 3, open, zelInterleaved, {zelRGB}, "3 3 3"},
        {INT32_MAX, 3, open, zelInterleaved, {zelRGB}, "3 3 3"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(outcome([&](MemoryFormat& format) {
                      format.models = c.supported;
                      zelFileConfig source = fullConfig();
                      source.setColorModel(static_cast<zelColorModel>(c.source));
                      source.setDimensions(zelSize(9, 9, 1, c.sourceChans));
                      source.setPageDimensions(zelSize(9, 9, 1, 5));
                      zelFileConfig fc;
                      fc.setDimensions(c.wish);
                      fc.setOrder(c.order);
                      const int status = format.applyDefaults(&source, fc);
                      return (status == 0 ? "" : "refused: ") + std::to_string(fc.getColorModel()) +
                             " " + std::to_string(fc.getDimensions().c) + " " +
                             std::to_string(fc.getPageDimensions().c);
                  }),
                  c.result)
            << c.source;
}

} // namespace
