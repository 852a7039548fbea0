#include <zel/zelTileIter.h>

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>
#include <tuple>
#include <vector>

namespace {

using Page = std::tuple<int, int, int, int>; // c, z, y, x: the order of the walk
using Pages = std::vector<Page>;

Pages walk(zelTileIter& iter) {
    Pages pages;
    while (iter.more())
        pages.emplace_back(iter.c, iter.z, iter.y, iter.x);
    return pages;
}

/// The x origins of a walk along x alone.
std::vector<int> walkX(int from, int to, int page, int border, bool includeBorder,
                       bool aligned = false) {
    zelTileIter iter(zelTile3D<int>(from, 0, 0, to - from, 1, 1), zelSize(page, 1, 1, 1), 1,
                     nullptr, aligned);
    iter.setPageBorder(zelXYZ<int>(border, 0, 0), includeBorder);
    std::vector<int> origins;
    while (iter.more())
        origins.push_back(iter.x);
    return origins;
}

TEST(TileIter, walksAlongXAsWorkedByHand) {
    using List = std::vector<int>;
    EXPECT_EQ(walkX(100, 200, 64, 0, true), (List{64, 128, 192}));
    EXPECT_EQ(walkX(64, 128, 64, 0, true), (List{64}));
    EXPECT_EQ(walkX(10, 10, 64, 0, true), (List{}));
    EXPECT_EQ(walkX(-10, 10, 64, 0, true), (List{-64, 0}));
    EXPECT_EQ(walkX(100, 110, 64, 8, true), (List{40, 88}));
    EXPECT_EQ(walkX(100, 110, 64, 8, false), (List{88}));
    EXPECT_EQ(walkX(100, 150, 64, 8, false), (List{88}));
    EXPECT_EQ(walkX(100, 160, 64, 8, false), (List{88, 136}));
    EXPECT_EQ(walkX(100, 300, 64, 0, true, true), (List{100, 164, 228, 292}));
    EXPECT_EQ(walkX(0, 40, 8, -4, true), (List{-12, 4, 20, 36})) << "with gaps";
    EXPECT_EQ(walkX(0, 100, 16, 8, true), (List{})) << "nothing lies between the borders";
    EXPECT_EQ(walkX(0, 100, 0, 0, true), (List{}));
}

TEST(TileIter, visitsChannelPagesThatAreWanted) {
    struct Case {
        int pageChans, fileChans, nchans, choff;
        std::vector<int> list;
        std::vector<int> pages;
        int count;
    };
    const Case cases[] = {{1, 3, 2, 0, {2, 0}, {0, 2}, 3},
                          {3, 3, 2, 0, {2, 0}, {0}, 1},
                          {2, 4, 1, 3, {}, {2}, 1},
                          {1, 3, 0, 1, {}, {1, 2, 3}, 3},
                          {1, 3, 2, 0, {-1, -1}, {}, 0},
                          {2, 9, 3, 5, {-1, 8, 0}, {0, 8}, 5},
                          {1, 3, 1, 0, {INT_MAX - 1}, {INT_MAX - 1}, INT_MAX - 3}};
    for (const Case& wanted : cases) {
        std::vector<int> list = wanted.list;
        const zelConfig config(zelUChar, zelInterleaved, wanted.nchans,
                               list.empty() ? nullptr : list.data(), wanted.choff,
                               zelLowerLeftOrigin);
        zelTileIter iter(zelTile3D<int>(0, 0, 0, 1, 1, 1), zelSize(1, 1, 1, wanted.pageChans),
                         wanted.fileChans, &config);
        EXPECT_EQ(iter.getCount(), wanted.count);
        std::vector<int> pages;
        while (iter.more())
            pages.push_back(iter.c);
        EXPECT_EQ(pages, wanted.pages);
    }
}

TEST(TileIter, staysInTheIntRange) {
    using List = std::vector<int>;
    EXPECT_EQ(walkX(INT_MAX - 70, INT_MAX, 64, 0, true), (List{INT_MAX - 127, INT_MAX - 63}));
    EXPECT_EQ(walkX(INT_MIN, INT_MIN + 10, 64, 0, true), (List{})) << "no step before the first";
    EXPECT_EQ(walkX(0, INT_MAX, INT_MAX, 0, true), (List{0}));
    zelTileIter beyond(zelTile3D<int>(INT_MAX - 1, 0, 0, INT_MAX, 1, 1), zelSize(1, 1, 1, 1), 1);
    EXPECT_EQ(beyond.getCount(), 1);
    zelTileIter many(zelTile3D<int>(0, 0, 0, INT_MAX, INT_MAX, INT_MAX), zelSize(1, 1, 1, 1),
                     INT_MAX);
    EXPECT_EQ(many.getCount(), INT_MAX);
    zelTileIter wide(zelTile3D<int>(0, 0, 0, 1, 1, 1), zelSize(INT_MAX, 1, 1, 1), 1);
    wide.setPageBorder(zelXYZ<int>(INT_MIN, INT_MIN, INT_MIN), 1);
    EXPECT_EQ(wide.more(), 0);
    int list[] = {0, 1};
    const zelConfig listed(zelUChar, zelInterleaved, 2, list, 0, zelLowerLeftOrigin);
    zelTileIter lacking(zelTile3D<int>(0, 0, 0, 1, 1, 1), zelSize(1, 1, 1, 1), 2, &listed);
    EXPECT_EQ(lacking.more(), 1);
    lacking.setTile(zelTile3D<int>(0, 0, 0, 1, 1, 1), -1);
    EXPECT_EQ(lacking.more(), 0) << "no channels, and no list any more";
    zelTileIter fresh;
    EXPECT_EQ(fresh.more(), 0);
}

/// The page origins on one axis by trying every one in reach.
std::vector<int> naiveOrigins(int from, int to, int page, int border, bool includeBorder,
                              bool aligned) {
    const int pitch = page - 2 * border;
    std::vector<int> origins;
    for (int origin = aligned ? from : -border - 300 * pitch; origin < to && from < to;
         origin += pitch) {
        const bool isFirst = origin <= from && origin + pitch > from;
        const bool reached =
            aligned || (includeBorder ? origin + page > from
                                      : isFirst || (origin > from && origin + 2 * border < to));
        if (reached)
            origins.push_back(origin);
    }
    return origins;
}

TEST(TileIter, agreesWithTryingEveryPage) {
    std::mt19937 random(20261);
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int round = 0; round < 20000; ++round) {
        const bool aligned = pick(0, 3) == 0;
        const bool includeBorder = pick(0, 1) == 1;
        int from[3], to[3], page[3], border[3];
        std::vector<int> origins[3];
        for (int axis = 0; axis < 3; ++axis) {
            page[axis] = pick(1, 9);
            border[axis] = pick(0, 1) ? pick(0, page[axis] / 4) : 0;
            from[axis] = pick(-20, 20);
            to[axis] = from[axis] + pick(0, 12);
            origins[axis] = naiveOrigins(from[axis], to[axis], page[axis], border[axis],
                                         includeBorder, aligned);
        }
        const int fileChans = pick(1, 7);
        const int pageChans = pick(1, 4);
        zelConfig config(zelUChar, zelInterleaved, pick(1, fileChans), nullptr, 0,
                         zelLowerLeftOrigin);
        config.choff = pick(0, fileChans - config.nchans);
        std::vector<int> list;
        for (int i = 0; i < config.nchans; ++i)
            list.push_back(pick(-2, fileChans - 1));
        if (pick(0, 1))
            config.channels = list.data();
        std::set<int> channelPages;
        const int firstPage = aligned && !config.channels ? config.choff % pageChans : 0;
        for (int i = 0; i < config.nchans; ++i) {
            const int channel = config.channels ? list[static_cast<size_t>(i)] : config.choff + i;
            if (channel >= 0)
                channelPages.insert(channel - (channel - firstPage) % pageChans);
        }

        Pages expected;
        for (int c : channelPages)
            for (int z : origins[2])
                for (int y : origins[1])
                    for (int x : origins[0])
                        expected.emplace_back(c, z, y, x);
        zelTileIter iter(zelTile3D<int>(from[0], from[1], from[2], to[0] - from[0], to[1] - from[1],
                                        to[2] - from[2]),
                         zelSize(page[0], page[1], page[2], pageChans), fileChans, &config,
                         aligned);
        iter.setPageBorder(zelXYZ<int>(border[0], border[1], border[2]), includeBorder);
        if (!config.channels) {
            ASSERT_EQ(iter.getCount(), static_cast<int>(expected.size())) << "round " << round;
        }
        ASSERT_EQ(walk(iter), expected) << "round " << round;
    }
}

} // namespace
