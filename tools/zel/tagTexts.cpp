#include "tagTexts.h"

#include "imageFile.h"
#include "valueNames.h"

#include <zel/zelFormat.h>

#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace zel::tool {
namespace {

/// More than any number takes as text.
constexpr size_t kNumberRoom = 64;

/// Bytes of one element in the value of a tag.
size_t elementSize(int type) {
    switch (type) {
    case zelTagShort:
    case zelTagShortEnum:
        return sizeof(short);
    case zelTagDouble:
    case zelTagDouble2:
        return sizeof(double);
    case zelTagString:
        return sizeof(char*);
    default:
        return sizeof(int);
    }
}

bool isEnumerated(int type) {
    return type == zelTagShortEnum || type == zelTagIntEnum;
}

/// The names of an enumerated tag's values.
std::vector<std::string> valueNames(const zelTagDescription& description) {
    std::vector<std::string> names;
    if (description.spec) {
        for (const auto* e = static_cast<const zelEnumSpec*>(description.spec); e->name; ++e) {
            names.emplace_back(e->name);
        }
    }
    return names;
}

/// What the text of a tag may take. The library does not look at the room that it is given.
size_t textRoom(const zelTag& tag, const zelTagDescription& description) {
    const auto count = static_cast<size_t>(tag.getCount());
    size_t room = 1 + count * kNumberRoom;
    const int type = tag.getType();
    if (type == zelTagString) {
        const auto* const strings = static_cast<char* const*>(tag.getValue());
        for (size_t i = 0; i < count; ++i) {
            room += strings[i] ? std::strlen(strings[i]) : 0;
        }
    }
    if (isEnumerated(type)) {
        size_t longest = 0;
        for (const std::string& name : valueNames(description)) {
            longest = std::max(longest, name.size());
        }
        room += count * longest;
    }
    return room;
}

bool sameShape(const zelTagDescription& a, const zelTagDescription& b) {
    const bool enumerated = isEnumerated(static_cast<int>(a.flags & 0xF0u));
    return (a.flags & 0xFFu) == (b.flags & 0xFFu) && (!enumerated || a.spec == b.spec);
}

/// The text of a tag that was read.
std::string textOf(const zelTag& tag, const zelTagDescription& description) {
    std::vector<char> text(textRoom(tag, description));
    tag.encode(text.data());
    return text.data();
}

zelStatus copyTag(const zelTag& value, const zelTagDescription& from, zelTagDescription& target,
                  zelFile& to) {
    zelTag copy(&target);
    if (sameShape(from, target)) {
        // Strings stay those of the source, which outlives the copy.
        const auto count = static_cast<size_t>(value.getCount());
        std::memcpy(copy.getValue(), value.getValue(), count * elementSize(value.getType()));
        return copy.write(&to);
    }
    const zelStatus status = copy.decode(textOf(value, from).c_str());
    return status == zelOKAY ? copy.write(&to) : status;
}

bool abbreviates(const std::string& word, const char* full) {
    return strncasecmp(word.c_str(), full, word.size()) == 0;
}

bool isNumber(const std::string& word, int type) {
    char* end = nullptr;
    errno = 0;
    if (type == zelTagShort || type == zelTagInt || type == zelTagInt2) {
        const long value = std::strtol(word.c_str(), &end, 0);
        const bool isShort = type == zelTagShort;
        const long low = isShort ? SHRT_MIN : INT_MIN;
        const long high = isShort ? SHRT_MAX : INT_MAX;
        return *end == '\0' && errno == 0 && value >= low && value <= high;
    }
    std::strtod(word.c_str(), &end);
    return *end == '\0';
}

bool isElement(const std::string& word, int type, const zelTagDescription& description) {
    if (isEnumerated(type)) {
        const auto names = valueNames(description);
        return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return abbreviates(word, name.c_str());
        });
    }
    if (type == zelTagBool) {
        return abbreviates(word, "true") || abbreviates(word, "false") || isNumber(word, zelTagInt);
    }
    return isNumber(word, type);
}

/// Whether a text says what a tag is to hold, no more and no less. The library takes from a text
/// what it can, and leaves or makes 0 of the rest.
bool isWellFormed(std::string text, const zelTag& tag, const zelTagDescription& description) {
    if (tag.getType() == zelTagString) {
        return true;
    }
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream words(text);
    int count = 0;
    for (std::string word; words >> word; ++count) {
        if (!isElement(word, tag.getType(), description)) {
            return false;
        }
    }
    return count == tag.getCount();
}

/// The words for `count` values that a tag takes, behind "wants".
std::string kindOfValue(int type) {
    switch (type) {
    case zelTagString:
        return "text";
    case zelTagBool:
        return "true or false";
    case zelTagFloat:
    case zelTagFloat2:
    case zelTagDouble:
    case zelTagDouble2:
        return "a number";
    default:
        return "a whole number";
    }
}

std::string wantedText(const zelTag& tag, const zelTagDescription& description) {
    std::string text = isEnumerated(tag.getType())
                           ? "the values are " + joinWords(valueNames(description))
                           : "it wants " + kindOfValue(tag.getType());
    if (tag.getCount() > 1) {
        text += "; " + std::to_string(tag.getCount()) + " values are wanted";
    }
    return text + " (" + description.description + ")";
}

} // namespace

std::span<zelTagDescription> tagDescriptions(const zelFile& file) {
    int count = 0;
    zelTagDescription* const first = file.getFormat()->getTagDescriptions(count);
    return {first, first ? static_cast<size_t>(count) : 0};
}

zelTagDescription* findTag(const zelFile& file, const std::string& name) {
    for (zelTagDescription& tag : tagDescriptions(file)) {
        if (strcasecmp(tag.name, name.c_str()) == 0) {
            return &tag;
        }
    }
    return nullptr;
}

std::vector<TagText> readTags(zelFile& file) {
    std::vector<TagText> texts;
    for (zelTagDescription& description : tagDescriptions(file)) {
        zelTag tag(&description);
        if (tag.getCount() > 0 && tag.read(&file) == zelOKAY) {
            texts.push_back({description.name, textOf(tag, description)});
        }
    }
    return texts;
}

void writeTag(zelFile& file, const std::string& name, zelTagDescription& description,
              const std::string& text) {
    const auto refuse = [&](const std::string& reason) {
        throw Failure{name, std::string("tag ") + description.name + " does not take \"" + text +
                                "\": " + reason};
    };
    zelTag tag(&description);
    const bool removes = text.empty() && tag.getType() == zelTagString;
    if (text.empty() && !removes) {
        throw Failure{name, std::string("tag ") + description.name +
                                " cannot be taken away, only changed: it is no text"};
    }
    if (!isWellFormed(text, tag, description) ||
        (!removes && tag.decode(text.c_str()) != zelOKAY)) {
        refuse(wantedText(tag, description));
    }
    const zelStatus status = tag.write(&file);
    const zelMainStatus kind = zelStatusMain(status);
    if (kind == zelUNSUPPORTEDBYFORMAT || kind == zelREADONLY) {
        throw Failure{name, std::string("format ") + file.getFormat()->getName() +
                                " cannot change the tags of a file in place"};
    }
    if (status != zelOKAY) {
        refuse(failureOf(name, status).reason);
    }
}

std::vector<std::string> copyTags(zelFile& from, zelFile& to,
                                  const std::vector<std::string>& except, const TagNames& renamed) {
    std::vector<std::string> lost;
    for (zelTagDescription& description : tagDescriptions(from)) {
        zelTag tag(&description);
        if (std::find(except.begin(), except.end(), description.name) != except.end() ||
            tag.getCount() == 0 || tag.read(&from) != zelOKAY) {
            continue;
        }
        const auto other = renamed.find(description.name);
        zelTagDescription* const target =
            findTag(to, other == renamed.end() ? description.name : other->second);
        const bool copied = target && copyTag(tag, description, *target, to) == zelOKAY;
        const char* const usual = description.defaultValue ? description.defaultValue : "";
        if (!copied && textOf(tag, description) != usual) {
            lost.emplace_back(description.name);
        }
    }
    return lost;
}

} // namespace zel::tool
