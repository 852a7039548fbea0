#include "tagTexts.h"

#include "imageFile.h"

#include <zel/zelFormat.h>

#include <algorithm>
#include <cstring>
#include <strings.h>

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
    if ((type == zelTagShortEnum || type == zelTagIntEnum) && description.spec) {
        size_t longest = 0;
        for (const auto* e = static_cast<const zelEnumSpec*>(description.spec); e->name; ++e) {
            longest = std::max(longest, std::strlen(e->name));
        }
        room += count * longest;
    }
    return room;
}

bool sameShape(const zelTagDescription& a, const zelTagDescription& b) {
    const bool enumerated = (a.flags & 0xF0u) == static_cast<unsigned>(zelTagShortEnum) ||
                            (a.flags & 0xF0u) == static_cast<unsigned>(zelTagIntEnum);
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
    zelTag tag(&description);
    const bool removes = text.empty() && tag.getType() == zelTagString;
    if (!removes && tag.decode(text.c_str()) != zelOKAY) {
        throw Failure{name, std::string("tag ") + description.name + " does not take \"" + text +
                                "\": " + description.description};
    }
    require(name, tag.write(&file));
}

std::vector<std::string> copyTags(zelFile& from, zelFile& to,
                                  const std::vector<std::string>& except) {
    std::vector<std::string> lost;
    for (zelTagDescription& description : tagDescriptions(from)) {
        zelTag tag(&description);
        if (std::find(except.begin(), except.end(), description.name) != except.end() ||
            tag.getCount() == 0 || tag.read(&from) != zelOKAY) {
            continue;
        }
        zelTagDescription* const target = findTag(to, description.name);
        if (!target || copyTag(tag, description, *target, to) != zelOKAY) {
            lost.emplace_back(description.name);
        }
    }
    return lost;
}

} // namespace zel::tool
