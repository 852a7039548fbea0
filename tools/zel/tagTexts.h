#ifndef ZEL_TOOL_TAGTEXTS_H
#define ZEL_TOOL_TAGTEXTS_H

#include <zel/zelFile.h>
#include <zel/zelTag.h>

#include <map>
#include <span>
#include <string>
#include <vector>

namespace zel::tool {

/// The tags that a file's format knows.
std::span<zelTagDescription> tagDescriptions(const zelFile& file);

/// The description of a tag by its name, case not counting; null if the format has none.
zelTagDescription* findTag(const zelFile& file, const std::string& name);

struct TagText {
    std::string name;
    std::string text;
};

/// The tags that the current image has, as text.
std::vector<TagText> readTags(zelFile& file);

/// Sets a tag from text. An empty text takes a tag of text away. Throws a Failure under `name`.
void writeTag(zelFile& file, const std::string& name, zelTagDescription& tag,
              const std::string& text);

/// New names by old ones.
using TagNames = std::map<std::string, std::string>;

/// Copies the tags that both formats have by name, but for those named in `except`; those in
/// `renamed` take another name. The result names those that could not be copied.
std::vector<std::string> copyTags(zelFile& from, zelFile& to,
                                  const std::vector<std::string>& except, const TagNames& renamed);

} // namespace zel::tool

#endif
