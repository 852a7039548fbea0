#include <zel/zelConfig.h>

#include <gtest/gtest.h>

#include <array>

namespace {

zelConfig configOf(int nchans, int* list, int choff) {
    return {zelUChar, zelInterleaved, nchans, list, choff, zelUpperLeftOrigin};
}

} // namespace

TEST(Config, MapsPositionsToChannels) {
    int list[] = {9, 4, 0, -1, 4};
    const zelConfig run = configOf(3, nullptr, 2);
    const zelConfig listed = configOf(3, list, 2);
    const zelConfig empty = configOf(0, list, 0);
    const int ofRun[] = {-1, 2, 3, 4, -1}, ofList[] = {-1, 0, -1, 4, -1};
    for (int i = -1; i < 4; ++i) {
        EXPECT_EQ(run.mapChan(i), ofRun[i + 1]) << i;
        EXPECT_EQ(listed[i], ofList[i + 1]) << i;
        EXPECT_EQ(empty.mapChan(i), -1) << i;
    }
    EXPECT_EQ(zelConfig().nchans, 0);
    EXPECT_EQ(zelConfig().channels, nullptr);
}

TEST(Config, ComposesInPlace) {
    int list[] = {5, 6, 7};
    std::array<int, 5> positions = {2, 0, 3, -1, 1};
    configOf(3, list, 0).compose(4, positions.data(), positions.data());
    EXPECT_EQ(positions, (std::array<int, 5>{7, 5, -1, -1, 1}));
}

TEST(Config, InvertsWithinTheArrayGiven) {
    int list[] = {2, 0, 2, 9, -1};
    std::array<int, 5> reverse = {77, 77, 77, 77, 77};
    const zelConfig config = configOf(5, list, 0);
    config.invert(4, reverse.data());
    EXPECT_EQ(reverse, (std::array<int, 5>{1, -1, 2, -1, 77}));
    config.invert(-1, reverse.data());
    EXPECT_EQ(reverse[0], 1);
}

TEST(Config, IsInvertableIfNoChannelIsHeldTwice) {
    int distinct[] = {0, 2, 1}, same[] = {0, 1, 0}, skipped[] = {-1, 0, -1};
    EXPECT_EQ(configOf(3, distinct, 0).isInvertable(), 1);
    EXPECT_EQ(configOf(3, same, 0).isInvertable(), 0);
    EXPECT_EQ(configOf(2, same, 0).isInvertable(), 1);
    EXPECT_EQ(configOf(3, skipped, 0).isInvertable(), 0);
    EXPECT_EQ(configOf(0, same, 0).isInvertable(), 1);
    EXPECT_EQ(configOf(3, nullptr, 7).isInvertable(), 1);
}
