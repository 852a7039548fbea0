#include <zel/zelTag.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include <zel/zelFile.h>

namespace {

zelEnumSpec levels[] = {{"none", 0}, {"low", 1}, {"lower", 2}, {"off", -1}, {nullptr, 0}};

/// A description and the tag over it.
struct Bound {
    Bound(int type, unsigned count)
        : desc{42, static_cast<unsigned>(type) | count, "for a reader", "Sample", "1", levels},
          tag(&desc) {}

    template <class Element>
    Element& at(int i) {
        return static_cast<Element*>(tag.getValue())[i];
    }
    std::string text() {
        char buffer[400];
        status = tag.encode(buffer);
        return buffer;
    }

    zelTagDescription desc;
    zelTag tag;
    zelStatus status = zelOKAY;
};

/// Collects the warnings of a block of code.
class Warnings {
public:
    std::vector<std::string> texts;

private:
    static void take(void* arg, int flags, const char* fmt, va_list args) {
        char text[256];
        vsnprintf(text, sizeof text, fmt, args);
        static_cast<Warnings*>(arg)->texts.push_back(std::to_string(flags) + " " + text);
    }
    zelSetLocalErrorHandler handler{take, this};
};

const std::string tooFew = "2 Not enough values for Sample tag";
const std::string invalid = "2 Invalid value for Sample tag";

struct TextCase {
    int type;
    unsigned count;
    const char* text;
    int status;
    const char* encoded;
    std::vector<std::string> warnings;
};

TEST(Tag, takesAndGivesText) {
    const TextCase cases[] = {
        {zelTagInt, 3, "1, 0x10 ,010", 0, "1, 16, 8", {}},
        {zelTagInt2, 3, "1,2,3", 0, "1, 2, 3", {}},
        {zelTagInt, 3, " 1\t2 3 ", 0, "1, 2, 3", {}},
        {zelTagInt, 3, "1,,3", 0, "1, 0, 3", {}},
        {zelTagInt, 3, "1 2", 3, "1, 2, 0", {tooFew}},
        {zelTagInt, 3, "1 2 3 4", 0, "1, 2, 3", {}},
        {zelTagInt, 1, "12abc", 0, "12", {}},
        {zelTagInt, 1, "", 3, "0", {}},
        {zelTagInt, 1, " \t ", 3, "0", {}},
        {zelTagInt, 0, "anything", 0, "", {}},
        {zelTagShort, 2, "-1 65537", 0, "-1, 1", {}},
        {zelTagFloat, 2, "0.5, -1e3", 0, "0.5, -1000", {}},
        {zelTagDouble, 1, "1234567", 0, "1.23457e+06", {}},
        {zelTagDouble2, 1, "0.1", 0, "0.1", {}},
        {zelTagString, 1, "  two words, and more ", 0, "two words, and more ", {}},
        {zelTagString, 1, " 'two words' ", 0, "two words", {}},
        {zelTagString, 1, "it's", 0, "it's", {}},
        {zelTagString, 1, "\"\"", 0, "", {}},
        {zelTagString, 1, "'open", 3, "", {}},
        {zelTagString, 2, "word \"a, b\"", 0, "word, a, b", {}},
        {zelTagString, 2, "'a','b'", 0, "a, b", {}},
        {zelTagString, 2, "word \"open", 3, "word, ", {tooFew}},
        {zelTagBool, 4, "T, fal,TRUE 2", 0, "True, False, True, True", {}},
        {zelTagBool, 2, "yes 0", 0, "False, False", {}},
        {zelTagIntEnum, 4, "lo LOWER n x", 0, "low, lower, none, none", {invalid}},
        {zelTagShortEnum, 1, "off", 0, "off", {}},
        {0xB0, 2, "1 2", 0, "", {}},
    };
    for (const TextCase& c : cases) {
        Bound bound(c.type, c.count);
        const Warnings warnings;
        EXPECT_EQ(bound.tag.decode(c.text), c.status) << c.type << ": " << c.text;
        EXPECT_EQ(bound.text(), c.encoded) << c.text;
        EXPECT_EQ(bound.status, zelOKAY);
        EXPECT_EQ(warnings.texts, c.warnings) << c.text;
    }
}

TEST(Tag, holdsElementsOfItsType) {
    Bound shorts(zelTagShortEnum, 2);
    EXPECT_EQ(shorts.tag.decode("off lower"), zelOKAY);
    EXPECT_EQ(shorts.at<short>(0), -1);
    EXPECT_EQ(shorts.at<short>(1), 2);
    const Warnings warnings;
    EXPECT_EQ(shorts.tag.decode("x low"), zelOKAY);
    EXPECT_EQ(shorts.at<short>(0), -1) << "an unknown name leaves the element";
    shorts.at<short>(1) = 9;
    EXPECT_EQ(shorts.text(), "off, ");
    EXPECT_EQ(shorts.status, zelBADPARAMS);

    Bound truth(zelTagBool, 1);
    EXPECT_EQ(truth.tag.decode("2"), zelOKAY);
    EXPECT_EQ(truth.at<int>(0), 2);

    zelTag unbound;
    EXPECT_EQ(unbound.getCount(), 0);
    Bound noTable(zelTagIntEnum, 1);
    noTable.desc.spec = nullptr;
    EXPECT_EQ(noTable.text(), "");
    EXPECT_EQ(noTable.status, zelBADPARAMS);
}

/// A file whose tag calls write down what they get, and fill in what they are asked for.
class TagFile : public zelFile {
public:
    explicit TagFile(const zelTagDescription& theDesc) : desc(theDesc) {}
    ~TagFile() override = default;

    std::string calls;

    zelStatus getItem(int tag, va_list args) override {
        calls += "get " + std::to_string(tag);
        for (unsigned i = 0; i < (desc.flags & 15); ++i)
            fill(static_cast<int>(desc.flags & 0xF0), static_cast<int>(i), args);
        return zelStatusEncode(zelBADFIELDGET);
    }
    zelStatus setItem(int tag, va_list args) override {
        calls += "set " + std::to_string(tag);
        for (unsigned i = 0; i < (desc.flags & 15); ++i)
            calls += " " + argument(static_cast<int>(desc.flags & 0xF0), args);
        return zelStatusEncode(zelBADFIELDSET);
    }

protected:
    zelStatus openFile() override { return zelOKAY; }
    zelStatus closeFile() override { return zelOKAY; }

private:
    static void fill(int type, int i, va_list args) {
        static char text[] = "of the format";
        if (type == zelTagShort || type == zelTagShortEnum)
            *va_arg(args, short*) = static_cast<short>(i - 2);
        else if (type == zelTagFloat || type == zelTagFloat2)
            *va_arg(args, float*) = static_cast<float>(i) + 0.5F;
        else if (type == zelTagDouble || type == zelTagDouble2)
            *va_arg(args, double*) = i + 0.25;
        else if (type == zelTagString)
            *va_arg(args, char**) = text;
        else
            *va_arg(args, int*) = i - 2;
    }
    static std::string argument(int type, va_list args) {
        if (type == zelTagFloat || type == zelTagDouble || type == zelTagFloat2 ||
            type == zelTagDouble2)
            return std::to_string(va_arg(args, double));
        return type == zelTagString ? va_arg(args, char*) : std::to_string(va_arg(args, int));
    }

    const zelTagDescription& desc;
};

TEST(Tag, movesToAndFromAFile) {
    const std::tuple<int, unsigned, const char*> cases[] = {
        {zelTagShort, 5, "-2 -1 0 1 2"},
        {zelTagShortEnum, 1, "-2"},
        {zelTagInt, 2, "-2 -1"},
        {zelTagBool, 1, "-2"},
        {zelTagIntEnum, 4, "-2 -1 0 1"},
        {zelTagFloat, 2, "0.500000 1.500000"},
        {zelTagDouble2, 3, "0.250000 1.250000 2.250000"},
        {zelTagString, 2, "of the format of the format"},
    };
    for (const auto& [type, count, written] : cases) {
        Bound bound(type, count);
        TagFile file(bound.desc);
        EXPECT_EQ(bound.tag.read(&file), zelBADFIELDGET);
        EXPECT_EQ(bound.tag.write(&file), zelBADFIELDSET);
        EXPECT_EQ(file.calls, std::string("get 42set 42 ") + written);
    }
}

TEST(Tag, makesNoCallThatTheFormatCouldNotExpect) {
    Bound empty(zelTagInt, 0);
    TagFile file(empty.desc);
    EXPECT_EQ(empty.tag.read(&file), zelOKAY);
    EXPECT_EQ(file.calls, "");
    EXPECT_EQ(empty.tag.write(&file), zelBADFIELDSET);
    EXPECT_EQ(file.calls, "set 42");
    for (const auto& [type, count] : {std::pair(int{zelTagInt}, 6U), std::pair(0xF0, 1U)}) {
        Bound bound(type, count);
        EXPECT_EQ(bound.tag.read(&file), zelBADPARAMS);
        EXPECT_EQ(bound.tag.write(&file), zelBADPARAMS);
    }
    EXPECT_EQ(file.calls, "set 42");
}

TEST(Tag, ownsOnlyTheStringsItMade) {
    Bound bound(zelTagString, 1);
    TagFile file(bound.desc);
    EXPECT_EQ(bound.text(), "");
    EXPECT_EQ(bound.tag.decode("mine"), zelOKAY);
    EXPECT_EQ(bound.tag.decode("mine too"), zelOKAY);
    bound.tag.read(&file);
    EXPECT_EQ(bound.text(), "of the format");
    // Freeing the format's string, or losing one of the tag's, is what the sanitizer would see.
    EXPECT_EQ(bound.tag.decode("mine again"), zelOKAY);
    EXPECT_EQ(bound.text(), "mine again");
}

} // namespace
