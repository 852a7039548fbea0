#include "registry/entries.h"
#include "support/childProcess.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace zel::test {
namespace {

const std::string sample =
    "! A database with something of everything.\n"
    "#include \"other.db\"\n"
    "format SAMPLE\n"
    "    description \"Sample \\\"raster\\\" image\" dso sample.so dll sample.dll\n"
    "    subsystem sample.base suffixes .smp, .sample, \".s2\" access readonly\n"
    "    match ushort(0) == 0x1234 && (uchar(2) < 5 || string(4, 4) == \"SMPL\")\n"
    "format two dll two.so subsystem \"b c\" match (1 == 1 || (-1 >= int(6) && 010 <= 8))\n";

const std::vector<std::string> pieces = {
    "\"", "\\\"", "(",  ")",         "||", "!=",   "#include other.db\n", "!",
    "0x", "-",    "\n", "\nformat ", ".",  "\xFF", std::string(1, '\0')};

std::string mutate(std::string text, std::mt19937& random) {
    for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
        const std::size_t at = random() % text.size();
        switch (random() % 4) {
        case 0:
            text[at] = static_cast<char>(random());
            break;
        case 1:
            text.erase(at, random() % 20);
            break;
        case 2:
            text.insert(at, text.substr(random() % text.size(), random() % 40));
            break;
        default:
            text.insert(at, pieces[random() % pieces.size()]);
        }
        text += text.empty() ? " " : "";
    }
    return text;
}

// Reads everything of every entry, and tries the rules on data of every length up to 12.
std::string useAll() {
    const std::string all = describeAll();
    int matches = 0;
    int index = 0;
    while (zelDatabase* entry = zelDatabase::findNext(index)) {
        const auto* full = static_cast<zelFormatDB*>(entry);
        for (std::size_t length = 0; full->hasMatchRule() && length <= 12; ++length) {
            std::vector<char> data(length, '\x12');
            matches += full->eval(data.data(), static_cast<int>(length)) != 0 ? 1 : 0;
        }
    }
    return all + std::to_string(matches);
}

// Whatever the text, the load ends and reports at most one error of syntax, which ends the reading.
void check(const std::string& text) {
    const ChildResult result = runWithDatabase(text, useAll, Handler::recording,
                                               {{"other.db", "format other dll o.so\n"}});
    ASSERT_EQ(result.status, 0) << text;
    ASSERT_FALSE(result.text.empty()) << text;
    for (std::size_t i = 0; i < result.reports.size(); ++i) {
        const std::string_view report = result.reports[i];
        if (report.substr(0, 8) == "0 parse ") {
            ASSERT_EQ(i + 1, result.reports.size()) << text;
        }
    }
}

TEST(Mutation, EveryPrefixLoads) {
    for (std::size_t length = 0; length <= sample.size(); length += 3) {
        check(sample.substr(0, length));
    }
}

TEST(Mutation, DamagedTextsLoad) {
    std::mt19937 random(4711);
    for (int i = 0; i < 300; ++i) {
        check(mutate(sample, random));
    }
}

} // namespace
} // namespace zel::test
