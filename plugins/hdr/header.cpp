#include "header.h"

#include "kit/byteReader.h"
#include "kit/fileIo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

namespace zelhdr {

namespace {

constexpr unsigned text = zelkit::oneOf(zelTagString);
constexpr unsigned number = zelkit::oneOf(zelTagDouble);

constexpr int colorCorrectionTag = 2;

// Names are those of the file's lines. The numbers of several lines are multiplied.
constexpr zelTagDescription descriptions[] = {
    {1, number, "Factor that was applied to the radiances", "EXPOSURE", "1", nullptr},
    {colorCorrectionTag, text, "Factors that were applied to the three channels", "COLORCORR",
     "1 1 1", nullptr},
    {3, number, "Height of a pixel by its width", "PIXASPECT", "1", nullptr},
    {4, number, "Gamma that was applied", "GAMMA", "1", nullptr},
    {5, text, "Chromaticities of red, green, blue and white, x and y each", "PRIMARIES", "",
     nullptr},
    {6, text, "View of the scene", "VIEW", "", nullptr},
    {7, text, "Program that made the image", "SOFTWARE", "", nullptr},
};

constexpr std::string_view rgbForm = "32-bit_rle_rgbe";
constexpr std::string_view xyzForm = "32-bit_rle_xyze";

// By orientation, from 1 on: the axis of the scanlines' order, and that along a scanline.
struct Axes {
    std::string_view slow;
    std::string_view fast;
};
constexpr Axes axesOfOrientations[] = {
    {"-Y", "+X"}, {"-Y", "-X"}, {"+Y", "-X"}, {"+Y", "+X"},
    {"+X", "-Y"}, {"-X", "-Y"}, {"-X", "+Y"}, {"+X", "+Y"},
};

// What white space separates.
std::vector<std::string_view> wordsOf(std::string_view line) {
    std::vector<std::string_view> words;
    while (true) {
        const std::size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string_view::npos)
            return words;
        line.remove_prefix(first);
        const std::size_t length = std::min(line.find_first_of(" \t\r"), line.size());
        words.push_back(line.substr(0, length));
        line.remove_prefix(length);
    }
}

template <typename Number>
std::optional<Number> parse(std::string_view word) {
    Number value = 0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (result.ec != std::errc() || result.ptr != word.data() + word.size())
        return std::nullopt;
    return value;
}

std::string shortest(double value) {
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), result.ptr};
}

zelStatus readLine(zelkit::ByteReader& reader, std::string& line) {
    constexpr std::size_t longestLine = 4096;
    line.clear();
    for (int byte = reader.next(); byte != '\n'; byte = reader.next()) {
        if (byte < 0)
            return reader.endStatus();
        if (line.size() == longestLine)
            return zelStatusEncode(zelCORRUPTED);
        line.push_back(static_cast<char>(byte));
    }
    return zelOKAY;
}

void multiplyColorCorrection(zelkit::Fields& fields, std::string_view value) {
    std::array<double, 3> factors = {1, 1, 1};
    const std::string* const before = fields.text(colorCorrectionTag);
    for (const std::string_view line : {before ? std::string_view(*before) : "1 1 1", value}) {
        const std::vector<std::string_view> words = wordsOf(line);
        for (std::size_t i = 0; i < factors.size() && i < words.size(); i++)
            factors[i] *= parse<double>(words[i]).value_or(1);
    }
    fields.set(colorCorrectionTag,
               shortest(factors[0]) + " " + shortest(factors[1]) + " " + shortest(factors[2]));
}

// A line of the header, "NAME=value"; others are comments.
void takeLine(std::string_view line, zelkit::Fields& fields) {
    const std::size_t split = std::min(line.find('='), line.size());
    const std::string_view name = line.substr(0, split);
    std::string_view value = line.substr(std::min(split + 1, line.size()));
    value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
    for (const zelTagDescription& known : descriptions) {
        if (name != known.name)
            continue;
        const std::vector<std::string_view> words = wordsOf(value);
        if (known.tag == colorCorrectionTag)
            multiplyColorCorrection(fields, value);
        else if (known.flags == text)
            fields.set(known.tag, std::string(value));
        else if (const auto factor = parse<double>(words.empty() ? "" : words.front()))
            fields.set(known.tag, fields.numberOr(known.tag, 1) * *factor);
    }
}

// The line behind the empty one: two axes and how far they go.
bool takeSizes(std::string_view line, Header& header) {
    const std::vector<std::string_view> words = wordsOf(line);
    if (words.size() != 4)
        return false;
    const auto axes = std::ranges::find_if(axesOfOrientations, [&](const Axes& known) {
        return known.slow == words[0] && known.fast == words[2];
    });
    if (axes == std::end(axesOfOrientations))
        return false;
    header.orientation =
        zelOrientation(static_cast<int>(axes - std::begin(axesOfOrientations)) + 1);
    header.height = parse<int>(words[1]).value_or(0);
    header.width = parse<int>(words[3]).value_or(0);
    return header.width > 0 && header.height > 0;
}

// A scanline takes a pixel at least, and one that is longer than new run lengths can be takes a
// pixel's bytes for each run of 255: what would be shorter makes readers allocate for nothing.
zelStatus checkLength(int fd, const Header& header) {
    constexpr std::int64_t pixelBytes = 4;
    constexpr int longestCheap = 32767;
    std::int64_t length = 0;
    const zelStatus status = zelkit::getFileLength(fd, length);
    if (status != zelOKAY)
        return status;
    const std::int64_t left = length - header.dataOffset;
    const bool enough = left >= header.height * pixelBytes &&
                        (header.width <= longestCheap || left >= header.width / 255 * pixelBytes);
    return enough ? zelOKAY : zelStatusEncode(zelPREMATUREEOF);
}

} // namespace

std::span<const zelTagDescription> tagTable() {
    return descriptions;
}

zelStatus readHeader(int fd, const char* fileName, Header& header) {
    constexpr std::string_view formatName = "FORMAT=";
    zelkit::ByteReader reader(fd, 0);
    std::string line;
    zelStatus status = readLine(reader, line);
    if (status == zelOKAY && !line.starts_with("#?"))
        return zelStatusEncode(zelBADMAGIC);
    while (status == zelOKAY && (status = readLine(reader, line)) == zelOKAY) {
        const std::vector<std::string_view> words = wordsOf(line);
        if (words.empty())
            break;
        if (!line.starts_with(formatName)) {
            takeLine(line, header.fields);
            continue;
        }
        const std::string_view form = words.front().substr(formatName.size());
        header.xyz = form == xyzForm;
        if (form != rgbForm && form != xyzForm) {
            zelError(zelSevWarning, "%s: %.60s is not supported", fileName, line.c_str());
            return zelStatusEncode(zelUNSUPPORTEDBYFILE);
        }
    }
    if (status == zelOKAY)
        status = readLine(reader, line);
    if (status == zelOKAY && !takeSizes(line, header))
        status = zelStatusEncode(zelCORRUPTED);
    header.dataOffset = reader.position();
    return status == zelOKAY ? checkLength(fd, header) : status;
}

std::string formatHeader(const Header& header) {
    std::string out = "#?RADIANCE\nFORMAT=" + std::string(header.xyz ? xyzForm : rgbForm) + "\n";
    for (const zelTagDescription& known : descriptions) {
        std::string value;
        if (const std::string* const words = header.fields.text(known.tag))
            value = *words;
        else if (const double* const factor = header.fields.number(known.tag))
            value = shortest(*factor);
        // A line ends at the first of them.
        std::ranges::replace(value, '\n', ' ');
        if (!value.empty())
            out += std::string(known.name) + "=" + value + "\n";
    }
    const Axes& axes = axesOfOrientations[header.orientation - 1];
    return out + "\n" + std::string(axes.slow) + " " + std::to_string(header.height) + " " +
           std::string(axes.fast) + " " + std::to_string(header.width) + "\n";
}

} // namespace zelhdr
