#include <zel/zelPixel.h>

#include "support/naiveConvert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr zelDataType none = static_cast<zelDataType>(0);

// A pixel said once more, on a vector of bytes that grows by zeros.
struct NaivePixel {
    zelDataType type = none;
    int count = 0;
    std::vector<unsigned char> bytes;

    double get(int index) const {
        if (count == 0)
            return 0.0;
        return naive::readElement(type, bytes.data(), std::max(std::min(index, count - 1), 0));
    }
    void set(double value, int index) {
        if (index < 0)
            return;
        if (index >= count) {
            type = type ? type : zelDouble;
            count = index + 1;
            bytes.resize(zelDataSize(type, count));
        }
        naive::writeElement(type, bytes.data(), index, value, true);
    }
    NaivePixel convert(zelDataType toType, int nc, const int* chans) const {
        NaivePixel result;
        result.type = toType;
        for (int i = 0; i < (nc ? nc : count); ++i)
            result.set(get(chans ? chans[i] : i), i);
        return result;
    }
};

bool same(double a, double b) {
    return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

void expectSame(const zelPixel& pixel, const NaivePixel& model) {
    ASSERT_EQ(pixel.getDataType(), model.type);
    ASSERT_EQ(pixel.getNumChans(), model.count);
    double min = model.get(0), max = min;
    for (int i = -2; i < model.count + 2; ++i) {
        const double value = model.get(i);
        ASSERT_TRUE(same(pixel.getElem(i), value)) << i << ": " << pixel.getElem(i);
        if (i > 0 && i < model.count) {
            min = min < value ? min : value;
            max = max > value ? max : value;
        }
    }
    ASSERT_TRUE(same(pixel.min(), min) && same(pixel.max(), max));
}

class RandomInput {
public:
    int below(int end) { return static_cast<int>(engine() % static_cast<unsigned>(end)); }
    zelDataType type() { return static_cast<zelDataType>(1 << below(9)); }
    double value() {
        const double special[] = {0.0, -0.0, 0.9, 256.0, 4294967296.0, HUGE_VAL, -1e300, NAN};
        if (below(3) == 0)
            return special[below(8)];
        return (below(2) ? 1.0 : -1.0) * std::ldexp(below(INT_MAX) / 2147483648.0, below(66));
    }
    std::vector<int> channels(int count) {
        std::vector<int> list(static_cast<std::size_t>(count));
        for (int& chan : list)
            chan = below(12) - 2;
        return list;
    }

private:
    std::mt19937 engine{45};
};

} // namespace

TEST(Pixel, AgreesWithANaiveOneOverRandomCalls) {
    RandomInput random;
    zelPixel pixel;
    NaivePixel model;
    for (int round = 0; round < 40000; ++round) {
        const int call = random.below(16);
        if (call < 9) {
            const double value = random.value();
            const int index = random.below(model.count + 3) - 1;
            pixel.setElem(value, index);
            model.set(value, index);
        } else if (call < 14) {
            const zelDataType type = random.type();
            const int nc = random.below(10);
            std::vector<int> list = random.channels(std::max(nc, model.count));
            int* chans = random.below(2) ? list.data() : nullptr;
            const zelPixel before = pixel;
            random.below(2) ? pixel.convert(pixel, type, nc, chans)
                            : pixel.convert(before, type, nc, chans);
            model = model.convert(type, nc, chans);
        } else if (call == 14) {
            const zelDataType type = random.type();
            std::vector<unsigned char> bytes(zelDataSize(type, 7));
            for (unsigned char& byte : bytes)
                byte = static_cast<unsigned char>(random.below(256));
            pixel.set(type, 7, bytes.data());
            model = {type, 7, bytes};
        } else {
            pixel.set(model.type, 0, &round);
            model = {model.type, 0, {}};
        }
        expectSame(pixel, model);
        if (HasFatalFailure())
            FAIL() << "round " << round << " call " << call;
    }
}

TEST(Pixel, StoresTheWorkedNumbers) {
    const struct {
        zelDataType type;
        double stored, read;
    } cases[] = {
        {zelUChar, 300.0, 44.0}, {zelUChar, -1.0, 255.0},   {zelBit, 0.9, 0.0},
        {zelBit, -1.0, 1.0},     {zelShort, 70000.5, 4464}, {zelUInt, 4294967295.0, 4294967295.0},
    };
    for (const auto& c : cases) {
        zelPixel pixel(c.type, 1, nullptr);
        pixel.setElem(c.stored, 0);
        EXPECT_EQ(pixel[0], c.read) << c.type << " " << c.stored;
    }
}

TEST(Pixel, HasElementsOrNone) {
    zelPixel pixel, other;
    EXPECT_TRUE(pixel == other);
    for (const int count : {0, -3}) {
        pixel.set(zelFloat, count, &other);
        EXPECT_EQ(pixel.getDataType(), zelFloat);
        EXPECT_EQ(pixel.getData(), nullptr);
    }
    pixel.convert(other, zelInt, -3, nullptr);
    EXPECT_EQ(pixel.getElem(0), 0.0);
    // An index whose successor no int holds cannot make the pixel grow.
    pixel.setElem(1.0, INT_MAX);
    EXPECT_EQ(pixel.getNumChans(), 0);
}

TEST(Pixel, KeepsItsBufferForLessAndCopiesDeep) {
    const double wide[] = {1, 2, 3, 4};
    const unsigned char narrow[] = {5, 6, 7, 8};
    zelPixel pixel(zelDouble, 4, wide);
    const void* buffer = pixel.getData();
    pixel.set(zelUChar, 4, narrow);
    EXPECT_EQ(pixel.getData(), buffer);
    zelPixel copy(pixel);
    copy.setElem(9, 0);
    EXPECT_EQ(pixel.getElem(0), 5.0);
    EXPECT_TRUE(copy != pixel);
    copy = pixel;
    EXPECT_TRUE(copy == pixel);
    // From its own buffer, to more elements of it than now count.
    pixel.set(zelUShort, 2, pixel.getData());
    EXPECT_EQ(std::memcmp(pixel.getData(), narrow, 4), 0);
}

TEST(Pixel, ComparesBytesAndNotNumbers) {
    const double zeros[] = {0.0, -0.0};
    EXPECT_TRUE(zelPixel(zelDouble, 1, zeros) != zelPixel(zelDouble, 1, zeros + 1));
    const unsigned char bits[] = {0x80, 0x81};
    EXPECT_TRUE(zelPixel(zelBit, 7, bits) != zelPixel(zelBit, 7, bits + 1));
    EXPECT_TRUE(zelPixel(zelUChar, 1, bits) != zelPixel(zelChar, 1, bits));
}

TEST(Pixel, OfAnUnknownTypeHoldsNothing) {
    for (const int type : {3, 512, -1}) {
        zelPixel pixel(static_cast<zelDataType>(type), 4, nullptr);
        pixel.setElem(7.0, 2);
        pixel.setElem(7.0, 8);
        EXPECT_EQ(pixel.getElem(2) + pixel.max(), 0.0);
        // And without a type, growing does not take the old elements along.
        pixel.convert(zelPixel(), none, 6, nullptr);
        pixel.setElem(2.5, 7);
        EXPECT_EQ(pixel.getElem(3), 0.0);
        EXPECT_EQ(pixel.getElem(7), 2.5);
    }
}
