// A check is worth what it finds: every way to break the contract that a plug-in has is tried on
// one that is sound without it.

#include "plugin-check/faultyFormat.h"
#include "plugin-check/suite.h"
#include "support/tempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace zel::check {

namespace {

using test::Fault;

constexpr const char* database = R"(
format FAULTY
    description "Format of the tests"
    dll zel_faulty.so
    suffixes .faulty
    access readwrite
    match string(0, 4) == "FLTY"
format GHOST
    description "Format without a plug-in"
    dll zel_ghost.so
    suffixes .ghost
    access readwrite
)";

/// Runs checks over the format of the tests in a directory that is empty but for `kept` files.
class PluginChecks : public testing::Test {
protected:
    // The database is read once in a process.
    static void SetUpTestSuite() {
        static const test::TempDir home;
        setenv("ZEL_DATABASE", home.write("database", database).c_str(), 1);
        watchReports();
        test::registerFaultyFormat();
    }
    void SetUp() override {
        std::filesystem::current_path(directory_.path());
        options_.format = "FAULTY";
        options_.quick = true;
        options_.seconds = 1;
    }
    void TearDown() override { std::filesystem::current_path("/"); }

    std::vector<Row> run(Fault fault) {
        test::fault = fault;
        Shared* const shared = makeShared();
        return runChecks(options_, *shared);
    }

    Options options_;

private:
    test::TempDir directory_;
};

std::string textOf(const std::vector<Row>& rows) {
    std::string text;
    for (const Row& row : rows)
        text += row.name + ": " + row.verdict() + " " + row.outcome.failure + "\n";
    return text;
}

struct Finding {
    Fault fault;
    const char* check; ///< that must fail
    const char* words; ///< of what it says
};

constexpr Finding findings[] = {
    {Fault::claimsFloats, "capabilities", "float: supported, but no such file can be created"},
    {Fault::prefersDoubles, "capabilities", "preference that is not supported: the type"},
    {Fault::prefersWiderPages, "capabilities", "the preferred page is not supported"},
    {Fault::deniesPaging, "capabilities", "not supported, but pages smaller"},
    {Fault::takesSizesBelowZero, "capabilities", "sizes below 0: supported"},
    {Fault::makesOtherType, "capabilities", "another type"},
    {Fault::losesLastOddRow, "round trip", "come back changed, which only --lossy permits"},
    {Fault::shiftsLaterPages, "round trip", "other pixels"},
    {Fault::forgetsOrientation, "round trip", "come back changed, which only --lossy permits"},
    {Fault::forgetsColorModel, "round trip", "another colour model"},
    {Fault::hasNoCompression, "round trip", "has no compression"},
    {Fault::hasNoIdentity, "round trip", "no class identity of its own"},
    {Fault::readsInTurn, "pages in random order", "large: 311 x 3"},
    {Fault::forgetsPartialPages, "parts of pages", ""},
    {Fault::leavesNoise, "parts of pages", "where parts were never written"},
    {Fault::takesAnyImage, "several images", "out of bounds"},
    {Fault::staysAtFirstImage, "several images", "the new image is not current"},
    {Fault::hidesNewSize, "several images", "the change of the size is not marked"},
    {Fault::keepsLaterOffset, "several images", ""},
    {Fault::ignoresWrites, "read-only files", "writing answers"},
    {Fault::excusesWrites, "read-only files", "writing answers"},
    {Fault::appendsToAnyFile, "read-only files", "an image can be appended"},
    {Fault::changesFiles, "read-only files", "the file has changed"},
    {Fault::readsFromPosition, "clients' descriptors", "read: "},
    {Fault::opensByName, "clients' descriptors", "the descriptor is open after"},
    {Fault::closesOnFailure, "failed opens", "the descriptor is closed"},
    {Fault::opensEmptyFiles, "failed opens", "an empty file passes as an image"},
    {Fault::keepsDescriptor, "descriptors", "5 descriptors more after 5 files"},
    {Fault::keepsDescriptorOnFailure, "descriptors", "cut to"},
    {Fault::fillsShortFiles, "truncation", "other pixels are read without a failure"},
    {Fault::abortsOnShortFiles, "truncation", "by signal 6"},
    {Fault::exitsOnShortFiles, "truncation", "with exit status 3"},
    {Fault::loopsOnDamage, "damage", "takes too long"},
    {Fault::throwsOnDamage, "damage", "vector"},
#if !defined(ZEL_SANITIZED)
    {Fault::losesMemory, "memory", "bytes stay behind for each file"},
    {Fault::losesMemoryOnFailure, "memory", "cut to"},
#endif
    {Fault::talks, "round trip", "writes to the terminal: hello"},
    {Fault::reportsErrors, "round trip", "reports an error"},
};

} // namespace

TEST_F(PluginChecks, FindEveryFault) {
    for (const Finding& finding : findings) {
        options_.only = {finding.check};
        const std::vector<Row> rows = run(finding.fault);
        const auto row = std::ranges::find(rows, finding.check, &Row::name);
        SCOPED_TRACE(std::string(finding.words) + ", by " + finding.check);
        ASSERT_NE(row, rows.end()) << textOf(rows);
        EXPECT_STREQ(row->verdict(), "FAIL");
        EXPECT_NE(std::string(row->outcome.failure).find(finding.words), std::string::npos)
            << textOf(rows);
        EXPECT_FALSE(allHeld(rows));
    }
}

// A picture that may change a little tells all places from each other nevertheless.
TEST_F(PluginChecks, FindPixelsAtOtherPlacesWhereTheyMayChange) {
    options_.lossy = true;
    options_.only = {"round trip"};
    EXPECT_TRUE(allHeld(run(Fault::none)));
    for (const Fault fault :
         {Fault::losesLastOddRow, Fault::shiftsLaterPages, Fault::forgetsOrientation}) {
        const std::vector<Row> rows = run(fault);
        EXPECT_NE(textOf(rows).find("other pixels"), std::string::npos) << textOf(rows);
    }
}

TEST_F(PluginChecks, FindNothingWhereNothingIsWrong) {
    const std::vector<Row> rows = run(Fault::none);
    EXPECT_TRUE(allHeld(rows)) << textOf(rows);
    EXPECT_EQ(rows.size(), checkNames().size());
    for (const Row& row : rows) {
        // The allocator of a sanitizer keeps no count of memory.
        const std::string verdict = row.verdict();
        if (row.name != "memory" || verdict != "n/a") {
            EXPECT_EQ(verdict, row.name == "given files" ? "n/a" : "pass") << row.name;
        }
    }
}

TEST_F(PluginChecks, ReadGivenFilesAndTheirImagesAgain) {
    options_.only = {"several images"};
    ASSERT_TRUE(allHeld(run(Fault::none)));
    std::filesystem::rename("image.faulty", "three.faulty");
    options_.files = {std::filesystem::current_path() / "three.faulty"};
    options_.only = {"given files"};
    EXPECT_TRUE(allHeld(run(Fault::none)));
    const std::string found = textOf(run(Fault::keepsLaterOffset));
    EXPECT_NE(found.find("of image 0 after the others"), std::string::npos) << found;
}

TEST_F(PluginChecks, EndWhereThePluginDoesNotLoad) {
    options_.format = "GHOST";
    const std::vector<Row> rows = run(Fault::none);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_STREQ(rows.front().verdict(), "FAIL");
}

} // namespace zel::check
