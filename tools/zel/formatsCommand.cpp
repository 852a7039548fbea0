#include "commands.h"

#include "formatList.h"
#include "messages.h"
#include "table.h"
#include "valueNames.h"

#include <zel/zelFormatDB.h>

#include <nlohmann/json.hpp>

#include <iostream>

namespace zel::tool {
namespace {

/// What there is to say about an entry of the format database.
struct FormatInfo {
    std::string name;
    std::string description;
    bool read;
    bool write;
    std::vector<std::string> suffixes;
    std::string rule; ///< how files of the format are recognised
    std::string plugin;
    bool loads;
    std::string reason; ///< why it does not load
};

std::string textOf(const char* text) {
    return text ? text : "";
}

FormatInfo describe(zelDatabase& entry) {
    // Every entry of the table was made by the loader.
    const auto& record = static_cast<const zelFormatDB&>(entry);
    FormatInfo info;
    info.name = textOf(entry.getName());
    info.description = textOf(entry.getDescription());
    info.read = entry.accessModeIsSupported(0) != 0;
    info.write = entry.accessModeIsSupported(2) != 0;
    if (zelList<zelSuffixItem>* list = record.getSuffixes()) {
        zelListIter<zelSuffixItem> items(*list);
        while (const zelSuffixItem* item = items.next()) {
            info.suffixes.emplace_back(item->suffix);
        }
    }
    info.rule = record.hasMatchRule()   ? "first bytes"
                : info.suffixes.empty() ? "name of the format"
                                        : "suffix";
    info.plugin = textOf(entry.getDSOName());
    info.loads = entry.getFormat(1) != nullptr;
    info.reason = takeExplainedErrors();
    return info;
}

nlohmann::ordered_json toJson(const FormatInfo& info) {
    nlohmann::ordered_json object{
        {"name", info.name},         {"description", info.description},
        {"read", info.read},         {"write", info.write},
        {"suffixes", info.suffixes}, {"rule", info.rule},
        {"plugin", info.plugin},     {"loads", info.loads},
    };
    if (!info.loads) {
        object["reason"] = info.reason;
    }
    return object;
}

void printTable(const std::vector<FormatInfo>& formats) {
    Table table({"NAME", "ACCESS", "SUFFIXES", "RECOGNISED BY", "PLUG-IN", "LOADS"});
    for (const FormatInfo& info : formats) {
        std::string suffixes;
        for (const std::string& suffix : info.suffixes) {
            suffixes += suffixes.empty() ? suffix : " " + suffix;
        }
        const std::string access = info.read && info.write ? "read/write"
                                   : info.read             ? "read"
                                                           : "write";
        table.addRow(
            {info.name, access, suffixes, info.rule, info.plugin, info.loads ? "yes" : "no"});
    }
    std::cout << table.text();
}

int listFormats(bool asJson) {
    std::vector<FormatInfo> formats;
    const std::vector<zelDatabase*> entries = allFormats();
    const std::string reported = takeReportedErrors();
    if (!reported.empty()) {
        throw Failure{"", reported};
    }
    formats.reserve(entries.size());
    for (zelDatabase* entry : entries) {
        formats.push_back(describe(*entry));
    }
    if (asJson) {
        auto array = nlohmann::ordered_json::array();
        for (const FormatInfo& info : formats) {
            array.push_back(toJson(info));
        }
        std::cout << jsonText(array);
        return 0;
    }
    printTable(formats);
    for (const FormatInfo& info : formats) {
        if (!info.loads) {
            printMessage(info.name, info.reason);
        }
    }
    return 0;
}

} // namespace

Command addFormatsCommand(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("formats", "List the image formats there are");
    const auto asJson = std::make_shared<bool>(false);
    command->add_flag("--json", *asJson, "Print an array of objects");
    return [asJson] { return listFormats(*asJson); };
}

} // namespace zel::tool
