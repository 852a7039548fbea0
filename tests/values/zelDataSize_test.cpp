#include <zel/zelDataSize.h>

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace {

constexpr zelDataType none = static_cast<zelDataType>(0);
constexpr zelDataType allTypes[] = {zelBit,  zelUChar, zelChar,  zelUShort, zelShort,
                                    zelUInt, zelInt,   zelFloat, zelDouble};
constexpr int all = 0x1FF;

// The rule of the closest type, said in sets instead of walks over bits.
int naiveClosest(zelDataType desired, int allowed, int flags) {
    const auto ofSign = [&](zelDataType t) {
        const bool wantSigned = (flags & zelDataWantSigned) || zelDataMin(desired) < 0;
        return (flags & zelDataAnySign) || (zelDataMin(t) < 0) == wantSigned;
    };
    const auto holdsDesired = [&](zelDataType t) {
        return zelDataMin(t) <= zelDataMin(desired) && zelDataMax(desired) <= zelDataMax(t);
    };
    int smallestWidening = 0, largestOfSign = 0, largest = 0;
    bool anyOfSign = false;
    for (const zelDataType t : allTypes) {
        if (!(allowed & t))
            continue;
        const bool widens = ofSign(t) && holdsDesired(t);
        if (widens && !smallestWidening && (t == desired || !(flags & zelDataDemote)))
            smallestWidening = t;
        anyOfSign = anyOfSign || ofSign(t);
        if (t <= desired) {
            largest = t;
            largestOfSign = ofSign(t) ? t : largestOfSign;
        }
    }
    if (smallestWidening)
        return smallestWidening;
    return anyOfSign ? largestOfSign : largest;
}

} // namespace

TEST(DataSize, PacksBitsAndCountsBytes) {
    const struct {
        zelDataType type;
        int count;
        unsigned bytes;
    } cases[] = {
        {zelBit, 0, 0},
        {zelBit, 1, 1},
        {zelBit, 8, 1},
        {zelBit, 9, 2},
        {zelUChar, 5, 5},
        {zelChar, 5, 5},
        {zelUShort, 5, 10},
        {zelShort, 5, 10},
        {zelUInt, 5, 20},
        {zelInt, 5, 20},
        {zelFloat, 5, 20},
        {zelDouble, 5, 40},
        {none, 5, 0},
        {zelDataType(3), 5, 0},
        {zelDataType(512), 5, 0},
        {zelInt, -5, 0},
        {zelBit, INT_MAX, 1u << 28},
        {zelDouble, INT_MAX, UINT_MAX},
    };
    for (const auto& c : cases)
        EXPECT_EQ(zelDataSize(c.type, c.count), c.bytes) << c.type << " x " << c.count;
}

TEST(DataType, HasItsRangeAndClass) {
    const struct {
        zelDataType type;
        double min, max;
        int isSigned, isIntegral;
    } cases[] = {
        {zelBit, 0, 1, 0, 1},
        {zelUChar, 0, 255, 0, 2},
        {zelChar, -128, 127, 4, 4},
        {zelUShort, 0, 65535, 0, 8},
        {zelShort, -32768, 32767, 0x10, 0x10},
        {zelUInt, 0, 4294967295.0, 0, 0x20},
        {zelInt, -2147483648.0, 2147483647.0, 0x40, 0x40},
        {zelFloat, -3.4028234663852886e38, 3.4028234663852886e38, 0x80, 0},
        {zelDouble, -1.7976931348623157e308, 1.7976931348623157e308, 0x100, 0},
        {none, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(zelDataMin(c.type), c.min) << c.type;
        EXPECT_EQ(zelDataMax(c.type), c.max) << c.type;
        EXPECT_EQ(zelDataIsSigned(c.type), c.isSigned) << c.type;
        EXPECT_EQ(zelDataIsIntegral(c.type), c.isIntegral) << c.type;
    }
}

TEST(DataType, IsFoundFromARange) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double min, max;
        int mask;
        zelDataType found;
    } cases[] = {
        {0, 200, all, zelUChar},
        {-1, 200, all, zelShort},
        {-0.9, 1.9, all, zelBit},
        {0, 1e300, all & ~zelDouble, none},
        {0, 255.99, zelUChar | zelFloat, zelUChar},
        {0, 256, zelUChar | zelFloat, zelFloat},
        {-2147483648.0, 0, all, zelInt},
        {-2147483649.0, 0, all, zelFloat},
        {0, 4294967295.0, all, zelUInt},
        {nan, 1, all, zelDouble},
        {5, -5, all, zelBit},
    };
    for (const auto& c : cases)
        EXPECT_EQ(zelDataTypeFromRange(c.min, c.max, c.mask), c.found) << c.min << " " << c.max;
}

TEST(DataType, ClosestHasTheWorkedAnswers) {
    const struct {
        zelDataType desired;
        int allowed, flags;
        zelDataType found;
    } cases[] = {
        {zelUChar, all, zelDataWantSigned, zelShort},
        {zelUInt, zelInt | zelFloat, zelDataAnySign, zelFloat},
        {zelUInt, zelInt | zelFloat, 0, none},
        {zelChar, zelBit | zelUChar, 0, zelUChar},
        {zelBit, zelUChar, zelDataDemote, none},
        {zelUShort, zelUChar | zelUInt, zelDataDemote, zelUChar},
        {none, all, 0, none},
    };
    for (const auto& c : cases)
        EXPECT_EQ(zelDataClosestType(c.desired, c.allowed, c.flags), c.found) << c.desired;
}

TEST(DataType, ClosestIsTheOneOfTheRuleForEveryRequest) {
    for (const zelDataType desired : allTypes) {
        for (int allowed = 0; allowed <= all; ++allowed) {
            for (int flags = 0; flags < 8; ++flags) {
                ASSERT_EQ(zelDataClosestType(desired, allowed, flags),
                          naiveClosest(desired, allowed, flags))
                    << desired << " of " << allowed << " by " << flags;
            }
        }
    }
}
