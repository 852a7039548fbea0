// What a value becomes on its road, by worked examples.

#include "support/naiveConvert.h"

#include <gtest/gtest.h>
#include <zel/zelConverter.h>

#include <limits>

namespace {

struct Example {
    zelDataType from;
    double value;
    zelDataType to;
    double expected;
};

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

const Example examples[] = {
    // The bits stay, the number need not.
    {zelChar, -1, zelUChar, 255},
    {zelUChar, 200, zelChar, -56},
    {zelUShort, 65535, zelShort, -1},
    {zelInt, -1, zelUInt, 4294967295.0},
    // Numbers, never brightness.
    {zelUChar, 255, zelFloat, 255},
    {zelBit, 1, zelFloat, 1},
    {zelBit, 0, zelFloat, 0},
    {zelBit, 1, zelUChar, 1},
    {zelBit, 1, zelBit, 1},
    {zelUInt, 4294967295.0, zelDouble, 4294967295.0},
    // Widened by the sign of the source.
    {zelChar, -1, zelUShort, 65535},
    {zelChar, -1, zelUInt, 4294967295.0},
    {zelUChar, 200, zelShort, 200},
    {zelShort, -2, zelInt, -2},
    // Low bits.
    {zelShort, 300, zelUChar, 44},
    {zelInt, -1, zelUShort, 65535},
    {zelUInt, 65536 + 7, zelChar, 7},
    // Rounded once, ties to even.
    {zelInt, 16777217, zelFloat, 16777216},
    {zelInt, 16777219, zelFloat, 16777220},
    {zelUInt, 4294967295.0, zelFloat, 4294967296.0},
    {zelDouble, 1e40, zelFloat, infinity},
    {zelDouble, -1e40, zelFloat, -infinity},
    {zelDouble, 1e-50, zelFloat, 0},
    {zelFloat, 0.25, zelDouble, 0.25},
    // Cut toward zero to 64 bits, then low bits.
    {zelFloat, 0.9, zelUChar, 0},
    {zelFloat, 255.9, zelUChar, 255},
    {zelFloat, 256.0, zelUChar, 0},
    {zelFloat, -0.5, zelUChar, 0},
    {zelFloat, -1.0, zelUChar, 255},
    {zelFloat, -2.7, zelUChar, 254},
    {zelFloat, -2.7, zelInt, -2},
    {zelFloat, 70000.5, zelUShort, 4464},
    {zelDouble, 3000000000.0, zelUInt, 3000000000.0},
    {zelDouble, 3000000000.0, zelInt, -1294967296.0},
    {zelDouble, 4294967296.0 + 513, zelShort, 513},
    {zelDouble, nan, zelInt, 0},
    {zelFloat, nan, zelUChar, 0},
    {zelDouble, 9223372036854775808.0, zelUShort, 0},
    {zelDouble, -1e300, zelInt, 0},
    {zelFloat, infinity, zelUInt, 0},
    // Tested on the full width.
    {zelChar, -1, zelBit, 1},
    {zelUInt, 256, zelBit, 1},
    {zelShort, 0, zelBit, 0},
    {zelFloat, 0.9, zelBit, 0},
    {zelDouble, -0.9, zelBit, 0},
    {zelFloat, 1.0, zelBit, 1},
    {zelDouble, -2.7, zelBit, 1},
    {zelDouble, 4294967296.0, zelBit, 0},
    {zelFloat, nan, zelBit, 0},
};

// A row long enough for whole bytes of bits and wide loops, with other values around the example.
constexpr int rowLength = 37;

class ValuesOnTheirRoads : public testing::TestWithParam<zelFlip> {};

TEST_P(ValuesOnTheirRoads, AreAsWorkedOut) {
    for (const Example& example : examples) {
        for (int place = 0; place < rowLength; ++place) {
            unsigned char from[rowLength * 8] = {};
            unsigned char to[rowLength * 8] = {};
            naive::writeElement(example.from, from, place, example.value, false);
            zelConverter source(from, example.from, zelSeparate, 1, nullptr, rowLength, 1, 1, 0, 0,
                                0, 0);
            zelConverter destination(to, example.to, zelSeparate, 1, nullptr, rowLength, 1, 1, 0, 0,
                                     0, 0);
            destination.setFlip(GetParam());
            destination = source;
            const int stored = GetParam() == zelXFlip ? rowLength - 1 - place : place;
            for (int i = 0; i < rowLength; ++i) {
                ASSERT_EQ(i == stored ? example.expected : 0.0,
                          naive::readElement(example.to, to, i))
                    << "from type " << example.from << " value " << example.value << " to type "
                    << example.to << " at " << place;
            }
        }
    }
}

// A flip on one side takes the loop for steps other than 1, and a kernel between equal types too.
INSTANTIATE_TEST_SUITE_P(BothLoops, ValuesOnTheirRoads, testing::Values(zelNoFlip, zelXFlip));

TEST(Values, BitsAroundARowStay) {
    // A row that begins at bit 5 of a byte: 3 rows of 5 bits, of which the middle one is written.
    for (const int background : {0x00, 0xff}) {
        unsigned char to[2];
        std::memset(to, background, sizeof to);
        unsigned char from[5] = {0, 1, 0, 1, 1};
        zelConverter source(from, zelUChar, zelSeparate, 1, nullptr, 5, 1, 1, 0, 1, 0, 0);
        zelConverter destination(to, zelBit, zelSeparate, 1, nullptr, 5, 3, 1, 0, 0, 0, 0);
        destination = source;
        EXPECT_EQ(background == 0 ? 0x02 : 0xfa, to[0]);
        EXPECT_EQ(background == 0 ? 0xc0 : 0xff, to[1]);
    }
}

TEST(Values, FloatsSurviveTheWayThroughDoubles) {
    const float given[] = {0.1F, -3.5e-40F, 3.4e38F, -0.0F, 1.0F / 3};
    double wide[5];
    float back[5];
    zelConverter source(const_cast<float*>(given), zelFloat, zelSeparate, 1, nullptr, 5, 1, 1, 0, 0,
                        0, 0);
    zelConverter middle(wide, zelDouble, zelSeparate, 1, nullptr, 5, 1, 1, 0, 0, 0, 0);
    zelConverter end(back, zelFloat, zelSeparate, 1, nullptr, 5, 1, 1, 0, 0, 0, 0);
    middle = source;
    end = middle;
    EXPECT_EQ(0, std::memcmp(given, back, sizeof given));
}

TEST(Values, UnknownTypesWriteNothing) {
    unsigned char from[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    for (const int unknown : {0, 3, 512}) {
        unsigned char to[8] = {};
        zelConverter known(to, zelUChar, zelSeparate, 1, nullptr, 8, 1, 1, 0, 0, 0, 0);
        zelConverter odd(from, static_cast<zelDataType>(unknown), zelSeparate, 1, nullptr, 8, 1, 1,
                         0, 0, 0, 0);
        known = odd;
        zelConverter oddTarget(to, static_cast<zelDataType>(unknown), zelSeparate, 1, nullptr, 8, 1,
                               1, 0, 0, 0, 0);
        oddTarget = odd;
        EXPECT_EQ(std::vector<unsigned char>(8), std::vector<unsigned char>(to, to + 8));
    }
}

} // namespace
