#include <zel/zelOrientation.h>
#include <zel/zelTypeNames.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

namespace {

typedef std::pair<int, int> Point;

// A picture of 5 columns and 3 rows, and where its pixels lie in each orientation, worked out from
// the orientation's name alone.
constexpr int columns = 5, rows = 3;

class Frame {
public:
    explicit Frame(zelOrientation orientation)
        : name(orientation == 0 ? "lower-left" : zelOrientationName(orientation)) {
        exchanged = name.find("left") == 0 || name.find("right") == 0;
    }

    zelSize size() const {
        return exchanged ? zelSize(rows, columns, 1, 1) : zelSize(columns, rows, 1, 1);
    }
    // The picture's column and row, from its upper left corner, of the pixel at (x, y).
    Point seen(Point p) const {
        const int alongWidth = exchanged ? p.second : p.first;
        const int alongHeight = exchanged ? p.first : p.second;
        const bool right = name.find("right") != std::string::npos;
        const bool low = name.find("lower") != std::string::npos;
        return {right ? columns - 1 - alongWidth : alongWidth,
                low ? rows - 1 - alongHeight : alongHeight};
    }
    // The same turned round.
    Point at(Point pixel) const {
        for (int y = 0; y < size().y; ++y)
            for (int x = 0; x < size().x; ++x)
                if (seen({x, y}) == pixel)
                    return {x, y};
        return {-1, -1};
    }

private:
    std::string name;
    bool exchanged;
};

template <class Visit>
void forEachPair(Visit visit) {
    for (int from = 0; from <= 8; ++from)
        for (int to = 0; to <= 8; ++to) {
            SCOPED_TRACE("from " + std::to_string(from) + " to " + std::to_string(to));
            visit(static_cast<zelOrientation>(from), static_cast<zelOrientation>(to));
        }
}

} // namespace

TEST(Orientation, MapsEveryPixelToWhereItIsSeen) {
    forEachPair([](zelOrientation from, zelOrientation to) {
        const Frame source(from), target(to);
        for (int y = 0; y < source.size().y; ++y)
            for (int x = 0; x < source.size().x; ++x) {
                const Point expected = target.at(source.seen({x, y}));
                int ix = x, iy = y;
                zelMapXY(from, ix, iy, to, target.size());
                ASSERT_EQ(Point(ix, iy), expected);
                auto fx = static_cast<float>(x), fy = static_cast<float>(y);
                zelMapXY(from, fx, fy, to, target.size());
                ASSERT_EQ(std::make_pair(fx, fy), (std::pair<float, float>(expected)));
            }
        zelSize size = source.size();
        zelMapSize(from, size, to);
        ASSERT_TRUE(size == target.size());
    });
}

TEST(Orientation, MapsATileToTheSmallestCornerOfItsPixels) {
    forEachPair([](zelOrientation from, zelOrientation to) {
        const Frame source(from), target(to);
        const zelTile2D<int> tile(1, 0, 2, 3);
        const Point a = target.at(source.seen({1, 0})), b = target.at(source.seen({2, 2}));
        const zelTile2D<int> expected(std::min(a.first, b.first), std::min(a.second, b.second),
                                      std::abs(a.first - b.first) + 1,
                                      std::abs(a.second - b.second) + 1);
        zelTile2D<int> mapped = tile, reported = tile;
        zelTile2D<float> real(1, 0, 2, 3);
        const zelTile2D<float> expectedReal(
            static_cast<float>(expected.x), static_cast<float>(expected.y),
            static_cast<float>(expected.nx), static_cast<float>(expected.ny));
        zelFlip flip = zelNoFlip;
        int trans = -1;
        zelMapTile(from, mapped, to, target.size());
        zelMapTile(from, reported, flip, trans, to, target.size());
        zelMapTile(from, real, to, target.size());
        ASSERT_TRUE(mapped == expected && reported == expected && real == expectedReal);

        // The report: exchange first, then flip.
        Point p = trans ? Point(0, 1) : Point(1, 0);
        p.first = flip & zelXFlip ? target.size().x - 1 - p.first : p.first;
        p.second = flip & zelYFlip ? target.size().y - 1 - p.second : p.second;
        ASSERT_EQ(p, target.at(source.seen({1, 0})));
    });
}

TEST(Orientation, MapsDirectionsAndKnowsMirrors) {
    forEachPair([](zelOrientation from, zelOrientation to) {
        const Frame source(from), target(to);
        const Point o = target.at(source.seen({0, 0}));
        const Point dx = target.at(source.seen({1, 0})), dy = target.at(source.seen({0, 1}));
        const int xx = dx.first - o.first, xy = dx.second - o.second;
        const int yx = dy.first - o.first, yy = dy.second - o.second;
        float x = 3, y = 10;
        zelMapXYSign(from, x, y, to);
        ASSERT_EQ(static_cast<int>(x), 3 * xx + 10 * yx);
        ASSERT_EQ(static_cast<int>(y), 3 * xy + 10 * yy);
        ASSERT_EQ(zelOrientationIsMirror(from, to), xx * yy - xy * yx < 0 ? 1 : 0);
    });
}

TEST(Orientation, FollowsFlipsAndExchange) {
    for (int from = 0; from <= 8; ++from) {
        const Frame source(static_cast<zelOrientation>(from));
        for (int steps = 0; steps < 8; ++steps) {
            const bool flipX = steps & 1, flipY = steps & 2, trans = steps & 4;
            const zelOrientation to =
                zelMapOrientation(static_cast<zelOrientation>(from), flipX, flipY, trans);
            // The pixel at (1, 0) once the axes were reversed and exchanged.
            Point p(flipX ? source.size().x - 2 : 1, flipY ? source.size().y - 1 : 0);
            if (trans)
                std::swap(p.first, p.second);
            ASSERT_EQ(Frame(to).seen(p), source.seen({1, 0})) << from << " by " << steps;
        }
    }
}

TEST(Orientation, TakesAnyValue) {
    const auto wild = static_cast<zelOrientation>(1000000), negative = zelOrientation(-1);
    EXPECT_EQ(zelMapOrientation(wild, 1, 0, 0), zelLowerRightOrigin);
    EXPECT_EQ(zelOrientationIsMirror(negative, zelUpperLeftOrigin), 1);
    int x = 2147483647, y = -2147483647 - 1;
    zelMapXY(zelLowerLeftOrigin, x, y, zelUpperRightOrigin, zelSize(-2147483647, 5, 1, 1));
    zelTile2D<int> tile(2147483647, 2147483647, 2147483647, 2147483647);
    zelMapTile(zelLowerLeftOrigin, tile, zelUpperRightOrigin, zelSize(-2147483647, 5, 1, 1));
    EXPECT_EQ(tile.nx, 2147483647);
}
