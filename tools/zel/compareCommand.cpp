#include "commands.h"

#include "imageComparison.h"
#include "imageFile.h"
#include "messages.h"
#include "table.h"
#include "valueNames.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <iostream>

namespace zel::tool {
namespace {

struct Options {
    std::string a, b;
    std::string tolerance = "0";
    bool asJson = false;
};

std::string verdict(const Comparison& result, double tolerance) {
    if (result.mismatch) {
        return "different";
    }
    if (result.largest == 0) {
        return "equal";
    }
    return result.largest <= tolerance ? "close" : "different";
}

/// JSON has no number for what is not finite.
nlohmann::ordered_json number(double value) {
    return std::isfinite(value) ? nlohmann::ordered_json(value)
                                : nlohmann::ordered_json(numberText(value));
}

void printJson(const Comparison& result, const std::string& word) {
    nlohmann::ordered_json object{{"result", word}};
    if (result.mismatch) {
        object["mismatch"] = *result.mismatch;
    } else {
        object["mean"] = number(result.meanError);
        object["rms"] = number(result.rms);
        object["psnr"] = number(result.psnr());
        object["largest"] = number(result.largest);
        if (result.largest > 0) {
            object["x"] = result.x;
            object["y"] = result.y;
            object["z"] = result.z;
            object["channel"] = result.channel;
            object["values"] = {number(result.valueA), number(result.valueB)};
        }
    }
    std::cout << jsonText(object);
}

void print(const Comparison& result, const std::string& word) {
    std::cout << word;
    if (result.mismatch) {
        std::cout << ": " << *result.mismatch << '\n';
        return;
    }
    std::cout << '\n';
    if (result.largest > 0) {
        Table table;
        table.addRow({"  mean", shortNumberText(result.meanError)});
        table.addRow({"  RMS", shortNumberText(result.rms)});
        table.addRow({"  PSNR", shortNumberText(result.psnr()) + " dB"});
        table.addRow(
            {"  largest", numberText(result.largest) + " at " + std::to_string(result.x) + "," +
                              std::to_string(result.y) + "," + std::to_string(result.z) +
                              " in channel " + std::to_string(result.channel) + ": " +
                              numberText(result.valueA) + " and " + numberText(result.valueB)});
        std::cout << table.text();
    }
}

int compare(const Options& options) {
    const auto tolerances = parseNumbers("--tolerance", options.tolerance);
    if (tolerances.size() != 1 || !(tolerances[0] >= 0)) {
        throw UsageError{"--tolerance: a number from 0 on is wanted"};
    }
    const ImageFile a = openImage(options.a);
    const ImageFile b = openImage(options.b);
    const Comparison result = compareImages(*a, options.a, *b, options.b);
    const std::string word = verdict(result, tolerances[0]);
    if (options.asJson) {
        printJson(result, word);
    } else {
        print(result, word);
    }
    return word == "different" ? 1 : 0;
}

} // namespace

Command addCompareCommand(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        app.add_subcommand("compare", "Tell how far two images are apart, seen upright");
    command->footer("The exit status is 0 for equal or close images, 1 for different ones, 2 for "
                    "trouble.");
    command->add_option("A", options->a, "Full name of an image")->required();
    command->add_option("B", options->b, "Full name of another")->required();
    command
        ->add_option("--tolerance", options->tolerance,
                     "Images are close if no number differs by more than this")
        ->capture_default_str();
    command->add_flag("--json", options->asJson, "Print an object");
    return [options] { return compare(*options); };
}

} // namespace zel::tool
