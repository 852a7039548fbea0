#include <zel/zelTag.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <zel/zelFile.h>

#include "platform/asciiCase.h"

using zel::platform::compareIgnoreCase;

namespace {

constexpr unsigned countMask = 0x0F;
constexpr unsigned typeMask = 0xF0;

/// What a file's calls take: the format reads as many arguments as the tag has elements.
constexpr int mostElements = 5;

constexpr const char* blanks = " \t";

std::size_t elementSize(int type) {
    switch (type) {
    case zelTagShort:
    case zelTagShortEnum:
        return sizeof(short);
    case zelTagInt:
    case zelTagInt2:
    case zelTagBool:
    case zelTagIntEnum:
        return sizeof(int);
    case zelTagFloat:
    case zelTagFloat2:
        return sizeof(float);
    case zelTagDouble:
    case zelTagDouble2:
        return sizeof(double);
    case zelTagString:
        return sizeof(char*);
    default:
        return 0;
    }
}

bool isEnumerated(int type) {
    return type == zelTagShortEnum || type == zelTagIntEnum;
}

/// Calls `action` with the elements as an array of what they are, or answers `otherwise` for a type
/// that has none.
template <class Action, class Result>
Result withElements(int type, void* value, Result otherwise, Action action) {
    switch (value ? type : -1) {
    case zelTagShort:
    case zelTagShortEnum:
        return action(static_cast<short*>(value));
    case zelTagInt:
    case zelTagInt2:
    case zelTagBool:
    case zelTagIntEnum:
        return action(static_cast<int*>(value));
    case zelTagFloat:
    case zelTagFloat2:
        return action(static_cast<float*>(value));
    case zelTagDouble:
    case zelTagDouble2:
        return action(static_cast<double*>(value));
    case zelTagString:
        return action(static_cast<char**>(value));
    default:
        return otherwise;
    }
}

template <class Element>
zelStatus fetch(zelFile& file, int tag, Element* v, int count) {
    switch (count) {
    case 1:
        return file.getTag(tag, v);
    case 2:
        return file.getTag(tag, v, v + 1);
    case 3:
        return file.getTag(tag, v, v + 1, v + 2);
    case 4:
        return file.getTag(tag, v, v + 1, v + 2, v + 3);
    default:
        return file.getTag(tag, v, v + 1, v + 2, v + 3, v + 4);
    }
}

/// Short elements and floats are widened to int and double by the call itself.
template <class Element>
zelStatus store(zelFile& file, int tag, const Element* v, int count) {
    switch (count) {
    case 1:
        return file.setTag(tag, v[0]);
    case 2:
        return file.setTag(tag, v[0], v[1]);
    case 3:
        return file.setTag(tag, v[0], v[1], v[2]);
    case 4:
        return file.setTag(tag, v[0], v[1], v[2], v[3]);
    default:
        return file.setTag(tag, v[0], v[1], v[2], v[3], v[4]);
    }
}

/// Room for one number in any text form.
struct NumberText {
    char text[32];
};

const zelEnumSpec* enumTable(const zelTagDescription& desc) {
    static constexpr zelEnumSpec none = {nullptr, 0};
    return desc.spec ? static_cast<const zelEnumSpec*>(desc.spec) : &none;
}

/// The text of one element, null if a name is wanted and the table has none.
const char* textOf(const zelTagDescription& desc, int type, int value, NumberText& out) {
    if (type == zelTagBool)
        return value != 0 ? "True" : "False";
    if (isEnumerated(type)) {
        const zelEnumSpec* row = enumTable(desc);
        while (row->name && row->value != value)
            ++row;
        return row->name;
    }
    std::snprintf(out.text, sizeof out.text, "%d", value);
    return out.text;
}

const char* textOf(const zelTagDescription&, int, double value, NumberText& out) {
    std::snprintf(out.text, sizeof out.text, "%g", value);
    return out.text;
}

const char* textOf(const zelTagDescription&, int, const char* value, NumberText&) {
    return value ? value : "";
}

/// A piece of a text that holds one value.
struct Word {
    const char* start;
    std::size_t length;

    bool abbreviates(const char* name) const { return compareIgnoreCase(start, name, length) == 0; }
};

/// The value at `text`, of which a quote in front is no part. False if its quote is not closed.
bool findWord(const char* text, bool isString, bool isOnly, Word& word) {
    const char quote = isString && (*text == '"' || *text == '\'') ? *text : '\0';
    word.start = quote ? text + 1 : text;
    if (quote) {
        const char* end = std::strchr(word.start, quote);
        word.length = end ? static_cast<std::size_t>(end - word.start) : 0;
        return end != nullptr;
    }
    word.length = isString && isOnly ? std::strlen(text) : std::strcspn(text, " \t,");
    return true;
}

int wholeNumber(const Word& word, int base) {
    return static_cast<int>(std::strtol(word.start, nullptr, base));
}

int truthValue(const Word& word) {
    if (word.abbreviates("false"))
        return 0;
    return word.abbreviates("true") ? 1 : wholeNumber(word, 10);
}

/// The value of the first name that the word abbreviates; false if there is none.
bool findName(const zelTagDescription& desc, const Word& word, int& value) {
    const zelEnumSpec* row = enumTable(desc);
    while (row->name && !word.abbreviates(row->name))
        ++row;
    value = row->value;
    return row->name != nullptr;
}

template <class Number>
zelStatus parseElement(const zelTagDescription& desc, int type, const Word& word, Number& element) {
    int number = 0;
    if (type == zelTagBool)
        number = truthValue(word);
    else if (!isEnumerated(type))
        number = wholeNumber(word, 0);
    else if (!findName(desc, word, number)) {
        zelError(zelSevWarning, "Invalid value for %s tag", desc.name);
        return zelOKAY;
    }
    element = static_cast<Number>(number);
    return zelOKAY;
}

zelStatus parseElement(const zelTagDescription&, int, const Word& word, float& element) {
    element = static_cast<float>(std::atof(word.start));
    return zelOKAY;
}

zelStatus parseElement(const zelTagDescription&, int, const Word& word, double& element) {
    element = std::atof(word.start);
    return zelOKAY;
}

zelStatus parseElement(const zelTagDescription&, int, const Word& word, char*& element) {
    element = static_cast<char*>(std::malloc(word.length + 1));
    if (!element)
        return zelStatusEncode(zelMALLOCFAILED, 1, errno);
    std::memcpy(element, word.start, word.length);
    element[word.length] = '\0';
    return zelOKAY;
}

const char* skipBlanks(const char* text) {
    return text + std::strspn(text, blanks);
}

/// What follows a value: one comma at most, with blanks around it.
const char* skipSeparator(const char* text) {
    text = skipBlanks(text);
    return *text == ',' ? skipBlanks(text + 1) : text;
}

} // namespace

zelTag::zelTag() : desc(nullptr), value(nullptr), strAllocated(0) {}

zelTag::zelTag(zelTagDescription* description) : zelTag() {
    init(description);
}

zelTag::~zelTag() {
    freeStrings();
    ::operator delete(value);
}

void zelTag::init(zelTagDescription* Desc) {
    desc = Desc;
    strAllocated = 0;
    const std::size_t bytes = elementSize(getType()) * static_cast<std::size_t>(getCount());
    value = bytes ? ::operator new(bytes, std::nothrow) : nullptr;
    if (value)
        std::memset(value, 0, bytes);
}

void* zelTag::getValue() const {
    return value;
}

int zelTag::getType() const {
    return desc ? static_cast<int>(desc->flags & typeMask) : 0;
}

int zelTag::getCount() const {
    return desc ? static_cast<int>(desc->flags & countMask) : 0;
}

zelStatus zelTag::read(zelFile* file) {
    const int count = getCount();
    if (!desc || count > mostElements || elementSize(getType()) == 0)
        return zelStatusEncode(zelBADPARAMS);
    if (count == 0)
        return zelOKAY;
    freeStrings();
    return withElements(getType(), value, zelStatusEncode(zelBADPARAMS),
                        [&](auto* elements) { return fetch(*file, desc->tag, elements, count); });
}

zelStatus zelTag::write(zelFile* file) const {
    const int count = getCount();
    if (!desc || count > mostElements || elementSize(getType()) == 0)
        return zelStatusEncode(zelBADPARAMS);
    if (count == 0)
        return file->setTag(desc->tag);
    return withElements(getType(), value, zelStatusEncode(zelBADPARAMS),
                        [&](auto* elements) { return store(*file, desc->tag, elements, count); });
}

zelStatus zelTag::encode(char* str) const {
    *str = '\0';
    return withElements(getType(), value, zelOKAY, [&](auto* elements) {
        for (int i = 0; i < getCount(); ++i) {
            NumberText number;
            const char* text = textOf(*desc, getType(), elements[i], number);
            if (!text)
                return zelStatusEncode(zelBADPARAMS);
            str = stpcpy(str, text);
            if (i + 1 < getCount())
                str = stpcpy(str, ", ");
        }
        return zelOKAY;
    });
}

zelStatus zelTag::decode(const char* str) {
    freeStrings();
    const int count = getCount();
    const bool isString = getType() == zelTagString;
    int found = 0;
    for (str = skipBlanks(str); found < count && *str; str = skipSeparator(str)) {
        Word word;
        if (!findWord(str, isString, count == 1, word))
            break;
        const zelStatus status = withElements(getType(), value, zelOKAY, [&](auto* elements) {
            return parseElement(*desc, getType(), word, elements[found]);
        });
        if (status != zelOKAY)
            return status;
        ++found;
        str = word.start + word.length;
        if (isString) {
            strAllocated = 1;
            if (*str)
                ++str;
        }
    }
    if (found == count)
        return zelOKAY;
    if (found > 0)
        zelError(zelSevWarning, "Not enough values for %s tag", desc->name);
    return zelStatusEncode(zelBADPARAMS);
}

void zelTag::freeStrings() {
    if (getType() != zelTagString || !value)
        return;
    char** strings = static_cast<char**>(value);
    for (int i = 0; i < getCount(); ++i) {
        if (strAllocated)
            std::free(strings[i]);
        strings[i] = nullptr;
    }
    strAllocated = 0;
}
