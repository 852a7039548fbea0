#include "formatList.h"

#include "messages.h"
#include "valueNames.h"

#include <zel/zelError.h>
#include <zel/zelTypeNames.h>

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>

namespace zel::tool {
namespace {

/// The names of the values that the format answers yes to.
template <class Values, class NameOf, class IsSupported>
std::string supportedNames(Values values, NameOf nameOf, IsSupported isSupported) {
    std::vector<std::string> names;
    for (const auto value : values) {
        if (isSupported(value)) {
            names.push_back(nameOf(value));
        }
    }
    return names.empty() ? "none" : joinWords(names);
}

std::string quoted(const char* word) {
    std::string text = "\"";
    text += word;
    return text + '"';
}

std::string extents(const zelSize& size) {
    std::string text = std::to_string(size.x) + "x" + std::to_string(size.y);
    return size.z == 1 ? text : text + "x" + std::to_string(size.z);
}

std::string channelCount(const zelSize& size) {
    return std::to_string(size.c) + (size.c == 1 ? " channel" : " channels");
}

/// Page sizes near the one that a format refuses: the next of multiples of 16, which suit many
/// formats, and the one that the format prefers.
std::string pagesNear(zelFormat& format, const zelFileConfig& config) {
    const zelSize& size = config.getDimensions();
    const zelSize& wish = config.getPageDimensions();
    const zelOrientation orientation = config.getOrientation();
    const auto roundedUp = [](int extent) {
        return extent > INT_MAX - 15 ? extent : (extent + 15) / 16 * 16;
    };
    zelSize preferred(0, 0, 0, 0);
    format.getPreferredPageSize(size.x, size.y, size.z, size.c, preferred.x, preferred.y,
                                preferred.z, preferred.c, orientation);
    std::vector<std::string> pages;
    for (const zelSize& page :
         {zelSize(roundedUp(wish.x), roundedUp(wish.y), wish.z, wish.c), preferred}) {
        if (format.pageSizeIsSupported(size.x, size.y, size.z, size.c, page.x, page.y, page.z,
                                       page.c, orientation)) {
            pages.push_back(extents(page));
        }
    }
    return pages.empty() ? "" : "; it can store pages of " + joinWords(pages);
}

/// The file that the library loads for a plug-in's name in the database.
std::string pluginFile(const char* dsoName) {
    const std::filesystem::path name(dsoName);
    const auto file =
        name.parent_path() / (name.stem().string() + "_d" + name.extension().string());
    Dl_info library{};
    if (name.has_parent_path() || !dladdr(reinterpret_cast<void*>(zelErrorV), &library)) {
        return file.string();
    }
    // The library's run path does not count for a load by the command.
    const auto beside = std::filesystem::path(library.dli_fname).parent_path() / "zel" / file;
    return access(beside.c_str(), F_OK) == 0 ? beside.string() : file.string();
}

/// The loader's words for a plug-in that does not load; empty if it does.
std::string loaderReason(const char* dsoName) {
    if (dlopen(pluginFile(dsoName).c_str(), RTLD_NOW | RTLD_LOCAL)) {
        return {};
    }
    const char* const words = dlerror();
    return words ? words : "";
}

zelFormat& loaded(zelDatabase& entry, const std::string& shownName) {
    if (zelFormat* format = entry.getFormat(1)) {
        return *format;
    }
    const std::string reported = takeExplainedErrors();
    throw Failure{shownName, reported.empty() ? std::string("the plug-in of format ") +
                                                    entry.getName() + " does not load"
                                              : reported};
}

zelDatabase* entryFor(const ImageName& name, const std::optional<std::string>& format) {
    if (format) {
        return zelDatabase::findByFormatName(format->c_str());
    }
    zelDatabase* const bySuffix = zelDatabase::findByFileName(name.file.c_str(), 0);
    return bySuffix ? bySuffix : zelDatabase::findByFormatName("TIFF");
}

} // namespace

std::vector<zelDatabase*> allFormats() {
    std::vector<zelDatabase*> entries;
    int index = 0;
    while (zelDatabase* entry = zelDatabase::findNext(index)) {
        entries.push_back(entry);
    }
    std::sort(entries.begin(), entries.end(), [](zelDatabase* a, zelDatabase* b) {
        return std::strcmp(a->getName(), b->getName()) < 0;
    });
    return entries;
}

std::string joinedFormatNames() {
    std::vector<std::string> names;
    for (const zelDatabase* entry : allFormats()) {
        names.emplace_back(entry->getName());
    }
    return names.empty() ? "none" : joinWords(names);
}

std::string unknownFormatText(const std::string& format) {
    return "unknown format \"" + format + "\"; the formats are " + joinedFormatNames();
}

std::string takeExplainedErrors() {
    std::string text = takeReportedErrors();
    if (text.empty()) {
        return text;
    }
    for (const zelDatabase* entry : allFormats()) {
        const char* const dsoName = entry->getDSOName();
        if (dsoName && text.find(quoted(dsoName)) != std::string::npos) {
            const std::string reason = loaderReason(dsoName);
            if (!reason.empty()) {
                text.append(" (").append(reason).append(")");
            }
            return text;
        }
    }
    return text;
}

zelFormat& findOutputFormat(const ImageName& name, const std::optional<std::string>& wanted) {
    const std::string shownName = joinImageName(name);
    const auto& formatName = wanted ? wanted : name.format;
    zelDatabase* const entry = entryFor(name, formatName);
    if (!entry) {
        const std::string reported = takeExplainedErrors();
        throw Failure{shownName, !reported.empty() ? reported
                                 : formatName      ? unknownFormatText(*formatName)
                                                   : "no format for this name; the formats are " +
                                                    joinedFormatNames()};
    }
    if (!formatName && !zelDatabase::findByFileName(name.file.c_str(), 0)) {
        printMessage(shownName, std::string("no format has this suffix; it becomes a ") +
                                    entry->getName() + " file");
    }
    zelFormat& format = loaded(*entry, shownName);
    if (!format.accessModeIsSupported(2)) {
        throw Failure{shownName, std::string("format ") + format.getName() + " cannot be written"};
    }
    return format;
}

std::string refusalText(zelFormat& format, const zelFileConfig& config) {
    const zelSize& size = config.getDimensions();
    const zelSize& page = config.getPageDimensions();
    const zelOrientation orientation = config.getOrientation();
    const std::string start = std::string(format.getName()) + " cannot store ";
    if (!format.sizeIsSupported(size.x, size.y, size.z, size.c, orientation)) {
        return start + "an image of " + extents(size) + " with " + channelCount(size);
    }
    if (!format.typeIsSupported(config.getDataType())) {
        return start + "type " + dataTypeWord(config.getDataType()) + "; it can store " +
               supportedNames(allDataTypes(), dataTypeWord,
                              [&](zelDataType type) { return format.typeIsSupported(type); });
    }
    if (!format.orderIsSupported(config.getOrder())) {
        return start + "order " + zelOrderName(config.getOrder()) + "; it can store " +
               supportedNames(allOrders(), zelOrderName,
                              [&](zelOrder order) { return format.orderIsSupported(order); });
    }
    if (!format.pageSizeIsSupported(size.x, size.y, size.z, size.c, page.x, page.y, page.z, page.c,
                                    orientation)) {
        return start + "pages of " + extents(page) + " with " + channelCount(page) +
               pagesNear(format, config);
    }
    if (!format.orientationIsSupported(orientation)) {
        return start + "orientation " + zelOrientationName(orientation) + "; it can store " +
               supportedNames(allOrientations(), zelOrientationName, [&](zelOrientation other) {
                   return format.orientationIsSupported(other);
               });
    }
    if (!format.colorModelIsSupported(config.getColorModel())) {
        return start + "colour model " + zelColorModelName(config.getColorModel()) +
               "; it can store " +
               supportedNames(allColorModels(), zelColorModelName, [&](zelColorModel model) {
                   return format.colorModelIsSupported(model);
               });
    }
    if (!format.compressionIsSupported(config.getCompression())) {
        return start + "compression " + zelCompressionName(config.getCompression()) +
               "; it can store " +
               supportedNames(allCompressions(), zelCompressionName,
                              [&](zelCompression c) { return format.compressionIsSupported(c); });
    }
    return start + "type " + dataTypeWord(config.getDataType()) + " with order " +
           zelOrderName(config.getOrder()) + ", colour model " +
           zelColorModelName(config.getColorModel()) + " and compression " +
           zelCompressionName(config.getCompression()) + " together";
}

} // namespace zel::tool
