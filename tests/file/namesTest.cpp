#include <zel/zelFileDesc.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/childProcess.h"
#include "support/memoryFile.h"

namespace {

using namespace zel::test;

/// A text that may be missing.
std::string shown(const char* text) {
    return text ? text : "<none>";
}

TEST(FileName, splits) {
    struct Case {
        const char *text, *name, *format;
        int index;
        const char* arguments;
    };
    const char* const none = "<none>";
    const Case cases[] = {
        {"abc", "abc", none, -1, none},
        {"abc#TIFF", "abc", "TIFF", -1, none},
        {"abc:3", "abc", none, 3, none},
        {"abc:3#TIFF%x=1", "abc", "TIFF", 3, "x=1"},
        {"abc#TIFF:3%x=1", "abc", "TIFF", 3, "x=1"},
        {"C:\\img\\abc", "C:\\img\\abc", none, -1, none},
        {"abc:", "abc:", none, -1, none},
        {"abc:12x", "abc:12x", none, -1, none},
        {"abc:1:2", "abc:1", none, 2, none},
        {"abc::3", "abc:3", none, -1, none},
        {"abc:::3", "abc:", none, 3, none},
        {"abc##d", "abc#d", none, -1, none},
        {"abc%%d", "abc%d", none, -1, none},
        {"abc###d", "abc#", "d", -1, none},
        {"abc#a#b", "abc", "b", -1, none},
        {"abc#a##b:x:7", "abc", "a#b:x", 7, none},
        {"abc:1#T:2", "abc", "T", 2, none},
        {"abc#", "abc", "", -1, none},
        {"abc%", "abc", none, -1, ""},
        {"abc%a#b:1%%c", "abc", none, -1, "a#b:1%%c"},
        {"#TIFF", "", "TIFF", -1, none},
        {"", "", none, -1, none},
        {"abc:2147483647", "abc", none, INT_MAX, none},
        {"abc:99999999999999999999", "abc", none, INT_MAX, none},
    };
    for (const Case& c : cases) {
        char *format = nullptr, *arguments = nullptr;
        int index = 0;
        const std::unique_ptr<char, decltype(&std::free)> name(
            zelFile::parseFileName(c.text, &format, &index, &arguments), &std::free);
        EXPECT_STREQ(name.get(), c.name) << c.text;
        EXPECT_EQ(shown(format), c.format) << c.text;
        EXPECT_EQ(index, c.index) << c.text;
        EXPECT_EQ(shown(arguments), c.arguments) << c.text;
    }
    int index = 0;
    EXPECT_EQ(zelFile::parseFileName(nullptr, nullptr, &index, nullptr), nullptr);
    EXPECT_EQ(index, -1);
    std::free(zelFile::parseFileName("a#b:1%c", nullptr, nullptr, nullptr));
}

/// The rows that a plug-in gets from an argument text, as "name=value;" or "name;".
std::string arguments(const char* text, int maxParams = 9) {
    Log log;
    const Plan plan;
    MemoryFile file(log, plan);
    file.setFormatArgs(text ? strdup(text) : nullptr);
    zelParameterDesc rows[9];
    std::string result;
    const int count = file.parseArguments(rows, maxParams);
    for (int i = 0; i < count; ++i)
        result += rows[i].name + (rows[i].value ? "=" + std::string(rows[i].value) : "") + ";";
    return result;
}

TEST(FormatArguments, split) {
    const char* const cases[][2] = {{"a=1 b=2", "a=1;b=2;"},
                                    {"a = 1", "a=1;"},
                                    {"a b", "a;b;"},
                                    {"a=1%b", "a=1;b;"},
                                    {"a=", "a=;"},
                                    {"=1", "=1;"},
                                    {"a=b=c", "a=b=c;"},
                                    {" \t%% ", ""},
                                    {"", ""},
                                    {"a\t=\t 1%%b =%c", "a=1;b=;c;"}};
    for (const auto& [text, rows] : cases)
        EXPECT_EQ(arguments(text), rows) << text;
    EXPECT_EQ(arguments(nullptr), "");
    EXPECT_EQ(arguments("a b", 1), "a;");
    EXPECT_EQ(arguments("a b", 0), "");
}

TEST(NameTable, takesAbbreviations) {
    const zelNameDesc names[] = {{"alpha", 1}, {"beta", 2}, {nullptr, -1}};
    const std::pair<const char*, int> cases[] = {{"ALPHA", 1}, {"al", 1},       {"A", 1},
                                                 {"beta", 2},  {"gamma", -1},   {"", 1},
                                                 {"bEt", 2},   {"alphabet", -1}};
    for (const auto& [name, id] : cases)
        EXPECT_EQ(MemoryFile::lookupName(name, names), id) << name;
}

constexpr const char* database = "format MEM description \"m\" dll none.so subsystem base\n"
                                 "match string(0, 4) == \"MEMO\"\n";

std::string shown(const zelFileDesc& desc) {
    return shown(desc.getFileName()) + "|" + std::to_string(desc.getIndex()) + "|" +
           shown(desc.getFormatName()) + "|" + shown(desc.getFormatSpecific()) + "|" +
           std::to_string(desc.getFileDesc()) + "|" + std::to_string(desc.getStatus()) + "\n";
}

TEST(FileDesc, holdsWhatTheClientSaid) {
    const ChildResult result = runWithDatabase(database, [] {
        MemoryFormat format("MEM");
        zelFormat* const noFormat = nullptr;
        const char* const noName = nullptr;
        return shown(zelFileDesc("a:2#mem%x", nullptr)) + shown(zelFileDesc("a#OTHER", &format)) +
               shown(zelFileDesc("a#", nullptr)) + shown(zelFileDesc(nullptr, nullptr)) +
               shown(zelFileDesc("a#b:3", 7, &format, "p")) +
               shown(zelFileDesc("a#b", -1, "MEM", nullptr)) +
               shown(zelFileDesc("a", -1, "OTHER", "p")) +
               shown(zelFileDesc(nullptr, 0, noFormat, "p")) +
               shown(zelFileDesc("a", 0, noName, nullptr));
    });
    EXPECT_EQ(result.text, "a|2|MEM|x|-1|0\n"
                           "a|-1|MEM|<none>|-1|0\n"
                           "a|-1|<none>|<none>|-1|7\n"
                           "<none>|-1|<none>|<none>|-1|3\n"
                           "a#b:3|7|MEM|p|-1|0\n"
                           "a#b|-1|MEM|<none>|-1|0\n"
                           "a|-1|<none>|p|-1|7\n"
                           "<none>|0|<none>|p|-1|3\n"
                           "a|0|<none>|<none>|-1|0\n");
}

TEST(FileDesc, takesADescriptorInPlaceOfAName) {
    const ChildResult result = runWithDatabase(database, [] {
        MemoryFormat format("MEM");
        FILE* file = std::tmpfile();
        std::fputs("MEMO", file);
        std::fflush(file);
        const int fd = fileno(file);
        std::string text;

        zelFileDesc byMagic(nullptr, nullptr);
        byMagic.setFileDesc(-5);
        text += std::to_string(byMagic.getStatus()) + std::to_string(byMagic.getFileDesc()) + " ";
        byMagic.setFileDesc(fd);
        text += std::to_string(byMagic.getStatus()) + shown(byMagic.getFormatName()) + " ";

        // With the format known, the file is not read: its position stays.
        lseek(fd, 2, SEEK_SET);
        zelFileDesc known("a", &format);
        known.setFileDesc(fd);
        text += std::to_string(lseek(fd, 0, SEEK_CUR)) + " ";

        zelFileDesc unknown("a#OTHER", nullptr);
        unknown.setFileDesc(fd);
        text += std::to_string(unknown.getStatus());
        std::fclose(file);
        return text;
    });
    EXPECT_EQ(result.text, "3-1 0MEM 2 7");
}

} // namespace
