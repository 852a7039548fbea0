#include <zel/zelFile.h>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <climits>
#include <random>

#include "support/childProcess.h"
#include "support/memoryFile.h"

// Where memory is watched, an allocation that is too large gives null as it does elsewhere.
extern "C" ZEL_API const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=4096";
}

namespace {

using namespace zel::test;

constexpr zelStatus badParams = zelStatusEncode(zelBADPARAMS);

/// A file of 100 by 100 pixels in pages of 64 by 64, three channels in each.
class TileRoad : public testing::Test {
protected:
    TileRoad() {
        file.describe(zelSize(100, 100, 1, 3), zelSize(64, 64, 1, 3));
        area = file.image();
        for (size_t i = 0; i < pixelCount; ++i)
            area.data[i] = static_cast<unsigned char>(i * 7 % 251);
    }

    static constexpr size_t pixelCount = size_t{100} * 100 * 3;
    Log log;
    Plan plan;
    MemoryFile file{log, plan};
    naive::Area area;
    std::vector<unsigned char> data = std::vector<unsigned char>(pixelCount);
};

const Log allGets = {"get 0 0 0 0 64 64 1 3", "get 64 0 0 0 36 64 1 3", "get 0 64 0 0 64 36 1 3",
                     "get 64 64 0 0 36 36 1 3"};
const Log allSets = {"set 0 0 0 0 64 64 1 3", "set 64 0 0 0 36 64 1 3", "set 0 64 0 0 64 36 1 3",
                     "set 64 64 0 0 36 36 1 3"};

TEST_F(TileRoad, visitsEachPageOnce) {
    EXPECT_EQ(file.getTile(0, 0, 0, 100, 100, 1, data.data(), nullptr), zelOKAY);
    EXPECT_EQ(log, allGets);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), area.data));

    log.clear();
    for (unsigned char& byte : data)
        byte = static_cast<unsigned char>(byte + 1);
    EXPECT_EQ(file.setTile(0, 0, 0, 100, 100, 1, data.data(), nullptr), zelOKAY);
    EXPECT_EQ(log, allSets);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), area.data));
}

TEST_F(TileRoad, readsWhatAWriteLeavesOut) {
    const auto calls = [&](int y, int nx, int ny, const zelConfig* config) {
        log.clear();
        EXPECT_EQ(file.setTile(0, y, 0, nx, ny, 1, data.data(), config), zelOKAY);
        return log;
    };
    const Log both = {"get 0 0 0 0 64 64 1 3", "set 0 0 0 0 64 64 1 3"};
    const Log setOnly = {"set 0 0 0 0 64 64 1 3"};
    EXPECT_EQ(calls(10, 20, 20, nullptr), both);
    EXPECT_EQ(calls(0, 64, 32, nullptr), both);
    EXPECT_EQ(area.data[size_t{99} * 3], 99 * 3 * 7 % 251);
    EXPECT_EQ(calls(0, 64, 64, nullptr), setOnly);
    zelConfig config(zelUChar, zelInterleaved, 3, nullptr, 0, zelLowerLeftOrigin);
    EXPECT_EQ(calls(0, 64, 64, &config), setOnly);
    config.nchans = 2;
    EXPECT_EQ(calls(0, 64, 64, &config), both);
    int list[] = {2, 1, 0, -1};
    config.channels = list;
    config.nchans = 4;
    EXPECT_EQ(calls(0, 64, 64, &config), setOnly);
    list[1] = 2;
    EXPECT_EQ(calls(0, 64, 64, &config), both);
}

TEST_F(TileRoad, stopsAtTheFirstFailure) {
    plan.failingPageCall = 2;
    EXPECT_EQ(file.setTile(0, 0, 0, 100, 100, 1, data.data(), nullptr), zelREADFAILED);
    EXPECT_EQ(log, Log(allSets.begin(), allSets.begin() + 3));
    EXPECT_EQ(area.data[0], 0) << "pages before it stay written";
    EXPECT_EQ(area.data[pixelCount - 1], (pixelCount - 1) * 7 % 251);

    log.clear();
    plan.failingPageCall = 3;
    EXPECT_EQ(file.setTile(0, 0, 0, 10, 10, 1, data.data(), nullptr), zelREADFAILED);
    EXPECT_EQ(log, Log{allGets[0]}) << "a page that cannot be read is not written";
}

TEST_F(TileRoad, refusesBeforeAnyPage) {
    struct Box {
        int x, y, z, nx, ny, nz;
    };
    const Box outside[] = {{-1, 0, 0, 2, 2, 1},
                           {99, 0, 0, 2, 2, 1},
                           {0, 99, 0, 1, 2, 1},
                           {0, 0, 0, 1, 1, 2},
                           {0, 0, 1, 1, 1, 1},
                           {INT_MAX, 0, 0, INT_MAX, 1, 1},
                           {INT_MIN, INT_MIN, INT_MIN, INT_MAX, INT_MAX, INT_MAX},
                           {0, 0, 0, INT_MAX, INT_MAX, INT_MAX}};
    zelConfig config(zelUChar, zelInterleaved, 0, nullptr, 0, zelRightUpperOrigin);
    for (const Box& b : outside) {
        EXPECT_EQ(file.getTile(b.x, b.y, b.z, b.nx, b.ny, b.nz, data.data(), nullptr), badParams);
        EXPECT_EQ(file.setTile(b.x, b.y, b.z, b.nx, b.ny, b.nz, data.data(), &config), badParams);
    }
    int list[] = {0, 3};
    const zelConfig bad[] = {
        {zelUChar, zelInterleaved, 1, nullptr, 3, zelLowerLeftOrigin},
        {zelUChar, zelInterleaved, 4, nullptr, 0, zelLowerLeftOrigin},
        {zelUChar, zelInterleaved, 1, nullptr, -1, zelLowerLeftOrigin},
        {zelUChar, zelInterleaved, INT_MAX, nullptr, INT_MAX, zelLowerLeftOrigin},
        {zelUChar, zelInterleaved, -2, nullptr, 0, zelLowerLeftOrigin},
        {zelUChar, zelInterleaved, 2, list, 0, zelLowerLeftOrigin},
        {static_cast<zelDataType>(0), zelInterleaved, 1, nullptr, 0, zelLowerLeftOrigin},
        {zelUChar, static_cast<zelOrder>(3), 2, nullptr, 0, zelLowerLeftOrigin},
        {zelUChar, zelInterleaved, 1, nullptr, 0, static_cast<zelOrientation>(9)},
        {zelUChar, zelInterleaved, 1, nullptr, 0, static_cast<zelOrientation>(-1)}};
    for (const zelConfig& c : bad)
        EXPECT_EQ(file.getTile(0, 0, 0, 1, 1, 1, data.data(), &c), badParams);
    EXPECT_EQ(file.getTile(0, 0, 0, 1, 1, 1, nullptr, nullptr), badParams);
    for (const zelSize& page : {zelSize(0, 64, 1, 3), zelSize(64, 64, 1, -1),
                                zelSize(INT_MAX, 2, 1, 1), zelSize(46341, 46341, 1, 1)}) {
        file.describe(zelSize(100, 100, 1, 3), page);
        EXPECT_EQ(file.getTile(0, 0, 0, 1, 1, 1, data.data(), nullptr), badParams);
    }
    EXPECT_EQ(log, Log{});
}

TEST_F(TileRoad, takesAnEmptyTileAsDone) {
    for (int extent : {0, -1, INT_MIN})
        EXPECT_EQ(file.getTile(INT_MAX, INT_MIN, 7, extent, 1, 1, nullptr, nullptr), zelOKAY);
    EXPECT_EQ(log, Log{});
    file.describe(zelSize(100, 100, 1, 3), zelSize(INT_MAX, INT_MAX, 1, 3));
    EXPECT_EQ(file.getTile(0, 0, 0, 0, 1, 1, nullptr, nullptr), badParams);
}

TEST_F(TileRoad, reachesTheEdgeOfTheLargestImage) {
    class Edge : public MemoryFile {
    public:
        using MemoryFile::MemoryFile;
        zelStatus getPage(void* page, int x, int, int, int, int nx, int, int, int) override {
            first = x;
            extent = nx;
            static_cast<unsigned char*>(page)[nx - 1] = 77;
            return zelOKAY;
        }
        int first = 0;
        int extent = 0;
    } edge(log, plan);
    edge.describe(zelSize(INT_MAX, 1, 1, 1), zelSize(100, 1, 1, 1));
    EXPECT_EQ(edge.getTile(INT_MAX - 1, 0, 0, 1, 1, 1, data.data(), nullptr), zelOKAY);
    EXPECT_EQ(edge.first, INT_MAX - INT_MAX % 100);
    EXPECT_EQ(edge.extent, INT_MAX % 100);
    EXPECT_EQ(data[0], 77);
}

TEST(TileMemory, reportsAPageThatCannotBeHad) {
    const ChildResult result = runInChild([] {
#ifndef ZEL_SANITIZED
        const rlimit limit{rlim_t{1} << 30, rlim_t{1} << 30};
        setrlimit(RLIMIT_AS, &limit);
#endif
        Log log;
        Plan plan;
        plan.failingPageCall = 0;
        MemoryFile file(log, plan);
        file.describe(zelSize(4, 4, 1, 1), zelSize(INT_MAX, 1, 1, 1), zelDouble);
        const double pixel = 0;
        const zelStatus status = file.setTile(0, 0, 0, 1, 1, 1, &pixel, nullptr);
        const zelStatus empty = file.getTile(0, 0, 0, 0, 1, 1, nullptr, nullptr);
        return std::to_string(status) + " " + std::to_string(empty) +
               (log.empty() ? " no page" : " pages");
    });
    EXPECT_EQ(result.text, "790540 790540 no page"); // 0xC100C: errno 12, kind 1, main status 12
    const std::string report = "0 zelFile::getTile(): couldn't allocate a page of 17179869176 "
                               "bytes: Cannot allocate memory";
    EXPECT_EQ(result.reports, (std::vector<std::string>{report, report}));
}

// The road against its definition: every element of the box by itself, found by the place in the
// picture at which an orientation puts it.

struct Point {
    int x, y;
};

/// From a frame to columns from the left and rows from the top of a picture of w by h, or back.
Point turn(zelOrientation o, Point p, int w, int h, bool toPicture) {
    const bool left = o == zelUpperLeftOrigin || o == zelLowerLeftOrigin ||
                      o == zelLeftUpperOrigin || o == zelLeftLowerOrigin;
    const bool upper = o == zelUpperLeftOrigin || o == zelUpperRightOrigin ||
                       o == zelLeftUpperOrigin || o == zelRightUpperOrigin;
    const bool exchanged = o >= zelLeftUpperOrigin;
    if (toPicture && exchanged)
        std::swap(p.x, p.y);
    p.x = left ? p.x : w - 1 - p.x;
    p.y = upper ? p.y : h - 1 - p.y;
    if (!toPicture && exchanged)
        std::swap(p.x, p.y);
    return p;
}

class RandomCase {
public:
    RandomCase(std::mt19937& engine, MemoryFile& theFile) : random(engine), file(theFile) {
        stored = pickOrientation();
        size = zelSize(pick(1, 13), pick(1, 11), pick(1, 3), pick(1, 5));
        pageSize = zelSize(pick(1, 15), pick(1, 13), pick(1, 4), pick(1, size.c + 1));
        file.describe(size, pageSize, pickType(), pickOrder(), stored);
        fill(file.image());
        if (pick(0, 4) != 0)
            makeConfig();
        makeClient();
    }

    void check(Log& log, bool isWrite, int round);

private:
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
    zelDataType pickType() { return static_cast<zelDataType>(1 << pick(0, 8)); }
    zelOrder pickOrder() { return static_cast<zelOrder>(1 << pick(0, 2)); }
    zelOrientation pickOrientation() { return static_cast<zelOrientation>(pick(1, 8)); }
    void fill(const naive::Area& area);
    void makeConfig();
    void makeClient();
    Point toFile(int x, int y) const;
    Log expectedCalls(bool isWrite) const;
    template <class Action>
    void forEachElement(Action action) const;

    std::mt19937& random;
    MemoryFile& file;
    zelOrientation stored, wanted;
    zelSize size, pageSize;
    zelConfig config;
    bool hasConfig = false;
    std::vector<int> list;
    naive::Area client;
    naive::Box box; ///< in the client's frame
    std::vector<unsigned char> memory;
};

void RandomCase::fill(const naive::Area& area) {
    const int count = area.box.nx * area.box.ny * area.box.nz * area.channels;
    for (int i = 0; i < count; ++i)
        naive::writeElement(area.type, area.data, i, pick(-700, 70000) / 2.0, false);
}

void RandomCase::makeConfig() {
    hasConfig = true;
    config = zelConfig(pickType(), pickOrder(), pick(1, size.c), nullptr, 0,
                       static_cast<zelOrientation>(pick(0, 8)));
    config.choff = pick(0, size.c - config.nchans);
    if (pick(0, 2) == 0) {
        // More slots than channels, empty slots and repeated channels are all allowed.
        config.nchans = pick(1, size.c + 2);
        for (int i = 0; i < config.nchans; ++i)
            list.push_back(pick(-1, size.c - 1));
        config.channels = list.data();
        config.choff = pick(-9, 9);
    } else if (config.choff == 0 && config.nchans == size.c) {
        config.nchans = 0;
    }
}

void RandomCase::makeClient() {
    client.type = hasConfig ? config.dtype : file.getDataType();
    client.order = hasConfig ? config.order : file.getOrder();
    client.channels = hasConfig && config.nchans ? config.nchans : size.c;
    client.firstChannel = hasConfig ? config.choff : 0;
    client.list = list;
    wanted = hasConfig && config.orientation ? config.orientation : stored;
    zelSize frame;
    file.getSize(frame, wanted);
    box.x = pick(0, 2) ? pick(0, frame.x - 1) : 0;
    box.y = pick(0, 2) ? pick(0, frame.y - 1) : 0;
    box.z = pick(0, frame.z - 1);
    box.nx = pick(0, 2) ? pick(1, frame.x - box.x) : frame.x - box.x;
    box.ny = pick(0, 2) ? pick(1, frame.y - box.y) : frame.y - box.y;
    box.nz = pick(1, frame.z - box.z);
    client.box = {0, 0, 0, box.nx, box.ny, box.nz};
    memory.resize(zelDataSize(client.type, box.nx * box.ny * box.nz * client.channels));
    client.data = memory.data();
    fill(client);
}

Point RandomCase::toFile(int x, int y) const {
    zelSize picture;
    file.getSize(picture, zelUpperLeftOrigin);
    return turn(stored, turn(wanted, {x, y}, picture.x, picture.y, true), picture.x, picture.y,
                false);
}

Log RandomCase::expectedCalls(bool isWrite) const {
    std::vector<bool> supplied(static_cast<size_t>(size));
    forEachElement(
        [&](std::int64_t inFile, std::int64_t) { supplied[static_cast<size_t>(inFile)] = true; });
    Log calls;
    for (int c = 0; c < size.c; c += pageSize.c)
        for (int z = 0; z < size.z; z += pageSize.z)
            for (int y = 0; y < size.y; y += pageSize.y)
                for (int x = 0; x < size.x; x += pageSize.x) {
                    const int nx = std::min(pageSize.x, size.x - x);
                    const int ny = std::min(pageSize.y, size.y - y);
                    const int nz = std::min(pageSize.z, size.z - z);
                    const int nc = std::min(pageSize.c, size.c - c);
                    int count = 0;
                    for (int i = 0; i < nx * ny * nz * nc; ++i)
                        count += supplied[static_cast<size_t>(
                            file.image().indexOf(x + i % nx, y + i / nx % ny, z + i / nx / ny % nz,
                                                 c + i / nx / ny / nz))];
                    if (count > 0 && (!isWrite || count < nx * ny * nz * nc))
                        record(calls, "get", x, y, z, c, nx, ny, nz, nc);
                    if (count > 0 && isWrite)
                        record(calls, "set", x, y, z, c, nx, ny, nz, nc);
                }
    return calls;
}

/// Calls `action` with the places of each element of the box, in the file and in the client's
/// memory. Slots go backwards, so that the first slot of a channel is what a write ends with.
template <class Action>
void RandomCase::forEachElement(Action action) const {
    for (int slot = client.channels - 1; slot >= 0; --slot)
        for (int i = 0; i < box.nx * box.ny * box.nz && client.channelOf(slot) >= 0; ++i) {
            const int x = i % box.nx;
            const int y = i / box.nx % box.ny;
            const int z = i / box.nx / box.ny;
            const Point p = toFile(box.x + x, box.y + y);
            action(file.image().indexOf(p.x, p.y, box.z + z, client.channelOf(slot)),
                   client.indexOf(x, y, z, slot));
        }
}

void RandomCase::check(Log& log, bool isWrite, int round) {
    naive::Area image = file.image();
    std::vector<unsigned char> expectedImage(image.data,
                                             image.data + zelDataSize(image.type, size));
    std::vector<unsigned char> expectedMemory = memory;
    naive::Area naiveImage = image;
    naiveImage.data = expectedImage.data();
    naive::Area naiveClient = client;
    naiveClient.data = expectedMemory.data();
    forEachElement([&](std::int64_t inFile, std::int64_t inClient) {
        if (isWrite)
            naive::convertElement(naiveImage, inFile, naiveClient, inClient, false);
        else
            naive::convertElement(naiveClient, inClient, naiveImage, inFile, false);
    });

    log.clear();
    const zelConfig* const given = hasConfig ? &config : nullptr;
    const zelStatus status =
        isWrite ? file.setTile(box.x, box.y, box.z, box.nx, box.ny, box.nz, memory.data(), given)
                : file.getTile(box.x, box.y, box.z, box.nx, box.ny, box.nz, memory.data(), given);
    ASSERT_EQ(status, zelOKAY) << "round " << round;
    ASSERT_EQ(log, expectedCalls(isWrite)) << "round " << round;
    ASSERT_EQ(memory, expectedMemory) << "round " << round;
    ASSERT_TRUE(std::equal(expectedImage.begin(), expectedImage.end(), file.image().data))
        << "round " << round;
}

TEST(TileRandom, agreesWithMovingEachElement) {
    std::mt19937 random(7103);
    for (int round = 0; round < 12000 && !testing::Test::HasFatalFailure(); ++round) {
        Log log;
        const Plan plan;
        MemoryFile file(log, plan);
        RandomCase(random, file).check(log, round % 2 == 1, round);
    }
}

} // namespace
