#include <zel/zelTile.h>

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <type_traits>

// Every member has to compile, not only those used below.
template class zelXYZ<int>;
template class zelXYZC<int>;
template class zelTile2D<int>;
template class zelTile2D<float>;
template class zelTile3D<int>;

static_assert(std::is_trivially_copyable_v<zelSize>);
static_assert(std::is_trivially_copyable_v<zelTile3D<int>>);
static_assert(sizeof(zelTile3D<int>) == 6 * sizeof(int) && sizeof(zelSize) == 4 * sizeof(int));

namespace {

typedef zelTile3D<int> Box;

Box randomBox(std::mt19937& random) {
    const auto from = [&] { return static_cast<int>(random() % 6); };
    const auto extent = [&] { return static_cast<int>(random() % 5) + 1; };
    return Box(from(), from(), from(), extent(), extent(), extent());
}

// Calls `visit` for the points of a space in which all random boxes lie.
template <class Visit>
void forEachPoint(Visit visit) {
    for (int z = -1; z < 12; ++z)
        for (int y = -1; y < 12; ++y)
            for (int x = -1; x < 12; ++x)
                visit(x, y, z);
}

} // namespace

TEST(Coord, WorksFieldByField) {
    const zelXYZC<int> a(7, -8, 9, 10), b(2);
    EXPECT_TRUE(a + b == zelXYZC<int>(9, -6, 11, 12));
    EXPECT_TRUE(a - b == zelXYZC<int>(5, -10, 7, 8));
    EXPECT_TRUE(a * b == zelXYZC<int>(14, -16, 18, 20));
    EXPECT_TRUE(a / b == zelXYZC<int>(3, -4, 4, 5));
    EXPECT_TRUE(a % b == zelXYZC<int>(1, 0, 1, 0));
    EXPECT_TRUE((a & b) == zelXYZC<int>(2, 0, 0, 2));
    EXPECT_TRUE((a | b) == zelXYZC<int>(7, -6, 11, 10));
    EXPECT_TRUE(a != b);
    EXPECT_FALSE(a < b || a > b || a <= b || a >= b);
    EXPECT_TRUE(b < b + b && b <= b && b >= b && b + b > b);
    const int fields[] = {a[zelX], a[zelY], a[zelZ], a[zelC]};
    EXPECT_EQ(fields[0] + 100 * fields[1] + 10000 * fields[2] + 1000000 * fields[3], 10089207);

    zelXYZ<int> c(1, 2, 3);
    c[zelZ] = 30;
    EXPECT_TRUE((c += zelXYZ<int>(1)) == zelXYZ<int>(2, 3, 31));
    EXPECT_TRUE((c -= c) == zelXYZ<int>(0));
}

TEST(Size, ConvertsToItsNumberOfElements) {
    EXPECT_EQ(zelSize(4, 3, 2, 5), 120);
    EXPECT_EQ(zelSize(4, 3, 2), 24);
    for (int i = 0; i < 4; ++i) {
        zelSize size(1, 2, 3, 4);
        size[static_cast<zelAxis>(i)] = 0;
        EXPECT_EQ(static_cast<int>(size), 0);
    }
    EXPECT_EQ(static_cast<int>(zelSize(1 << 30, 1 << 30, 1 << 30, 3)), 0);
}

TEST(Tile, IntersectsBoundsAndContainsAsItsPointsDo) {
    std::mt19937 random(20);
    for (int round = 0; round < 300; ++round) {
        const Box a = randomBox(random), b = randomBox(random), c = randomBox(random);
        const Box common(a, b, c);
        Box bound;
        bound.boundingBox(a, b, c);
        int commonPoints = 0;
        bool aHasAllOfB = true, aHasAllOfBBelow8 = true;
        forEachPoint([&](int x, int y, int z) {
            const bool inAll = a.contains(x, y, z) && b.contains(x, y, z) && c.contains(x, y, z);
            const bool missed = b.contains(x, y, z) && !a.contains(x, y, z);
            commonPoints += inAll;
            aHasAllOfB = aHasAllOfB && !missed;
            aHasAllOfBBelow8 = aHasAllOfBBelow8 && !(missed && x < 8 && y < 8 && z < 8);
            ASSERT_EQ(common.contains(x, y, z), inAll);
            const bool inAny = a.contains(x, y, z) || b.contains(x, y, z) || c.contains(x, y, z);
            ASSERT_TRUE(!inAny || bound.contains(x, y, z));
        });
        const bool empty = common.nx < 1 || common.ny < 1 || common.nz < 1;
        ASSERT_EQ(empty ? 0 : common.nx * common.ny * common.nz, commonPoints);
        ASSERT_EQ(a.contains(b), aHasAllOfB);
        ASSERT_EQ(a.contains(b, 8, 8, 8), aHasAllOfBBelow8);
        ASSERT_TRUE(a.contains(a) && bound.contains(a) && bound.contains(b) && bound.contains(c));
    }
}

TEST(Tile, HasTheWorkedEdges) {
    typedef zelTile2D<int> Tile;
    EXPECT_TRUE(Tile(Tile(0, 0, 10, 4), Tile(10, 0, 5, 4)) == Tile(10, 0, 0, 4));
    EXPECT_TRUE(Tile(Tile(0, 0, 10, 4), Tile(30, 0, 5, 4)) == Tile(30, 0, -20, 4));
    const Tile receiver(0, 0, 100, 50), page(64, 0, 64, 50);
    EXPECT_TRUE(receiver.contains(page, 100, 50));
    EXPECT_FALSE(receiver.contains(page, 101, 50));

    Tile self(2, 2, 10, 10);
    self.intersect(self, Tile(5, 0, 4, 4));
    EXPECT_TRUE(self == Tile(5, 2, 4, 2));
    // Ends that an int does not hold.
    EXPECT_TRUE(Tile(Tile(INT_MAX, 0, INT_MAX, 1), Tile(INT_MIN, 0, INT_MIN, 1)) ==
                Tile(INT_MAX, 0, INT_MIN, 1));
    EXPECT_TRUE(Tile(INT_MAX - 1, 0, 9, 1).contains(INT_MAX, 0));
}

TEST(Tile, MovesGrowsAndKeepsItsFieldOrder) {
    Box box(1, 2, 3, 10, 20, 30);
    EXPECT_TRUE((box += zelXYZ<int>(1, 1, 1)) == Box(2, 3, 4, 10, 20, 30));
    EXPECT_TRUE((box -= zelXY<int>(2, 3)) == Box(0, 0, 4, 10, 20, 30));
    EXPECT_TRUE(box.grow(zelXYZ<int>(1, 2, 3)) == Box(-1, -2, 1, 12, 24, 36));
    EXPECT_TRUE(box.shrink(zelXYZ<int>(1, 2, 3)) == Box(0, 0, 4, 10, 20, 30));
    box = zelTile2D<int>(7, 8, 9, 10);
    EXPECT_TRUE(box == Box(zelTile2D<int>(7, 8, 9, 10), 4, 30));
    int fields[6];
    std::memcpy(fields, &box, sizeof fields);
    EXPECT_EQ(std::to_array(fields), (std::array{7, 8, 9, 10, 4, 30}));
    EXPECT_EQ(box.origin(zelZ), 4);
    box.size(zelY) = 11;
    EXPECT_EQ(box.ny, 11);
}
