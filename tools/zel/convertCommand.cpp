#include "commands.h"

#include "convertImage.h"
#include "messages.h"
#include "valueNames.h"

#include <cmath>

namespace zel::tool {
namespace {

/// The options as they stand on the command line; empty means not given.
struct Words {
    std::string in, out;
    std::string format, type, order, orientation, model, compression, page, region, channels;
    std::string values = "scale";
    std::string range;
    std::string weights = "rec601";
    std::string dither = "diffusion";
    bool allImages = false;
    bool strip = false;
};

/// Parses a word that was given.
template <class T, class Parse>
std::optional<T> given(const std::string& option, const std::string& word, Parse parse) {
    return word.empty() ? std::nullopt : std::optional<T>(parse(option, word));
}

zelXY<int> parsePage(const std::string& option, const std::string& word) {
    std::string numbers = word;
    const size_t cross = numbers.find('x');
    if (cross != std::string::npos) {
        numbers[cross] = ',';
        const std::vector<int> extents = parseIntegers(option, numbers);
        if (extents.size() == 2 && extents[0] > 0 && extents[1] > 0) {
            return {extents[0], extents[1]};
        }
    }
    throw UsageError{option + ": \"" + word + "\" is no page size like 256x256"};
}

zelTile3D<int> parseRegion(const std::string& option, const std::string& word) {
    const std::vector<int> n = parseIntegers(option, word);
    if (n.size() < 4 || n.size() > 6) {
        throw UsageError{option + ": X,Y,W,H is wanted, perhaps with a plane Z and a depth behind"};
    }
    const int z = n.size() > 4 ? n[4] : 0;
    const int depth = n.size() > 5 ? n[5] : n.size() > 4 ? 1 : 0;
    const bool depthMissing = n.size() > 5 && depth < 1;
    if (n[0] < 0 || n[1] < 0 || n[2] < 1 || n[3] < 1 || z < 0 || depthMissing) {
        throw UsageError{option + ": the corner must not be negative, and extents are at least 1"};
    }
    return {n[0], n[1], z, n[2], n[3], depth};
}

ValueMode parseValues(const std::string& option, const std::string& word) {
    if (word == "scale") {
        return ValueMode::scale;
    }
    if (word == "clamp") {
        return ValueMode::clamp;
    }
    if (word == "keep") {
        return ValueMode::keep;
    }
    throw UsageError{option + ": \"" + word + "\" is none of scale, clamp, keep"};
}

ValueRange parseRange(const std::string& option, const std::string& word) {
    const std::vector<double> ends = parseNumbers(option, word);
    // The difference is neither 0 nor infinite nor NaN.
    if (ends.size() != 2 || !(ends[1] - ends[0] != 0) || !(ends[1] - ends[0] < HUGE_VAL) ||
        !(ends[0] - ends[1] < HUGE_VAL)) {
        throw UsageError{option + ": two different numbers LO,HI are wanted"};
    }
    return {ends[0], ends[1]};
}

bool parseDither(const std::string& option, const std::string& word) {
    if (word != "diffusion" && word != "none") {
        throw UsageError{option + ": \"" + word + "\" is none of diffusion, none"};
    }
    return word == "diffusion";
}

ConvertOptions interpret(const Words& words) {
    ConvertOptions options;
    if (!words.format.empty()) {
        options.format = words.format;
    }
    options.type = given<zelDataType>("--type", words.type, parseDataType);
    options.order = given<zelOrder>("--order", words.order, parseOrder);
    options.orientation =
        given<zelOrientation>("--orientation", words.orientation, parseOrientation);
    options.model = given<zelColorModel>("--model", words.model, parseColorModel);
    options.compression =
        given<zelCompression>("--compression", words.compression, parseCompression);
    options.page = given<zelXY<int>>("--page", words.page, parsePage);
    options.region = given<zelTile3D<int>>("--region", words.region, parseRegion);
    if (!words.channels.empty()) {
        options.channels = parseIntegers("--channels", words.channels);
    }
    options.pixels.mode = parseValues("--values", words.values);
    options.pixels.inputRange = given<ValueRange>("--range", words.range, parseRange);
    options.pixels.weights = parseWeights("--weights", words.weights);
    options.dithers = parseDither("--dither", words.dither);
    options.allImages = words.allImages;
    options.strip = words.strip;
    if (options.pixels.inputRange && options.pixels.mode != ValueMode::scale) {
        throw UsageError{"--range scales values and does not go with --values " + words.values};
    }
    return options;
}

} // namespace

Command addConvertCommand(CLI::App& app) {
    const auto words = std::make_shared<Words>();
    CLI::App* const command =
        app.add_subcommand("convert", "Write an image to a new file, in another form if wanted");
    command->add_option("IN", words->in, "Full name of the image to read")->required();
    command->add_option("OUT", words->out, "Full name of the file to write")->required();
    command->add_option("--format", words->format, "Format of OUT; see zel formats");
    command->add_option("--type", words->type,
                        "Element type: bit, uchar, char, ushort, short, uint, int, float, double "
                        "(or u8, i16, f32, ...)");
    command->add_option("--order", words->order,
                        "Channel order: interleaved, sequential, separate");
    command->add_option("--orientation", words->orientation,
                        "Corner of the first pixel: upper-left, lower-left, left-upper, ... The "
                        "pixels move, so that the picture stays. Default: as in IN if OUT has the "
                        "same format, else upright");
    command->add_option("--model", words->model,
                        "Colour model: luminance, RGB, RGBA, palette, negative, ...");
    command->add_option("--compression", words->compression,
                        "none, lzw, zip, jpeg, packbits, fax3, fax4. Default: as in IN where OUT "
                        "can, but what loses is kept in the same format only");
    command->add_option("--page", words->page, "Size WxH of the pages that OUT is stored in");
    command->add_option("--region", words->region,
                        "Take the part X,Y,W,H[,Z[,DEPTH]] only, seen upright from the upper left");
    command->add_option("--channels", words->channels,
                        "Take these channels in this order, as in 2,1,0");
    command
        ->add_option("--values", words->values,
                     "Numbers when the element type changes: scale (full range to full range, 0 "
                     "to 1 for floats), clamp (the nearest number) or keep (the library's plain "
                     "conversion)")
        ->capture_default_str();
    command->add_option("--range", words->range,
                        "Input numbers LO,HI that become the ends of the output's range");
    command
        ->add_option("--weights", words->weights,
                     "Parts of red, green and blue in luminance: rec601, rec709, average, R,G,B")
        ->capture_default_str();
    command
        ->add_option("--dither", words->dither,
                     "Where colours are reduced to a palette: diffusion spreads the error over the "
                     "neighbours, none takes the nearest colour")
        ->capture_default_str();
    command->add_flag("--all", words->allImages, "Take every image of the file");
    command->add_flag("--strip", words->strip,
                      "Leave out statistics, scale values, ICC profile and tags");
    return [words] {
        convertImage(words->in, words->out, interpret(*words));
        return 0;
    };
}

} // namespace zel::tool
