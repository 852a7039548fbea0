#include "support/childProcess.h"

#include <zel/zelDbMatch.h>
#include <zel/zelFormatDB.h>

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace zel::test {
namespace {

using namespace std::string_literals;

struct Row {
    std::string rule;
    std::string data;
    bool holds;
};

const std::vector<Row> rows = {
    {"1 == 1", "", true},
    {"089 == 0 && 0778 == 63 && 010 == 8 && -010 == -8 && 0XfF == 255", "", true},
    {"-1 == 0xFFFFFFFF && 4294967296 == -1 && -99999999999 == -1 && -4294967295 == 1", "", true},
    {"2147483647 > -2147483648 && 0x80000000 < 0", "", true},
    {"\"a\" == \"a\" && \"\" == \"\"", "", true},
    {"\"a\" == \"ab\"", "", false},
    {"string(2, 0) == \"\"", "ab", true},
    {"string(2, 0) == \"\"", "a", false},
    {"string(0, 3) == \"abc\"", "abc", true},
    {"string(0, 3) == \"abc\"", "ab", false},
    {"string(0, 4) == \"abc\"", "abcd", false},
    {"string(0, 2) == string(2, 2)", "abab", true},
    {"string(0, 2) == string(2, 2)", "abac", false},
    {"string(0, 4) == string(4, 4)", "a\0xya\0zw"s, true},
    {"uchar(1) == 200 && char(1) == -56", "\x01\xC8", true},
    {"char(0) < 0", "\x80", true},
    {"uchar(0) < 0", "\x80", false},
    {"ushort(0) == 0x1234", "\x12\x34", true},
    {"ushort(0) >= 0 || short(0) < 0", "\x12", false},
    {"short(0) == -1", "\xFF\xFF", true},
    {"ushort(0) == -1 || ushort(0) < 65535", "\xFF\xFF", false},
    {"short(0) == -32767", "\x80\x01", true},
    {"uint(0) == 0x89ABCDEF && ulong(0) == int(0) && long(0) < 0", "\x89\xAB\xCD\xEF", true},
    {"uint(0) > 0", "\x80\0\0\0"s, false},
    {"int(0) == uint(0)", "abc", false},
    {"1 <= 1 && 1 >= 1 && 1 <= 2 && 2 >= 1", "", true},
    {"1 < 1 || 1 > 1 || 2 <= 1 || 1 >= 2", "", false},
    // && binds tighter than ||, and both group from the left.
    {"1 == 1 || 1 == 1 && 1 == 2", "", true},
    {"(1 == 1 || 1 == 1) && 1 == 2", "", false},
    {"1 == 2 && 1 == 1 || 1 == 1", "", true},
    {"1 == 2 && (1 == 1 || 1 == 1)", "", false},
    {"(((uchar(0) == 1))) && ((1 == 2) || uchar(1) == 2)", "\x01\x02", true},
    {"ushort(0) == 0x1234 && (uchar(2) < 5 || string(4, 4) == \"SMPL\")", "\x12\x34\x09\0SMPL"s,
     true},
    {"ushort(0) == 0x1234 && (uchar(2) < 5 || string(4, 4) == \"SMPL\")", "\x12\x34\x09\0SMPl"s,
     false},
    // The whole rule needs its farthest read.
    {"uchar(0) == 1 || uchar(100) == 2", "\x01" + std::string(49, 'x'), false},
    {"uchar(0) == 1 || uchar(100) == 2", "\x01" + std::string(100, 'x'), true},
    // What cannot be read never matches, however the rest comes out.
    {"1 == 1 || uchar(-1) == 0", "abc", false},
    {"1 == 1 || string(0, -1) == \"\"", "abc", false},
    {"1 == 1 || string(2147483647, 1) == \"\"", "abc", false},
    {"1 == 1 || uint(2147483644) == 0", "abc", false},
};

TEST(Match, RulesOfTheDatabase) {
    std::string text;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        text += "format r" + std::to_string(i) + " dll p.so match " + rows[i].rule + "\n";
    }
    const ChildResult result = runWithDatabase(text, [] {
        std::string answers;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            zelDatabase* entry = zelDatabase::findByFormatName(("r" + std::to_string(i)).c_str());
            // Of the exact size, so that a sanitizer sees a read beyond it.
            std::vector<char> data(rows[i].data.begin(), rows[i].data.end());
            answers +=
                static_cast<zelFormatDB*>(entry)->eval(data.data(), static_cast<int>(data.size()))
                    ? '1'
                    : '0';
        }
        return answers + " " + std::to_string(zelFormatDB::getMaxNeeded());
    });
    ASSERT_EQ(result.text.substr(rows.size()), " 101");
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(result.text[i] == '1', rows[i].holds) << rows[i].rule;
    }
}

// The language offers no way to write an inequality or a logic operand that is a plain number.
TEST(Match, NodesThatTheLanguageCannotMake) {
    zelDbMatch two(ImmedINT, 2, 0);
    zelDbMatch zero(ImmedINT, 0, 0);
    EXPECT_EQ(zelDbMatch(CondNE, &two, &zero).eval(nullptr).i, 1);
    EXPECT_EQ(zelDbMatch(CondNE, &two, &two).eval(nullptr).i, 0);
    EXPECT_EQ(zelDbMatch(CondAND, &two, &two).eval(nullptr).i, 1);
    EXPECT_EQ(zelDbMatch(CondOR, &zero, &two).eval(nullptr).i, 1);
    EXPECT_EQ(zelDbMatch(CondOR, &two, nullptr).eval(nullptr).i, 1);
    EXPECT_EQ(zelDbMatch(CondAND, &zero, nullptr).eval(nullptr).i, 0);
}

// Deeper than any stack of calls: to the left as the language builds chains, and to the right.
TEST(Match, DeepTreesEvaluate) {
    constexpr int depth = 300000;
    char data[] = {1, 2};
    zelDbMatch two(ImmedINT, 2, 0);
    for (const int offset : {0, 1}) {
        zelDbMatch read(FuncUCHAR, offset, 0);
        zelDbMatch last(CondEQ, &read, &two);
        zelDbMatch never(CondEQ, &two, &two);
        never.op = CondLT;
        std::deque<zelDbMatch> left{last};
        std::deque<zelDbMatch> right{last};
        for (int i = 0; i < depth; ++i) {
            left.emplace_back(CondOR, &left.back(), &never);
            right.emplace_back(CondOR, &never, &right.back());
        }
        EXPECT_EQ(left.back().eval(data).i, offset);
        EXPECT_EQ(right.back().eval(data).i, offset);
    }
}

} // namespace
} // namespace zel::test
