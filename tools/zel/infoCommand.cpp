#include "commands.h"

#include "iccProfile.h"
#include "imageFile.h"
#include "imageName.h"
#include "table.h"
#include "tagTexts.h"
#include "valueNames.h"

#include <zel/zelColormap.h>
#include <zel/zelFormat.h>
#include <zel/zelTypeNames.h>

#include <nlohmann/json.hpp>

#include <iostream>

namespace zel::tool {
namespace {

/// The attributes of one image. Sizes are those of the upright image.
struct ImageInfo {
    std::string name;
    std::string file;
    std::string format;
    int image;
    int images;
    zelSize size;
    zelSize page;
    std::string type;
    std::string order;
    std::string colorModel;
    std::string orientation;
    std::string compression;
    // What only a verbose report tells.
    int colormapEntries = 0;
    size_t profileSize = 0;
    std::string profileName;
    std::vector<TagText> tags;
};

ImageInfo describe(zelFile& file, const std::string& name) {
    ImageInfo info{};
    info.image = file.getCurrentImg();
    info.images = file.getNumImgs();
    info.name = name;
    info.file = splitImageName(name).file;
    info.format = file.getFormat()->getName();
    file.getDimensions(info.size);
    file.getPageDimensions(info.page);
    info.type = dataTypeWord(file.getDataType());
    info.order = zelOrderName(file.getOrder());
    info.colorModel = zelColorModelName(file.getColorModel());
    info.orientation = zelOrientationName(file.getOrientation());
    info.compression = zelCompressionName(file.getCompression());
    return info;
}

void describeMore(zelFile& file, ImageInfo& info) {
    const zelColormap* map = nullptr;
    if (file.getColormap(map) == zelOKAY && map) {
        info.colormapEntries = map->getLength();
    }
    if (const auto profile = readProfile(file)) {
        info.profileSize = profile->size();
        info.profileName = profileName(*profile);
    }
    info.tags = readTags(file);
}

std::string extents(const zelSize& size) {
    const std::string plane = std::to_string(size.x) + "x" + std::to_string(size.y);
    return size.z == 1 ? plane : plane + "x" + std::to_string(size.z);
}

nlohmann::ordered_json toJson(const ImageInfo& info) {
    return {{"name", info.name},
            {"file", info.file},
            {"format", info.format},
            {"image", info.image},
            {"images", info.images},
            {"width", info.size.x},
            {"height", info.size.y},
            {"depth", info.size.z},
            {"channels", info.size.c},
            {"type", info.type},
            {"order", info.order},
            {"colorModel", info.colorModel},
            {"orientation", info.orientation},
            {"pageWidth", info.page.x},
            {"pageHeight", info.page.y},
            {"pageDepth", info.page.z},
            {"pageChannels", info.page.c},
            {"compression", info.compression}};
}

void addMore(nlohmann::ordered_json& object, const ImageInfo& info) {
    object["colormapEntries"] = info.colormapEntries;
    object["profileSize"] = info.profileSize;
    object["profileName"] = info.profileName;
    object["tags"] = nlohmann::ordered_json::object();
    for (const TagText& tag : info.tags) {
        object["tags"][tag.name] = tag.text;
    }
}

std::string pageText(const ImageInfo& info) {
    const std::string text = "page " + extents(info.page);
    return info.page.c == info.size.c ? text : text + " x " + std::to_string(info.page.c);
}

void printLines(const std::vector<ImageInfo>& infos) {
    Table table;
    for (const ImageInfo& info : infos) {
        table.addRow({info.name, info.format,
                      std::to_string(info.images) + (info.images == 1 ? " image" : " images"),
                      extents(info.size), info.colorModel,
                      std::to_string(info.size.c) + " x " + info.type, info.order, info.orientation,
                      pageText(info), info.compression});
    }
    std::cout << table.text();
}

void printVerbose(const ImageInfo& info) {
    Table table;
    table.addRow({"  format", info.format});
    table.addRow({"  image", std::to_string(info.image) + " of " + std::to_string(info.images)});
    table.addRow({"  size", extents(info.size)});
    table.addRow({"  channels", std::to_string(info.size.c)});
    table.addRow({"  type", info.type});
    table.addRow({"  order", info.order});
    table.addRow({"  colour model", info.colorModel});
    table.addRow({"  orientation", info.orientation});
    table.addRow({"  page size", extents(info.page)});
    table.addRow({"  page channels", std::to_string(info.page.c)});
    table.addRow({"  compression", info.compression});
    if (info.colormapEntries > 0) {
        table.addRow({"  colour map", std::to_string(info.colormapEntries) + " entries"});
    }
    if (info.profileSize > 0) {
        table.addRow(
            {"  ICC profile", std::to_string(info.profileSize) + " bytes  " + info.profileName});
    }
    for (const TagText& tag : info.tags) {
        table.addRow({"  " + tag.name, tag.text});
    }
    std::cout << info.name << '\n' << table.text();
}

/// Prints what is told of images, some at a time: a file may hold a great many.
class Report {
public:
    Report(bool json, bool verbose) : asJson(json), tellsAll(verbose) {}

    void add(zelFile& file, const std::string& name) {
        infos.push_back(describe(file, name));
        if (tellsAll) {
            describeMore(file, infos.back());
        }
        if (infos.size() == kAtOnce) {
            print();
        }
    }

    void end() {
        print();
        if (asJson) {
            std::cout << (anyPrinted ? "\n]\n" : "[]\n");
        }
    }

private:
    static constexpr size_t kAtOnce = 256;

    void print() {
        if (asJson) {
            for (const ImageInfo& info : infos) {
                std::cout << (anyPrinted ? ",\n" : "[\n") << jsonElementText(object(info));
                anyPrinted = true;
            }
        } else if (tellsAll) {
            for (const ImageInfo& info : infos) {
                printVerbose(info);
            }
        } else {
            printLines(infos);
        }
        infos.clear();
    }

    nlohmann::ordered_json object(const ImageInfo& info) const {
        nlohmann::ordered_json told = toJson(info);
        if (tellsAll) {
            addMore(told, info);
        }
        return told;
    }

    bool asJson;
    bool tellsAll;
    bool anyPrinted = false;
    std::vector<ImageInfo> infos;
};

int showInfo(const std::vector<std::string>& names, bool asJson, bool verbose) {
    Report report(asJson, verbose);
    const int status = forEachImage(
        names, [&](zelFile& file, const std::string& name) { report.add(file, name); });
    report.end();
    return status;
}

} // namespace

Command addInfoCommand(CLI::App& app) {
    struct Options {
        std::vector<std::string> names;
        bool asJson = false;
        bool verbose = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand(
        "info", "Tell the attributes of images, with the sizes that they have upright");
    command->add_option("FILE", options->names, "Full image names")->required();
    command->add_flag("--json", options->asJson, "Print an array of objects, one an image");
    command->add_flag("-v,--verbose", options->verbose, "Print all there is to know");
    return [options] { return showInfo(options->names, options->asJson, options->verbose); };
}

} // namespace zel::tool
