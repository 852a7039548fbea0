#include "registry/entries.h"
#include "support/childProcess.h"
#include "support/tempDir.h"

#include <zel/zelError.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <map>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace zel::test {
namespace {

using Reports = std::vector<std::string>;

std::string entry(const std::string& name) {
    return "format " + name + " dll p.so description \"d\" subsystem ss\n";
}

std::string described(const std::string& name) {
    return name + "|d|p.so|ss||012\n";
}

TEST(Load, ChecksTheEntries) {
    const ChildResult result = runWithDatabase("format bare\n"
                                               "format declared dso x.so description \"d\"\n"
                                               "format named dso x.so dll p.so subsystem ss\n" +
                                                   entry("full") + entry("FULL"),
                                               describeAll);
    // Reports come in the order of the table, those on one entry in the order of the checks.
    std::map<std::string, Reports> byEntry;
    for (const std::string& report : result.reports) {
        for (const std::string name : {"bare", "declared", "named", "full"}) {
            if (report.find(name) != std::string::npos) {
                byEntry[name].push_back(report);
            }
        }
    }
    EXPECT_EQ(byEntry["bare"], (Reports{"2 database missing description for bare",
                                        "2 database missing required DSO name for bare",
                                        "2 database missing inst sub-system name for bare",
                                        "2 bare format removed from ZEL database"}));
    EXPECT_EQ(byEntry["declared"],
              (Reports{"2 database missing inst sub-system name for declared"}));
    EXPECT_EQ(byEntry["named"], (Reports{"2 database missing description for named"}));
    EXPECT_EQ(result.reports.size(), 6U);
    EXPECT_EQ(result.text, described("FULL") + described("full") + "named|named|p.so|ss||012\n");
}

// Removing an entry moves others; each must be seen once, and once only, all the same.
TEST(Load, ChecksEachOfManyEntriesOnce) {
    std::string text;
    std::string expected;
    for (int i = 100; i < 700; ++i) {
        const std::string name = "f" + std::to_string(i);
        if (i % 3 == 0) {
            text += "format " + name + " description \"d\" subsystem ss\n";
        } else {
            text += entry(name);
            expected += described(name);
        }
    }
    const ChildResult result = runWithDatabase(text, describeAll);
    EXPECT_EQ(result.text, expected);
    EXPECT_EQ(result.reports.size(), 2 * 200U);
}

TEST(Load, CountsTheNeedOfEntriesThatStay) {
    const ChildResult result = runWithDatabase(
        "format gone match uchar(99) == 1 format ab dll p.so match ushort(5) == 1 || uchar(-1) == 1"
        " format cd dll p.so match ushort(5) == 1",
        [] {
            zelFormatDB::getDictionary();
            return std::to_string(zelFormatDB::getMaxNeeded());
        });
    EXPECT_EQ(result.text, "7");
}

TEST(Load, LeavesEntriesAloneAfterASyntaxError) {
    const ChildResult result =
        runWithDatabase("format ab match uchar(5) == 1 format cd dso x.so format ef dll )", [] {
            std::string all = describeAll() + std::to_string(zelFormatDB::getMaxNeeded());
            for (const char* name : {"ab", "cd", "ef"}) {
                all += zelDatabase::findByFormatName(name)->getFormat(1) == nullptr ? " none" : "!";
            }
            return all;
        });
    EXPECT_EQ(result.text, "ab|-|-|-||012 rule\ncd|-|-|-||012\nef|-|-|-||012\n0 none none none");
    EXPECT_EQ(result.reports.size(), 1U);
}

TEST(Load, FollowsIncludes) {
    const std::map<std::string, std::string> files = {
        {"one.db", "#include 'two.db'\n" + entry("one")},
        {"two.db", entry("two")},
        {"tail.db", "format t"},
        {"bad.db", entry("ok") + "\n\nformat 5\n"},
    };
    const struct {
        std::string text;
        std::string entries;
        Reports reports;
    } rows[] = {
        {"#include \"one.db\"\n" + entry("main"),
         described("main") + described("one") + described("two"),
         {}},
        {"format main dll p.so\n#\t include <two.db> and more\n#includeone.db\n",
         "main|main|p.so|unknown||012\n" + described("one") + described("two") + described("two"),
         {"2 database missing description for main",
          "2 database missing inst sub-system name for main"}},
        // No separator stands between the end of an included file and what follows.
        {"#include tail.db\nail" + entry("x").substr(8), described("tail"), {}},
        {"#include\n#include \" '\n" + entry("main"),
         described("main"),
         {"2 Malformed include statement in ZEL database",
          "2 Malformed include statement in ZEL database"}},
        {"format main dll p.so\n#include gone.db\ndescription \"d\" subsystem ss ?",
         "main|d|p.so|ss||012\n",
         {"0 Couldn't open file format database include file: gone.db\n\tNo such file or directory",
          "0 parse error in ZEL database file, line 3:\ndescription \"d\" subsystem ss ?\n" +
              std::string(28, ' ') + "^"}},
        // One counter for all files: two lines of the main file, the directive's not among them,
        // and three of the other stand in front.
        {"\n\n#include bad.db\n",
         described("ok"),
         {"0 parse error in ZEL database file, line 6:\nformat 5\n\n       ^"}},
        {"\n#include two.db\n\n%",
         described("two"),
         {"0 parse error in ZEL database file, line 4:\n%\n^"}},
        {"#include .\n" + entry("main"),
         described("main"),
         {"0 Couldn't open file format database include file: .\n\tIs a directory"}},
    };
    for (const auto& row : rows) {
        const ChildResult result =
            runWithDatabase(row.text, describeAll, Handler::recording, files);
        EXPECT_EQ(result.status, 0) << row.text;
        EXPECT_EQ(result.text, row.entries) << row.text;
        EXPECT_EQ(result.reports, row.reports) << row.text;
    }
}

TEST(Load, LimitsTheDepthOfIncludes) {
    std::map<std::string, std::string> files;
    for (int level = 1; level <= 8; ++level) {
        files["l" + std::to_string(level)] =
            "#include l" + std::to_string(level + 1) + "\n" + entry("e" + std::to_string(level));
    }
    const ChildResult result =
        runWithDatabase("#include l1\n#include l7\n", describeAll, Handler::recording, files);
    // From level 7 on, level 8 is too deep; from level 1 on, it is read and looks for a ninth.
    EXPECT_EQ(result.reports, (Reports{"2 Include files nested too deep in ZEL database",
                                       "0 Couldn't open file format database include file: l9\n\t"
                                       "No such file or directory"}));
    std::string expected;
    for (const char* name : {"e1", "e2", "e3", "e4", "e5", "e6", "e7", "e7", "e8"}) {
        expected += described(name);
    }
    EXPECT_EQ(result.text, expected);
}

TEST(Load, OpensTheDatabaseOnce) {
    const TempDir dir;
    const std::string path = (dir.path() / "none").string();
    for (const std::string& name : {path, std::string()}) {
        const ChildResult result = runWithDatabaseFile(name, [&] {
            const bool first = zelFormatDB::getDictionary() == nullptr;
            dir.write("none", entry("late"));
            int index = 0;
            return std::to_string(first) + std::to_string(zelFormatDB::getDictionary() != nullptr) +
                   std::to_string(zelDatabase::findNext(index) == nullptr);
        });
        EXPECT_EQ(result.text, "111");
        EXPECT_EQ(result.reports, (Reports{"0 Couldn't open file format database " + name +
                                           ":\n\tNo such file or directory"}));
        std::filesystem::remove(path);
    }
    // The library's own handler ends the process.
    const ChildResult naive = runWithDatabaseFile(path, describeAll, Handler::builtIn);
    EXPECT_EQ(naive.status, 1);
}

void searchInside(void* arg, int, const char*, va_list) {
    *static_cast<std::string*>(arg) += "<" + describeAll() + ">";
}

TEST(Load, LetsAHandlerSearchWhileItReads) {
    const ChildResult result = runWithDatabase("format ab dll one.so format cd )", [] {
        std::string seen;
        const zelSetLocalErrorHandler local(searchInside, &seen);
        describeAll();
        return seen;
    });
    EXPECT_EQ(result.text, "<ab|-|one.so|-||012\ncd|-|-|-||012\n>");
}

#ifndef ZEL_SANITIZED
TEST(Load, EndsWhenATokenFindsNoMemory) {
    std::string text = "format ab description \"";
    text.resize(70000000, 'x');
    text += "\"";
    const ChildResult result = runWithDatabase(text, [] {
        const rlimit limit{100 << 20, 100 << 20};
        setrlimit(RLIMIT_AS, &limit);
        return describeAll();
    });
    EXPECT_EQ(result.status, 0);
    ASSERT_FALSE(result.reports.empty());
    EXPECT_EQ(result.reports[0], "1 Fatal error parsing ZEL format database:\n    fatal error - "
                                 "scanner input buffer overflow");
}
#endif

} // namespace
} // namespace zel::test
