// Where elements lie, which of them take part, and constant pixels, by worked examples.

#include <gtest/gtest.h>
#include <zel/zelBitArray.h>
#include <zel/zelConverter.h>
#include <zel/zelPixel.h>

#include <array>
#include <climits>
#include <cstdint>
#include <numeric>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Shows the strides.
struct Strides : zelConverter {
    Strides(zelOrder wanted, int nc, int transpose, zelFlip flip) {
        init(nullptr, zelUChar, wanted, nc, nullptr, 4, 2, 1, 0, 0, 0, 0);
        setFlip(flip);
        setTransposeXY(transpose);
    }
    std::array<int, 4> get() const { return {stride.x, stride.y, stride.z, cStride}; }
    zelOrder getOrder() const { return order; }
};

TEST(Layout, StridesFollowOrderExchangeAndFlips) {
    using Expected = std::array<int, 4>;
    EXPECT_EQ((Expected{3, 12, 24, 1}), Strides(zelInterleaved, 3, 0, zelNoFlip).get());
    EXPECT_EQ((Expected{6, 3, 24, 1}), Strides(zelInterleaved, 3, 1, zelNoFlip).get());
    EXPECT_EQ((Expected{-6, 3, 24, 1}), Strides(zelInterleaved, 3, 1, zelXFlip).get());
    EXPECT_EQ((Expected{1, 12, 24, 4}), Strides(zelSequential, 3, 0, zelNoFlip).get());
    EXPECT_EQ((Expected{6, 1, 24, 2}), Strides(zelSequential, 3, 1, zelNoFlip).get());
    EXPECT_EQ((Expected{1, -4, 24, 8}), Strides(zelSeparate, 3, 0, zelYFlip).get());
    EXPECT_EQ((Expected{2, 1, 24, 8}), Strides(zelSeparate, 3, 1, zelNoFlip).get());
    EXPECT_EQ((Expected{1, 4, 8, 8}), Strides(zelInterleaved, 1, 0, zelNoFlip).get());
    EXPECT_EQ(zelSeparate, Strides(zelInterleaved, 1, 0, zelNoFlip).getOrder());
}

/// An interleaved or other block of bytes with one plane.
zelConverter bytes(Bytes& data, zelOrder order, int nc, const int* list, int nx, int ny, int x = 0,
                   int y = 0, int c = 0) {
    return {data.data(), zelUChar, order, nc, list, nx, ny, 1, x, y, 0, c};
}

Bytes counting(int count) {
    Bytes data(static_cast<std::size_t>(count));
    std::iota(data.begin(), data.end(), std::uint8_t{1});
    return data;
}

TEST(Layout, AFlippedRowRunsBackwards) {
    Bytes from = counting(4);
    Bytes to(4);
    zelConverter source = bytes(from, zelSeparate, 1, nullptr, 4, 1, 10);
    zelConverter destination = bytes(to, zelSeparate, 1, nullptr, 4, 1, 10);
    source.setFlip(zelXFlip);
    destination = source;
    EXPECT_EQ((Bytes{4, 3, 2, 1}), to);
    destination.setFlip(zelXFlip);
    destination = source; // both sides flipped: the bytes as they lie
    EXPECT_EQ(from, to);
}

TEST(Layout, PixelsBecomePlanesAndTurn) {
    Bytes from = counting(12); // 2 x 2 pixels of 3 channels
    Bytes to(12);
    zelConverter source = bytes(from, zelInterleaved, 3, nullptr, 2, 2);
    zelConverter destination = bytes(to, zelSeparate, 3, nullptr, 2, 2);
    destination = source;
    EXPECT_EQ((Bytes{1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12}), to);
    destination.setTransposeXY(1);
    destination = source;
    EXPECT_EQ((Bytes{1, 7, 4, 10, 2, 8, 5, 11, 3, 9, 6, 12}), to);
}

struct ListCase {
    std::vector<int> to;
    std::vector<int> from; ///< empty: channels 0, 1, ...
    Bytes expected;
};

TEST(Channels, AreMatchedByNumber) {
    // One pixel; the source holds 1, 2, ... in its slots and the destination 9 everywhere.
    const ListCase cases[] = {
        {{2, 0}, {0, 1, 2}, {3, 1}}, {{2, 0}, {}, {3, 1}},       {{-1, 1}, {}, {9, 2}},
        {{5, 1}, {}, {9, 2}},        {{1, 0}, {1, 1}, {1, 9}},   {{0, 0}, {0, 7}, {1, 1}},
        {{1, 1}, {1, 1}, {1, 1}},    {{-1, 1}, {-1, 1}, {9, 2}}, {{0, -1}, {0, -1}, {1, 9}},
        {{4, 5}, {}, {9, 9}},
    };
    for (const ListCase& example : cases) {
        for (const zelOrder order : {zelInterleaved, zelSequential, zelSeparate}) {
            Bytes from = counting(3);
            Bytes to(example.to.size(), 9);
            const int slots = example.from.empty() ? 3 : static_cast<int>(example.from.size());
            zelConverter source = bytes(from, order, slots,
                                        example.from.empty() ? nullptr : example.from.data(), 1, 1);
            zelConverter destination =
                bytes(to, order, static_cast<int>(to.size()), example.to.data(), 1, 1);
            destination = source;
            EXPECT_EQ(example.expected, to) << "first channel wanted " << example.to[0];
        }
    }
}

TEST(Channels, PlanesOfOneChannelDoNotLieSideBySide) {
    // Two planes of three channels, one element each: z runs outside the channels.
    Bytes from = counting(6);
    Bytes to(6);
    const int list[] = {2, 1, 0};
    zelConverter source(from.data(), zelUChar, zelSeparate, 3, nullptr, 1, 1, 2, 0, 0, 0, 0);
    zelConverter destination(to.data(), zelUChar, zelSeparate, 3, list, 1, 1, 2, 0, 0, 0, 0);
    destination = source;
    EXPECT_EQ((Bytes{3, 2, 1, 6, 5, 4}), to);
}

TEST(Boxes, OnlyWhatMeetsIsWritten) {
    Bytes from(9, 1);
    Bytes to(9);
    zelConverter destination = bytes(to, zelSeparate, 1, nullptr, 3, 3);
    zelConverter beside = bytes(from, zelSeparate, 1, nullptr, 3, 3, 3, 0);
    destination = beside;
    EXPECT_EQ(Bytes(9), to);
    zelConverter corner = bytes(from, zelSeparate, 1, nullptr, 3, 3, 1, 1);
    corner.setClip(0, 0, 0, 3, 2, 1);
    destination = corner;
    EXPECT_EQ((Bytes{0, 0, 0, 0, 1, 1, 0, 0, 0}), to);
}

// Run under UndefinedBehaviorSanitizer, this is where an index out of range would show.
TEST(Boxes, LongRowsWorldsApartWriteNothing) {
    Bytes from(3, 1);
    Bytes to(3);
    zelConverter source(from.data(), zelUChar, zelSeparate, 1, nullptr, 3, 1, 1, 0, INT_MAX,
                        INT_MAX, 0);
    zelConverter destination(to.data(), zelUChar, zelSeparate, 1, nullptr, INT_MAX, 1, 1, 0,
                             INT_MIN, INT_MIN, 0);
    destination = source;
    EXPECT_EQ(Bytes(3), to);
}

TEST(Boxes, NothingIsWrittenBeforeABlockOfNoOrder) {
    Bytes from(16, 1);
    Bytes to(32);
    zelConverter source = bytes(from, zelSeparate, 2, nullptr, 8, 1);
    zelConverter destination(to.data() + 16, zelUChar, zelOrder(0), 2, nullptr, 8, 1, 1, 0, 0, 0,
                             0);
    source.setFlip(zelXFlip);
    destination.setFlip(zelXFlip);
    destination = source;
    EXPECT_EQ(Bytes(16), Bytes(to.begin(), to.begin() + 16));
}

TEST(Boxes, TheHoleOfTheSourceStays) {
    const zelTile3D<int> hole(1, 1, 0, 2, 1, 1);
    const zelTile3D<int> flat(0, 0, 0, 4, 3, 0);
    const zelTile3D<int> all(-1, -1, 0, 9, 9, 1);
    const zelTile3D<int> beside(4, 0, 0, 2, 2, 1);
    const zelTile3D<int> block(0, 0, 0, 4, 3, 1);
    const Bytes around{1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1, 1};
    const struct {
        const zelTile3D<int>* mask;
        zelFillMode mode;
        Bytes expected;
    } cases[] = {{&hole, zelFillSome, around},
                 {&flat, zelFillAll, Bytes(12, 1)},
                 {&all, zelFillNone, Bytes(12)},
                 {&beside, zelFillAll, Bytes(12, 1)},
                 {nullptr, zelFillAll, Bytes(12, 1)}};
    for (const auto& example : cases) {
        Bytes from(12, 1);
        Bytes to(12);
        zelConverter source = bytes(from, zelSeparate, 1, nullptr, 4, 3);
        zelConverter destination = bytes(to, zelSeparate, 1, nullptr, 4, 3);
        destination.setMask(&all); // that of the destination does not count
        source.setMask(example.mask);
        EXPECT_EQ(example.mode, source.checkMask(block));
        destination = source;
        EXPECT_EQ(example.expected, to);
    }
}

TEST(ConstantPixel, IsWidenedForTheLengthOfAnAssignment) {
    const std::uint8_t grey = 200;
    const zelPixel pixel(zelUChar, 1, &grey);
    zelConverter source(pixel, nullptr, nullptr, 0);
    std::vector<float> wide(6);
    zelConverter three(wide.data(), zelFloat, zelInterleaved, 3, nullptr, 2, 1, 1, 5, 5, 5, 0);
    Bytes narrow(3);
    zelConverter one = bytes(narrow, zelSeparate, 1, nullptr, 3, 1);
    for (int pass = 0; pass < 2; ++pass) {
        wide.assign(6, 0.0F);
        narrow.assign(3, 0);
        three = source;
        one = source;
        EXPECT_EQ(std::vector<float>(6, 200.0F), wide);
        EXPECT_EQ(Bytes(3, 200), narrow);
    }
}

TEST(ConstantPixel, GivesTheMatchingChannelOutsideTheHole) {
    const std::uint8_t colour[] = {10, 20, 30};
    const zelPixel pixel(zelUChar, 3, colour);
    const zelTile3D<int> hole(1, 0, 0, 1, 1, 1);
    zelConverter source(pixel, &hole, nullptr, 0);
    Bytes to(3);
    zelConverter blue = bytes(to, zelSeparate, 1, nullptr, 3, 1, 0, 0, 2);
    blue = source;
    EXPECT_EQ((Bytes{30, 0, 30}), to);
    zelConverter empty = bytes(to, zelSeparate, 1, nullptr, 0, 1);
    empty = source;
    EXPECT_EQ((Bytes{30, 0, 30}), to);
}

TEST(ConstantPixel, AsADestinationKeepsItsSize) {
    for (const zelOrder order : {zelInterleaved, zelSeparate}) {
        Bytes from(24, 9);
        zelPixel pixel(zelUChar, 3, Bytes{1, 2, 3, 4}.data());
        zelConverter source = bytes(from, order, 3, nullptr, 8, 1);
        zelConverter destination(source);
        destination.setData(pixel, nullptr, 0);
        destination = source;
        EXPECT_EQ(pixel.max(), 9.0);
    }
}

TEST(BitArray, PacksTheFirstBitOnTop) {
    unsigned char data[] = {0x80, 0x01};
    zelBitArray bits(data);
    EXPECT_EQ(1, bits[0]);
    EXPECT_EQ(0, bits[1]);
    EXPECT_EQ(1, bits[15]);
    bits[0] = 0;
    bits[9] = -4;
    EXPECT_EQ(0x00, data[0]);
    EXPECT_EQ(0x41, data[1]);
}

} // namespace
