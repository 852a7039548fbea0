#include <zel/zelOSKColormap.h>

#include <gtest/gtest.h>

#include <array>

namespace {

typedef std::array<int, 3> Color;

Color colorOf(const zelLut& map, int index) {
    Color color{};
    for (int chan = 0; chan < 3; ++chan)
        color[static_cast<std::size_t>(chan)] = static_cast<int>(map.getVal(index, chan));
    return color;
}

} // namespace

TEST(Colormap, HasAnEntryForEachIndex) {
    zelColormap own(3, zelUShort, 0, 255);
    EXPECT_EQ(own.getLength(), 256);
    ASSERT_TRUE(own.setVal(771, 3, 2) == zelOKAY);
    EXPECT_EQ(static_cast<unsigned short*>(own.getData())[512 + 3], 771);

    unsigned char table[6] = {1, 2, 3, 4, 5, 6};
    const zelColormap over(table, 2, zelUChar, -1, 1);
    EXPECT_EQ(over.getData(), table);
    EXPECT_EQ(over.getVal(-1, 1), 4.0);
    zelColormap copy(over);
    table[3] = 99;
    EXPECT_EQ(copy.getVal(-1, 1), 4.0);
    copy = over;
    EXPECT_EQ(copy.getVal(-1, 1), 99.0);
    EXPECT_EQ(zelColormap().getLength(), 0);
}

TEST(OskColormap, HasTheWorkedColours) {
    const zelOSKColormap map;
    EXPECT_EQ(map.getNumChans(), 3);
    EXPECT_EQ(map.getLength(), 224);
    EXPECT_EQ(map.getDataType(), zelUChar);
    EXPECT_EQ(map.getDomainMin(), 32.0);
    EXPECT_EQ(map.getDomainMax(), 255.0);
    EXPECT_EQ(static_cast<unsigned char*>(map.getOrigin(0)) + 32, map.getData());
    const struct {
        int index;
        Color color;
    } cases[] = {
        {0, {10, 10, 10}},      {32, {10, 10, 10}}, {36, {51, 51, 51}}, {55, {244, 244, 244}},
        {56, {0, 0, 0}},        {57, {0, 36, 0}},   {63, {0, 255, 0}},  {64, {63, 0, 0}},
        {95, {255, 255, 0}},    {96, {0, 0, 63}},   {136, {0, 0, 127}}, {255, {255, 255, 255}},
        {300, {255, 255, 255}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(colorOf(map, c.index), c.color) << c.index;
    double min = -1, max = -1;
    map.getRange(min, max);
    EXPECT_EQ(min, 0.0);
    EXPECT_EQ(max, 255.0);
}

TEST(OskColormap, IsSharedUntilCopied) {
    const zelOSKColormap map, second;
    EXPECT_EQ(map.getData(), second.getData());
    zelOSKColormap copy(map);
    EXPECT_NE(copy.getData(), map.getData());
    EXPECT_TRUE(copy.setVal(11, 32, 0) == zelOKAY);
    EXPECT_EQ(second.getVal(32, 0), 10.0);
    copy = map;
    EXPECT_EQ(copy.isDiff(map), 0);
}
