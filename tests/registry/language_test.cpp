#include "registry/entries.h"
#include "support/childProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace zel::test {
namespace {

const std::string head = "format ab dll p.so description \"d\" subsystem ss ";
const std::string plain = "ab|d|p.so|ss||012\n";
const std::string ruled = "ab|d|p.so|ss||012 rule\n";

struct Case {
    std::string text;
    std::string entries;
    std::vector<std::string> reports;
};

std::string reportAt(const std::string& message, int line, const std::string& echo,
                     const std::string& space) {
    return "0 " + message + " in ZEL database file, line " + std::to_string(line) + ":\n" + echo +
           "\n" + space + "^";
}

// A text with a syntax error, the caret of whose report stands where the text has an @.
Case wrong(std::string text, const std::string& entries) {
    const std::size_t at = text.find('@');
    text.erase(at, 1);
    const std::size_t start = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;
    const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
    std::string space = text.substr(start, at - start);
    std::replace_if(
        space.begin(), space.end(), [](char c) { return c != '\t'; }, ' ');
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<long>(start), '\n');
    const std::string echo = text.substr(start, end - start);
    return {text, entries, {reportAt("parse error", static_cast<int>(line), echo, space)}};
}

void check(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        const ChildResult result = runWithDatabase(c.text, describeAll);
        EXPECT_EQ(result.status, 0) << c.text;
        EXPECT_EQ(result.text, c.entries) << c.text;
        EXPECT_EQ(result.reports, c.reports) << c.text;
    }
}

TEST(Language, AcceptsEntries) {
    check({
        {"", "", {}},
        {"! nothing\n \t\n!=====\n", "", {}},
        {head, plain, {}},
        {"format AB\n\tdescription \"a\nb\"\n\tdso x.so dll one.so\n  dll two.so subsystem "
         "\"p q\" ! note\n suffixes .a, .bc, \".s2\" access readonly",
         "AB|a\nb|two.so|p q|.a .bc .s2|0\n",
         {}},
        {head + "suffixes .bb suffixes .cc,\"c\" access writeonly description \"e\" match 1 == 2",
         "ab|e|p.so|ss|.cc c|1 rule\n",
         {}},
        {head + "match ushort(0)==0x1234&&(uchar(2)<5||string(4,4)==\"SMPL\")", ruled, {}},
        {head + "match ulong(0) >= long(4) || short ( -1 ) <= +3 format .int " + head.substr(10),
         ".int|d|p.so|ss||012\n" + ruled,
         {}},
        {head + "format Ab" + head.substr(9), "Ab" + plain.substr(2) + plain, {}},
        // A byte of 0x80 or above, or of 0, is the end of the text.
        {head + "\xE9 $$ format", plain, {}},
        {head + std::string("\0 $$\n", 5), plain, {}},
        {head + "description \"\xE9!#\"", "ab|\xE9!#|p.so|ss||012\n", {}},
    });
}

TEST(Language, EndsStringsAtTheLastQuoteThatCan) {
    check({
        {head + R"(description "a\"b" )",
         R"(ab|a\"b|p.so|ss||012)"
         "\n",
         {}},
        {head + R"(description "a\\"b" )",
         R"(ab|a\\"b|p.so|ss||012)"
         "\n",
         {}},
        {head + R"(description "C:\dir\" access readonly)",
         R"(ab|C:\dir\|p.so|ss||0)"
         "\n",
         {}},
        wrong(head + R"(description "x\" dll "@y\" )", R"(ab|x\" dll |p.so|ss||012)"
                                                       "\n"),
        {head + "description \"\n#include none\n! \"", "ab|\n#include none\n! |p.so|ss||012\n", {}},
        {head + "description \"\"", "ab||p.so|ss||012\n", {}},
    });
}

// The caret stands under the token, or one column to its left if no byte behind it was read.
TEST(Language, RejectsWhatIsNoEntry) {
    check({
        wrong("format @A\n", ""),
        wrong("format @int\n", ""),
        wrong("format ab dso @12 ", "ab|-|-|-||012\n"),
        wrong("@format1 ab", ""),
        wrong("format ab suffixes@ \".s2\"\n", "ab|-|-|-||012\n"),
        wrong("format ab suffixes .a, .b, @dll c", "ab|-|-|-||012\n"),
        wrong("format ab dll @a-b.dll\n", "ab|-|-|-||012\n"),
        wrong("format ab\n\tdll\tab@ )\n", "ab|-|ab|-||012\n"),
        wrong("format a@b\r\n", "ab|-|-|-||012\n"),
        wrong("format ab access @dso\n", "ab|-|-|-||012\n"),
        wrong("format ab description @text\n", "ab|-|-|-||012\n"),
        wrong("format ab dll@ \x80\n", "ab|-|-|-||012\n"),
        wrong("#@ text\n", ""),
        wrong("@ #include \"x\"\n", ""),
        wrong("format ab\n@!x", "ab|-|-|-||012\n"),
        wrong("format ab match (uchar(0@)) == 1", "ab|-|-|-||012\n"),
        wrong("format ab match 1 ==@ \"a\" ", "ab|-|-|-||012\n"),
        wrong("format ab match \"a\" @< \"b\"", "ab|-|-|-||012\n"),
        wrong("format ab match 1 == 2@ == 3", "ab|-|-|-||012 rule\n"),
        wrong("format ab match 1 == @1) dll cc", "ab|-|-|-||012 rule\n"),
        wrong("format ab match (1 == 1 @dll cc", "ab|-|-|-||012\n"),
        wrong("format ab match 1 == uchar(+0@x10)", "ab|-|-|-||012\n"),
        wrong("format ab match 0778 == 12@ab)", "ab|-|-|-||012 rule\n"),
        wrong("format ab match 1 @& 2", "ab|-|-|-||012\n"),
        wrong("format ab match string(0@,) == \"\"", "ab|-|-|-||012\n"),
        // A comment, not an operator.
        wrong("format ab match uchar(0) != 5\n@dso p.so\n", "ab|-|-|-||012\n"),
        wrong("format ab match uchar(0) !=\n@5 ", "ab|-|-|-||012\n"),
    });
    // What follows was read to the end of the text, or is not there: the last line is shown.
    const std::string last = "format ab match 1 == 2 || \n";
    const std::string space(last.size() - 1, ' ');
    check({
        {last, "ab|-|-|-||012\n", {reportAt("parse error", 2, last, space)}},
        {"format ab match 3 !=",
         "ab|-|-|-||012\n",
         {reportAt("parse error", 1, "format ab match 3 !=", std::string(19, ' '))}},
        {"format ab match 3 !=5",
         "ab|-|-|-||012\n",
         {reportAt("parse error", 1, "format ab match 3 !=5", std::string(19, ' '))}},
        {"format ab\ndescription \"x\n y\n",
         "ab|-|-|-||012\n",
         {reportAt("parse error", 4, " y\n", " ")}},
    });
}

TEST(Language, ShowsThePieceOfALongLine) {
    const std::string text = "! \n" + head + "description \"" + std::string(300, 'x') + "\"\t [ \n";
    // A piece holds 255 bytes.
    const std::string piece = text.substr(3 + 255);
    const std::string space = std::string(piece.size() - 5, ' ') + "\t";
    const ChildResult result = runWithDatabase(text, describeAll);
    // Nothing behind the bracket is read, so the caret stands one column to its left.
    EXPECT_EQ(result.reports, std::vector{reportAt("parse error", 2, piece, space)});
}

std::string overflowOf(const std::string& condition) {
    const ChildResult result = runWithDatabase(
        head + "format cd " + head.substr(10) + "match " + condition, [] { return describeAll(); });
    EXPECT_EQ(result.status, 0);
    EXPECT_LE(result.reports.size(), 1U);
    return result.reports.empty() ? "" : result.reports[0].substr(0, result.reports[0].find(" in"));
}

// With 5 entries below the condition, n parentheses and the tokens that are read at the deepest
// place, a stack of 10,000 entries is just full, and one parenthesis more is too much.
TEST(Language, LimitsTheNestingOfParentheses) {
    const struct {
        std::string condition;
        std::size_t tokens;
    } rows[] = {{"1 == 1", 3},
                {"uchar(0) == 1", 4},
                {"1 == uchar(0)", 6},
                {"\"a\" == string(0,1)", 8},
                {"1 == 1 || 1 == 1 && 1 == 1", 7}};
    for (const auto& row : rows) {
        const std::size_t most = 10000 - 5 - row.tokens;
        for (const std::size_t n : {most, most + 1}) {
            const std::string nested = std::string(n, '(') + row.condition + std::string(n, ')');
            EXPECT_EQ(overflowOf(nested), n == most ? "" : "0 parser stack overflow")
                << row.condition << " " << n;
        }
    }
    EXPECT_EQ(overflowOf(std::string(9995, '(')), "0 parse error");
    EXPECT_EQ(overflowOf(std::string(9996, '(')), "0 parser stack overflow");
}

std::string repeat(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

TEST(Language, TakesTextsOfAnyLength) {
    const std::string name(100000, 'n');
    const std::string quotes = repeat("\\\"", 200000);
    const std::string suffixes = repeat(",.aa", 50000);
    check({
        {"format " + name + head.substr(9), name + plain.substr(2), {}},
        {head + "description \"" + quotes,
         "ab|" + quotes.substr(0, quotes.size() - 1) + plain.substr(4),
         {}},
        {repeat(head + "! \n", 3000) + head, repeat(plain, 3001), {}},
        {repeat("format ab dso x.so description \"d\" subsystem ss\n", 12000), "", {}},
        {head + "suffixes .aa" + suffixes,
         "ab|d|p.so|ss|.aa" + repeat(" .aa", 50000) + "|012\n",
         {}},
        {head + "match 1 == 2" + repeat(" || 1 == 2 && 3 == 3", 100000), ruled, {}},
    });
}

} // namespace
} // namespace zel::test
