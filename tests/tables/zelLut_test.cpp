#include <zel/zelLut.h>

#include "support/naiveConvert.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// The entry of a domain value, found by looking for the nearest one.
int nearestEntry(double domainIdx, double min, double max, int length) {
    int nearest = 0;
    double least = infinity;
    for (int i = 0; i < length; ++i) {
        const double at = length == 1 ? min : min + (max - min) * i / (length - 1);
        const double distance = std::fabs(at - domainIdx);
        // Half way counts for the higher entry.
        if (distance <= least) {
            least = distance;
            nearest = i;
        }
    }
    return nearest;
}

double naiveRounded(zelDataType type, double value) {
    if (type == zelBit)
        return value != 0.0;
    return naive::isReal(type) ? value : std::round(value);
}

} // namespace

TEST(Lut, AgreesWithANaiveTableOverRandomShapes) {
    std::mt19937 random(51);
    const auto below = [&](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    for (int round = 0; round < 2000; ++round) {
        const auto type = static_cast<zelDataType>(1 << below(9));
        const int chans = below(3) + 1, length = below(20) + 1;
        // Binary fractions, so that no entry number is rounded and half way is half way.
        const int steps = std::max(length - 1, 1), sign = below(2) ? 1 : -1;
        const double min = below(64) / 4.0 - 8.0, step = sign * std::ldexp(1.0, below(7) - 3);
        const double max = min + step * steps;
        zelLut lut(chans, type, min, max, length);
        std::vector<unsigned char> model(zelDataSize(type, chans * length));
        ASSERT_TRUE(lut.getData());
        for (int write = 0; write < 40; ++write) {
            const int chan = below(chans);
            const double at = length == 1 ? min : min + step * (below(8 * steps + 1) / 8.0);
            const double value = (below(4000) - 2000) / 8.0;
            ASSERT_TRUE(lut.setVal(value, at, chan) == zelOKAY);
            const int entry = nearestEntry(at, min, max, length);
            naive::writeElement(type, model.data(), chan * length + entry,
                                naiveRounded(type, value), true);
        }
        for (int read = 0; read < 60; ++read) {
            const int chan = below(chans);
            const double at = min + step * (below(16 * steps + 1) / 8.0 - steps / 2.0);
            const int entry = nearestEntry(at, min, max, length);
            ASSERT_EQ(lut.getVal(at, chan),
                      naive::readElement(type, model.data(), chan * length + entry))
                << "type " << type << " at " << at << " of " << min << " to " << max;
        }
        ASSERT_EQ(std::memcmp(lut.getData(), model.data(), model.size()), 0);
    }
}

TEST(Lut, TakesItsLengthFromTheDomain) {
    const struct {
        double min, max;
        int length;
        double domainMin, domainMax;
    } cases[] = {
        {0, 255, 256, 0, 255},
        {0.5, 2.5, 3, 0.5, 2.5},
        {10, 5, 0, 0, 0},
        {5, 4, 0, 5, 4},
        {-3e9, 3e9, 0, 0, 0},
        {0, std::nan(""), 0, 0, 0},
        {-4294967296.0, -2147483646.0, 2, -2147483647.0, -2147483646.0},
    };
    for (const auto& c : cases) {
        for (const int asked : {0, -5}) {
            const zelLut lut(2, zelUShort, c.min, c.max, asked);
            EXPECT_EQ(lut.getLength(), c.length) << c.min << " to " << c.max;
            EXPECT_EQ(lut.getDomainMin(), c.domainMin) << c.min << " to " << c.max;
            EXPECT_EQ(lut.getDomainMax(), c.domainMax) << c.min << " to " << c.max;
            EXPECT_EQ(lut.getData() == nullptr, c.length == 0);
        }
    }
}

TEST(Lut, FindsTheWorkedEntries) {
    zelLut lut(1, zelInt, 0, 1, 11);
    for (int i = 0; i < 11; ++i)
        lut.setVal(i, i / 10.0, 0);
    const std::pair<double, double> cases[] = {
        {0.04, 0}, {0.05, 1}, {1.0, 10}, {7.0, 10}, {-7.0, 0}, {1e17, 10}, {std::nan(""), 0},
    };
    for (const auto& [at, value] : cases)
        EXPECT_EQ(lut.getVal(at, 0), value) << at;
    EXPECT_EQ(lut.getDomainStep(), 0.1);

    EXPECT_TRUE(lut.setVal(1, 1.2, 0) == zelBADPARAMS);
    EXPECT_TRUE(lut.setVal(7, -0.05, 0) == zelOKAY);
    EXPECT_EQ(lut.getVal(0, 0), 7.0);
    EXPECT_TRUE(lut.setDomain(100, 110) == zelOKAY);
    EXPECT_EQ(lut.getVal(103, 0), 3.0);
}

TEST(Lut, StoresTheWorkedNumbers) {
    const struct {
        zelDataType type;
        double stored, read;
    } cases[] = {
        {zelChar, -1.5, -2},
        {zelUChar, 300.0, 44},
        {zelBit, 0.001, 1},
        {zelUInt, 4294967294.5, 4294967295.0},
        {static_cast<zelDataType>(0), 0.1, 0.1},
    };
    for (const auto& c : cases) {
        zelLut lut(2, c.type, 0, 9, 10);
        EXPECT_TRUE(lut.setVal(c.stored, 9, 1) == zelOKAY);
        EXPECT_EQ(lut.getVal(9, 1), c.read) << c.type << " " << c.stored;
        EXPECT_EQ(lut.getDataType(), c.type ? c.type : zelDouble);
    }
}

// Run under AddressSanitizer, this is where a stray access would show.
TEST(Lut, ReachesNothingOutsideItsStorage) {
    const double indexes[] = {infinity, -infinity, std::nan(""), 1e300, -1e300, 4294967296.0,
                              9.3e18,   -9.3e18,   4.0,          -1.5,  1e-310};
    for (const double max : {3.0, -3.0, 1e308, infinity, 1e-320, std::nan("")}) {
        for (const zelDataType type : {zelBit, zelUShort, zelDouble, static_cast<zelDataType>(3)}) {
            zelLut lut(3, type, 0, max, 4);
            for (const double at : indexes) {
                for (const int chan : {INT_MIN, -1, 0, 2, 3, INT_MAX}) {
                    lut.setVal(1, at, chan);
                    const double value = lut.getVal(at, chan);
                    EXPECT_TRUE(value == 0.0 || value == 1.0) << value;
                    const bool known = chan == 0 || chan == 2;
                    EXPECT_EQ(lut.getChan(chan) != nullptr, known);
                    EXPECT_EQ(lut.getOrigin(chan) == nullptr, !known);
                }
            }
        }
    }
    EXPECT_EQ(zelLut(INT_MAX, zelDouble, 0, 1, INT_MAX).getLength(), 0);
    EXPECT_TRUE(zelLut(-2, zelInt, 0, 1, 5).setVal(1, 0, 0) == zelBADPARAMS);
}

TEST(Lut, GivesAddressesOfChannels) {
    zelLut lut(3, zelUShort, 10, 19, 10);
    auto* data = static_cast<unsigned short*>(lut.getData());
    for (int chan = 0; chan < 3; ++chan) {
        lut.setVal(chan + 1, 14, chan);
        EXPECT_EQ(lut.getChan(chan), data + 10 * chan);
        EXPECT_EQ(static_cast<unsigned short*>(lut.getOrigin(chan))[14], chan + 1);
    }
}

TEST(Lut, OwnsItsStorageOrUsesTheCallers) {
    unsigned char table[] = {1, 2, 3, 4};
    zelLut lut(1, zelUChar, 0, 3, 4);
    lut.setData(table);

    zelLut copy(1, zelDouble, 0, 1, 2);
    copy = lut;
    table[2] = 50;
    EXPECT_EQ(copy.getVal(2, 0), 3.0);
    EXPECT_EQ(lut.getVal(2, 0), 50.0);
    const zelLut& self = copy;
    copy = self;
    copy.setData(copy.getData());
    EXPECT_EQ(copy.getVal(2, 0), 3.0);
    // A table over the storage of the one it is copied to.
    lut.setData(copy.getData());
    copy = lut;
    EXPECT_EQ(copy.getVal(2, 0), 3.0);

    lut.setData(nullptr);
    EXPECT_EQ(lut.getVal(2, 0), 0.0);
    EXPECT_TRUE(lut.setVal(1, 0, 0) == zelBADPARAMS);
    EXPECT_EQ(zelLut(lut).isDiff(lut), 0);
}

TEST(Lut, WithoutEntriesReadsZeroAndIsCopiedAsSuch) {
    const zelLut none, empty(2, zelFloat, 5, 4, 0);
    for (const zelLut* lut : {&none, &empty}) {
        const zelLut copy(*lut);
        EXPECT_EQ(copy.getLength(), 0);
        EXPECT_EQ(copy.getNumChans(), lut->getNumChans());
        EXPECT_EQ(copy.getDomainMin(), lut->getDomainMin());
        EXPECT_EQ(copy.getVal(0, 0), 0.0);
        EXPECT_EQ(copy.isDiff(*lut), 0);
    }
}

TEST(Lut, DiffersByShapeAndNumbersOnly) {
    zelLut bytes(1, zelUChar, 0, 3, 4), floats(1, zelFloat, 10, 20, 4);
    EXPECT_EQ(bytes.isDiff(floats), 0);
    floats.setVal(0.5, 20, 0);
    EXPECT_EQ(bytes.isDiff(floats), 1);
    floats.setVal(std::nan(""), 20, 0);
    EXPECT_EQ(floats.isDiff(floats), 0);
    EXPECT_EQ(bytes.isDiff(zelLut(1, zelUChar, 0, 4, 5)), 1);
    EXPECT_EQ(bytes.isDiff(zelLut(2, zelUChar, 0, 3, 4)), 1);
}
