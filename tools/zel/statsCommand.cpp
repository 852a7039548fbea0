#include "commands.h"

#include "imageFile.h"
#include "pixelStats.h"
#include "table.h"
#include "valueNames.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>

namespace zel::tool {
namespace {

std::string hashText(std::uint64_t hash) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

nlohmann::ordered_json toJson(const std::string& name, const ImageStats& stats) {
    auto channels = nlohmann::ordered_json::array();
    for (size_t c = 0; c < stats.channels.size(); ++c) {
        const ChannelStats& channel = stats.channels[c];
        const auto unlessEmpty = [&](double value) {
            return channel.isEmpty() ? nlohmann::ordered_json() : nlohmann::ordered_json(value);
        };
        channels.push_back({{"channel", c},
                            {"min", unlessEmpty(channel.min())},
                            {"max", unlessEmpty(channel.max())},
                            {"mean", unlessEmpty(channel.mean())},
                            {"stddev", unlessEmpty(channel.deviation())},
                            {"nan", channel.nans()},
                            {"inf", channel.infinities()}});
    }
    return {{"name", name}, {"hash", hashText(stats.hash)}, {"channels", channels}};
}

void print(const std::string& name, const ImageStats& stats) {
    Table table({"  CHANNEL", "MIN", "MAX", "MEAN", "STDDEV", "NAN", "INF"});
    for (size_t c = 0; c < stats.channels.size(); ++c) {
        const ChannelStats& channel = stats.channels[c];
        const auto unlessEmpty = [&](double value) {
            return channel.isEmpty() ? "-" : shortNumberText(value);
        };
        table.addRow({"  " + std::to_string(c), unlessEmpty(channel.min()),
                      unlessEmpty(channel.max()), unlessEmpty(channel.mean()),
                      unlessEmpty(channel.deviation()), std::to_string(channel.nans()),
                      std::to_string(channel.infinities())});
    }
    std::cout << name << "  hash " << hashText(stats.hash) << '\n' << table.text();
}

int showStats(const std::vector<std::string>& names, bool asJson) {
    auto array = nlohmann::ordered_json::array();
    const int status = forEachImage(names, [&](zelFile& file, const std::string& name) {
        const ImageStats stats = measure(file, name);
        if (asJson) {
            array.push_back(toJson(name, stats));
        } else {
            print(name, stats);
        }
    });
    if (asJson) {
        std::cout << jsonText(array);
    }
    return status;
}

} // namespace

Command addStatsCommand(CLI::App& app) {
    struct Options {
        std::vector<std::string> names;
        bool asJson = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        app.add_subcommand("stats", "Measure the numbers in each channel of images");
    command->add_option("FILE", options->names, "Full image names")->required();
    command->add_flag("--json", options->asJson, "Print an array of objects, one an image");
    return [options] { return showStats(options->names, options->asJson); };
}

} // namespace zel::tool
