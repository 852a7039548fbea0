#include "platform/asciiCase.h"
#include "platform/databaseDirectory.h"
#include "platform/debugChannel.h"
#include "platform/loader.h"
#include "platform/splitPath.h"
#include "platform/truncate.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <unistd.h>

using namespace zel::platform;

TEST(Loader, RunsConstructorsOnceAndTellsWhyNot) {
    std::string reason;
    ASSERT_TRUE(loadSharedObject(PROBE_PATH, reason)) << reason;
    EXPECT_STREQ(std::getenv("PROBE_LOADED"), "once");
    EXPECT_TRUE(loadSharedObject(PROBE_PATH, reason));
    EXPECT_STREQ(std::getenv("PROBE_LOADED"), "once");

    EXPECT_FALSE(loadSharedObject("/no/such/object.so", reason));
    EXPECT_NE(reason.find("/no/such/object.so"), std::string::npos) << reason;
}

TEST(SplitPath, GivesPartsThatMakeThePathAgain) {
    const struct {
        const char *path, *directory, *base, *extension;
    } cases[] = {
        {"zel_tiff.so", "", "zel_tiff", ".so"}, {"/usr/lib/a.b/c", "/usr/lib/a.b/", "c", ""},
        {"./x.tar.gz", "./", "x.tar", ".gz"},   {"dir/", "dir/", "", ""},
        {"../.hidden", "../", "", ".hidden"},   {"name.", "", "name", "."},
        {"C:\\a.b", "", "C:\\a", ".b"},         {"", "", "", ""},
    };
    for (const auto& c : cases) {
        SplitPath parts{};
        ASSERT_TRUE(splitPath(c.path, parts)) << c.path;
        EXPECT_STREQ(parts.drive, "");
        EXPECT_STREQ(parts.directory, c.directory);
        EXPECT_STREQ(parts.base, c.base);
        EXPECT_STREQ(parts.extension, c.extension);
    }
}

TEST(SplitPath, NeverShortens) {
    const std::string fits(255, 'n');
    const std::string directory(254, 'd');
    for (const std::string& path : {fits, directory + "/", "." + fits.substr(1)}) {
        SplitPath parts{};
        EXPECT_TRUE(splitPath(path.c_str(), parts)) << path;
        EXPECT_EQ(std::string(parts.directory) + parts.base + parts.extension, path);
        EXPECT_FALSE(splitPath(("x" + path + "x").c_str(), parts)) << path;
        EXPECT_EQ(std::string(parts.directory) + parts.base + parts.extension, "");
    }
}

// The sources under test are part of this program, so the directory lies beside it.
TEST(DatabaseDirectory, LiesBesideTheCodeThatAsks) {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    const auto directory = std::filesystem::absolute(databaseDirectory());
    EXPECT_EQ(directory.lexically_normal(), program.parent_path() / "zel");
}

TEST(DebugChannel, WritesAllOfALongTextAndKeepsErrno) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const int terminal = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);

    // More than a pipe takes at once.
    const std::string text(300000, 'x');
    std::string arrived;
    std::thread reader([&] {
        char block[4096];
        for (ssize_t n = 0; (n = read(ends[0], block, sizeof block)) > 0;)
            arrived.append(block, static_cast<std::size_t>(n));
    });
    errno = ENOENT;
    writeDebug(text);
    EXPECT_EQ(errno, ENOENT);
    dup2(terminal, STDERR_FILENO);
    reader.join();
    EXPECT_EQ(arrived, text);

    close(STDERR_FILENO);
    errno = ENOENT;
    writeDebug("into the void");
    EXPECT_EQ(errno, ENOENT);
    dup2(terminal, STDERR_FILENO);
    close(terminal);
    close(ends[0]);
}

TEST(AsciiCase, IgnoresCaseOfAsciiLettersOnly) {
    const auto sign = [](int order) { return (order > 0) - (order < 0); };
    const struct {
        const char *a, *b;
        int order;
    } cases[] = {
        {"TIFF", "tiff", 0},  {"", "", 0},      {"tif", "TIFF", -1}, {"b", "A", 1},
        {"\xC4", "\xE4", -1}, {"\xE4", "z", 1}, {"[", "{", -1},      {"@", "`", -1},
        {"a_b", "A_B", 0},    {"Z", "_", 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(sign(compareIgnoreCase(c.a, c.b)), c.order) << c.a << " " << c.b;
        EXPECT_EQ(sign(compareIgnoreCase(c.b, c.a)), -c.order) << c.a << " " << c.b;
        EXPECT_EQ(sign(compareIgnoreCase(c.a, c.b, 9)), c.order) << c.a << " " << c.b;
    }
    EXPECT_EQ(compareIgnoreCase("TIFF", "tifx", 3), 0);
    EXPECT_NE(compareIgnoreCase("TIFF", "tifx", 4), 0);
    EXPECT_EQ(compareIgnoreCase("a", "b", 0), 0);
    EXPECT_EQ(compareIgnoreCase("ab", "AB\0x", 4), 0);
}

TEST(Truncate, CutsTowardZeroAndHasOneAnswerForTheRest) {
    const struct {
        double value;
        std::int64_t cut;
    } cases[] = {
        {0.9, 0},
        {-2.7, -2},
        {3000000000.0, 3000000000},
        {-9223372036854774784.0, -9223372036854774784},
        {-9223372036854775808.0, INT64_MIN},
        {9223372036854775808.0, INT64_MIN},
        {-HUGE_VAL, INT64_MIN},
        {std::nan(""), INT64_MIN},
    };
    for (const auto& c : cases)
        EXPECT_EQ(truncateToInt64(c.value), c.cut) << c.value;
}
