#include "commands.h"

#include "imageFile.h"
#include "imageName.h"
#include "safeOutput.h"
#include "table.h"
#include "tagTexts.h"
#include "valueNames.h"

#include <zel/zelFormat.h>

#include <nlohmann/json.hpp>

#include <iostream>

namespace zel::tool {
namespace {

struct Options {
    std::string name;
    std::vector<std::string> changes;
    bool asJson = false;
};

void printTags(zelFile& file, const std::string& name) {
    if (file.getNumImgs() > 1) {
        std::cout << name << ":\n";
    }
    for (const TagText& tag : readTags(file)) {
        std::cout << tag.name << " = " << tag.text << '\n';
    }
}

void listTags(const Options& options) {
    auto array = nlohmann::ordered_json::array();
    forEachImage(options.name, [&](zelFile& file, const std::string& name) {
        if (!options.asJson) {
            printTags(file, name);
            return;
        }
        auto tags = nlohmann::ordered_json::object();
        for (const TagText& tag : readTags(file)) {
            tags[tag.name] = tag.text;
        }
        array.push_back({{"name", name}, {"tags", tags}});
    });
    if (options.asJson) {
        std::cout << jsonText(array);
    }
}

/// Splits "name=text".
TagText parseChange(const std::string& change) {
    const size_t at = change.find('=');
    if (at == std::string::npos || at == 0) {
        throw UsageError{"--set: \"" + change + "\" is not of the form NAME=TEXT"};
    }
    return {change.substr(0, at), change.substr(at + 1)};
}

zelTagDescription& knownTag(const zelFile& file, const std::string& name,
                            const std::string& tagName) {
    if (zelTagDescription* const tag = findTag(file, tagName)) {
        return *tag;
    }
    std::vector<std::string> names;
    for (const zelTagDescription& tag : tagDescriptions(file)) {
        names.emplace_back(tag.name);
    }
    const std::string format = file.getFormat()->getName();
    throw Failure{name, names.empty() ? "format " + format + " has no tags"
                                      : "format " + format + " has no tag \"" + tagName +
                                            "\"; its tags are " + joinWords(names)};
}

void changeTags(const Options& options) {
    std::vector<TagText> changes;
    for (const std::string& change : options.changes) {
        changes.push_back(parseChange(change));
    }
    const WorkingOn working(options.name);
    ImageName name = splitImageName(options.name);
    {
        // Before anything is copied: the tags must be known, and the file must be one.
        const ImageFile file = openImage(options.name);
        for (const TagText& change : changes) {
            knownTag(*file, options.name, change.name);
        }
    }
    SafeOutput safe(name.file, options.name);
    const WorkingOn onCopy(options.name, safe.temporaryFile());
    safe.copyFrom(name.file);
    name.file = safe.temporaryFile();
    zelStatus status = zelOKAY;
    ImageFile file(zelFile::open(joinImageName(name).c_str(), 2, &status));
    if (!file) {
        throw failureOf(options.name, status);
    }
    for (const TagText& change : changes) {
        writeTag(*file, options.name, knownTag(*file, options.name, change.name), change.text);
    }
    require(options.name, file.release()->close(0));
    safe.commit();
}

} // namespace

Command addTagsCommand(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("tags", "List or change the tags of images");
    command->add_option("FILE", options->name, "Full image name")->required();
    command
        ->add_option("--set", options->changes,
                     "Set a tag, as NAME=TEXT; an empty text takes a tag of text away")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
    command->add_flag("--json", options->asJson, "Print an array of objects, one an image");
    return [options] {
        if (options->changes.empty()) {
            listTags(*options);
        } else {
            changeTags(*options);
        }
        return 0;
    };
}

} // namespace zel::tool
