#include "registry/entries.h"
#include "support/childProcess.h"
#include "support/tempDir.h"

#include <zel/zelFormat.h>
#include <zel/zelTag.h>
#include <zel/zelVersion.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace zel::test {
namespace {

std::string nameOf(const zelDatabase* entry) {
    return entry == nullptr ? "-" : entry->getName();
}

std::string nameOf(const zelFormat* format) {
    return format == nullptr ? "-" : orDash(format->getName());
}

// The slots of the table of 131 follow from the hashes: aa 7, cc 22, bb 80, dd 95.
const std::string database = "format aa dll p.so suffixes .smp, .x.y, smp\n"
                             "format bb dll p.so suffixes .tif match string(0, 2) == \"II\"\n"
                             "format cc dll p.so suffixes .tif access readonly\n"
                             "format dd dll p.so match ushort(0) == 0x4949 && uchar(9) == 1\n";

TEST(Search, FindsEntriesByNameAndSuffix) {
    const ChildResult result = runWithDatabase(database, [] {
        std::string found;
        const struct {
            const char* fileName;
            int noMatchRule;
        } files[] = {{"a.smp", 0}, {".smp", 0},  {"smp", 0},   {"p", 0},    {"", 0},
                     {"a.SMP", 0}, {"asmp", 0},  {"d.x.y", 0}, {"a.y", 0},  {"a.tif", 0},
                     {"a.tif", 0}, {"a.tif", 1}, {".tif", 1},  {nullptr, 0}};
        for (const auto& file : files) {
            found += nameOf(zelDatabase::findByFileName(file.fileName, file.noMatchRule)) + " ";
        }
        for (const char* name : {"aa", "aA", "DD", "ee", ""}) {
            found += nameOf(zelDatabase::findByFormatName(name)) + " ";
        }
        return found;
    });
    EXPECT_EQ(result.text, "aa aa - - - - aa aa - cc cc cc - - aa aa dd - - ");
}

TEST(Search, FindsEntriesByTheFirstBytes) {
    const TempDir dir;
    const ChildResult result = runWithDatabase(database, [&] {
        std::string found;
        for (const std::string content :
             {"", "I", "II", "IIxxxxxxx", "MM", "MMxxxxxxx\1", "xIIxxxxxxxxxxxxxxxx"}) {
            const int fd = open(dir.write("file", content).c_str(), O_RDONLY);
            lseek(fd, 1, SEEK_SET);
            found += nameOf(zelDatabase::findByMagic(fd));
            found += std::to_string(lseek(fd, 0, SEEK_CUR)) + " ";
            close(fd);
        }
        const int folder = open(dir.path().c_str(), O_RDONLY);
        return found + nameOf(zelDatabase::findByMagic(folder)) +
               nameOf(zelDatabase::findByMagic(-1));
    });
    EXPECT_EQ(result.text, "-0 -1 bb2 bb9 -2 -10 -10 --");
    // A rule without a read holds for an empty file, and does not where nothing can be read.
    const ChildResult always = runWithDatabase("format any dll p.so match 1 == 1", [&] {
        const int fd = open(dir.write("file", "").c_str(), O_RDONLY);
        return nameOf(zelDatabase::findByMagic(fd)) + nameOf(zelDatabase::findByMagic(-1));
    });
    EXPECT_EQ(always.text, "any-");
}

// Runs a scenario with three entries that the test plug-in serves.
ChildResult runWithPlugin(const char* formats, const Scenario& scenario,
                          const std::string& plugin = "zel_test.so") {
    const std::string rest = " dll " + plugin + " suffixes .one subsystem ";
    return runWithDatabase(
        "format one" + rest + "ss format two" + rest + "tt format three" + rest + "\"u v\"", [&] {
            setenv("ZEL_TEST_FORMATS", formats, 1);
            return scenario();
        });
}

std::string walkLoaded() {
    std::string names;
    int index = 0;
    while (const zelFormat* format = zelFormat::findNext(index, 0)) {
        names += nameOf(format) + " ";
    }
    return names + std::to_string(index);
}

TEST(Plugin, RegistersAllItsFormatsInOneLoad) {
    const ChildResult result = runWithPlugin("ONE,two+", [] {
        std::string seen = walkLoaded() + "|";
        seen += nameOf(zelFormat::findByFormatName("one", 0)) + "|";
        zelFormat* one = zelFormat::findByFormatName("one", 1);
        zelFormat* two = zelFormat::findByFormatName("two", 0);
        seen += nameOf(one) + " " + nameOf(two) + " " + one->getDefaultSuffix() + " " +
                one->getDescription() + std::to_string(one->accessModeIsSupported(2));
        for (zelFormat* format : {one, two}) {
            seen += "|";
            for (const auto& [major, minor] : std::vector<std::pair<int, int>>{
                     {0, 9}, {1, 0}, {1, 3}, {1, 4}, {2, 0}, {2, 1}, {2, 2}, {3, 0}}) {
                seen += format->haveDSOVersion(major, minor) ? '1' : '0';
            }
            int count = -1;
            seen += format->getTagDescriptions(count) == nullptr ? " none" : " tags";
            seen += std::to_string(count);
        }
        return seen;
    });
    EXPECT_EQ(result.text, "131|-|ONE two .one one1|11100000 none0|11111100 tags1");
    // The warnings on missing descriptions and nothing else.
    EXPECT_EQ(result.reports.size(), 3U);
}

TEST(Plugin, ReportsEachFailure) {
    const auto loadTwice = [] {
        zelDatabase* entry = zelDatabase::findByFormatName("three");
        return nameOf(entry->getFormat(1)) + nameOf(entry->getFormat(0)) +
               nameOf(entry->getFormat(1));
    };
    const std::string unregistered = "0 The dynamic shared object zel_test.so failed to register\n"
                                     "\ta file format called \"three\"";
    const auto missing = [](const std::string& plugin) {
        return "0 Dynamic shared object \"" + plugin + "\" version " + libzelVersion +
               " not found\n\tfor run-time linking three-format-specific code.\n\tThis file can be "
               "found in the appropriate\n\tversion of the product u v.";
    };
    const std::string tooLong(250, 'n');
    const struct {
        const char* formats;
        std::string plugin;
        std::vector<std::string> reports;
    } rows[] = {
        {"one", "zel_test.so", {unregistered, unregistered}},
        {"four", "zel_test.so", {"0 Format four not in ZEL database", unregistered, unregistered}},
        // The file's own name is not what is loaded.
        {"three", "zel_test_d.so", {missing("zel_test_d.so"), missing("zel_test_d.so")}},
        {"three",
         tooLong + ".longext",
         {missing(tooLong + ".longext"), missing(tooLong + ".longext")}},
    };
    for (const auto& row : rows) {
        const ChildResult result = runWithPlugin(row.formats, loadTwice, row.plugin);
        EXPECT_EQ(result.text, "---");
        EXPECT_EQ(std::vector(result.reports.begin() + 3, result.reports.end()), row.reports);
    }
}

class LinkedFormat : public zelReadOnlyFormat {
public:
    using zelReadOnlyFormat::zelReadOnlyFormat;
};

TEST(Plugin, CanBeLinkedToTheClient) {
    const ChildResult result = runWithPlugin("", [] {
        LinkedFormat first("two");
        std::string seen = walkLoaded() + "|";
        LinkedFormat second("tWO");
        seen += nameOf(zelFormat::findByFormatName("two", 1)) + "|";
        seen += nameOf(zelFormat::findByFileName("x.one", 0, 0)) + "|";
        LinkedFormat stranger("four");
        seen += orDash(stranger.getName()) + orDash(stranger.getDescription()) +
                std::to_string(stranger.accessModeIsSupported(0)) +
                std::to_string(stranger.haveDSOVersion(0, 0));
        return seen;
    });
    EXPECT_EQ(result.text.substr(0, 12), "two 131|tWO|");
    EXPECT_EQ(result.text.substr(result.text.rfind('|')), "|--00");
}

} // namespace
} // namespace zel::test
