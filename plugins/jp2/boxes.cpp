#include "boxes.h"

#include "bigEndian.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace zeljp2 {

namespace {

constexpr std::uint32_t nameOf(std::string_view name) {
    std::uint32_t number = 0;
    for (const char letter : name)
        number = number << 8 | static_cast<std::uint8_t>(letter);
    return number;
}

constexpr std::uint32_t signatureText = 0x0d0a870a;
constexpr std::uint32_t startOfCodestream = 0xff4fff51;
constexpr std::int64_t largestHeader = 32 << 20;
constexpr std::size_t mostColors = 1024;

struct Box {
    std::uint32_t name = 0;
    std::int64_t content = 0; ///< where it begins and ends in the file
    std::int64_t end = 0;
};

// The box at `offset` of a file of `length` bytes. An end behind that of the file is kept.
zelStatus readBox(int fd, std::int64_t offset, std::int64_t length, Box& box) {
    std::uint8_t bytes[codestreamHeaderBytes] = {};
    std::size_t got = 0;
    const zelStatus status = zelkit::readSome(fd, bytes, sizeof bytes, offset, got);
    if (status != zelOKAY)
        return status;
    ByteCursor cursor({bytes, got});
    std::uint64_t size = cursor.take(4);
    box.name = static_cast<std::uint32_t>(cursor.take(4));
    box.content = offset + 8;
    if (size == 1) {
        size = cursor.take(8);
        box.content = offset + 16;
    }
    if (!cursor.good())
        return zelStatusEncode(zelPREMATUREEOF);
    const bool toTheEnd = size == 0;
    if (!toTheEnd &&
        (size > INT64_MAX / 2 || static_cast<std::int64_t>(size) < box.content - offset))
        return zelStatusEncode(zelCORRUPTED);
    box.end = toTheEnd ? length : offset + static_cast<std::int64_t>(size);
    return zelOKAY;
}

void readColor(ByteCursor cursor, Boxes& boxes) {
    const int method = cursor.takeInt(1);
    cursor.skip(2);
    // The first colour box is the one to use.
    if (boxes.colorSpace != noColorSpace || !boxes.iccProfile.empty())
        return;
    if (method == 1)
        boxes.colorSpace = cursor.takeInt(4);
    else if (method == 2)
        boxes.iccProfile.assign(cursor.rest().begin(), cursor.rest().end());
}

void readPalette(ByteCursor cursor, Boxes& boxes) {
    const auto colors = static_cast<std::size_t>(cursor.take(2));
    const int channels = cursor.takeInt(1);
    bool bytes = true;
    for (int i = 0; i < channels; i++)
        bytes = cursor.takeInt(1) == 7 && bytes; // bits less one, and the sign on top
    const std::size_t needed = colors * static_cast<std::size_t>(channels);
    boxes.paletteChannels = channels;
    if (bytes && colors > 0 && colors <= mostColors && cursor.rest().size() >= needed)
        boxes.palette.assign(cursor.rest().begin(),
                             cursor.rest().begin() + static_cast<std::ptrdiff_t>(needed));
}

void readDefinitions(ByteCursor cursor, Boxes& boxes) {
    const int count = cursor.takeInt(2);
    boxes.definitions.clear();
    for (int i = 0; i < count && cursor.good(); i++) {
        ChannelDefinition definition;
        definition.component = cursor.takeInt(2);
        definition.kind = cursor.takeInt(2);
        definition.color = cursor.takeInt(2);
        if (cursor.good())
            boxes.definitions.push_back(definition);
    }
}

// A resolution of capture goes before one of display, as the pixels' own.
void readResolutions(ByteCursor cursor, Boxes& boxes) {
    constexpr std::size_t boxBytes = 18;
    while (cursor.rest().size() >= boxBytes) {
        const std::uint64_t length = cursor.take(4);
        const auto name = static_cast<std::uint32_t>(cursor.take(4));
        if (length != boxBytes)
            return;
        double numbers[4] = {};
        for (double& number : numbers)
            number = cursor.takeInt(2);
        double powers[2] = {};
        for (double& power : powers)
            power = std::pow(10.0, static_cast<std::int8_t>(cursor.take(1)));
        const double y = numbers[1] > 0 ? numbers[0] / numbers[1] * powers[0] : 0;
        const double x = numbers[3] > 0 ? numbers[2] / numbers[3] * powers[1] : 0;
        const bool captured = name == nameOf("resc");
        if (x > 0 && y > 0 && (captured || (name == nameOf("resd") && boxes.xPerMeter <= 0))) {
            boxes.xPerMeter = x;
            boxes.yPerMeter = y;
        }
    }
}

zelStatus readHeaderBox(int fd, const Box& header, Boxes& boxes) {
    for (std::int64_t offset = header.content; offset + 8 <= header.end;) {
        Box box;
        zelStatus status = readBox(fd, offset, header.end, box);
        if (status == zelOKAY && box.end > header.end)
            status = zelStatusEncode(zelCORRUPTED);
        if (status != zelOKAY)
            return status;
        std::vector<std::uint8_t> content(static_cast<std::size_t>(box.end - box.content));
        status = zelkit::readExact(fd, content.data(), content.size(), box.content);
        if (status != zelOKAY)
            return status;
        if (box.name == nameOf("colr"))
            readColor(ByteCursor(content), boxes);
        else if (box.name == nameOf("pclr"))
            readPalette(ByteCursor(content), boxes);
        else if (box.name == nameOf("cdef"))
            readDefinitions(ByteCursor(content), boxes);
        else if (box.name == nameOf("res "))
            readResolutions(ByteCursor(content), boxes);
        offset = box.end;
    }
    return zelOKAY;
}

std::vector<std::uint8_t> boxOf(std::string_view name, const std::vector<std::uint8_t>& content) {
    std::vector<std::uint8_t> bytes;
    put(bytes, content.size() + 8, 4);
    put(bytes, nameOf(name), 4);
    bytes.insert(bytes.end(), content.begin(), content.end());
    return bytes;
}

void append(std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

std::vector<std::uint8_t> imageHeader(const NewBoxes& wanted) {
    std::vector<std::uint8_t> bytes;
    put(bytes, static_cast<std::uint64_t>(wanted.height), 4);
    put(bytes, static_cast<std::uint64_t>(wanted.width), 4);
    put(bytes, static_cast<std::uint64_t>(wanted.channels), 2);
    put(bytes, static_cast<std::uint64_t>(wanted.bits - 1) | (wanted.isSigned ? 0x80U : 0U), 1);
    put(bytes, 7, 1); // the one compression there is
    // Whether the colour space is unknown, and that there are no rights to be kept.
    put(bytes, wanted.colorSpace == noColorSpace && wanted.iccProfile.empty(), 1);
    put(bytes, 0, 1);
    return boxOf("ihdr", bytes);
}

std::vector<std::uint8_t> colorBox(const NewBoxes& wanted) {
    const bool icc = !wanted.iccProfile.empty();
    std::vector<std::uint8_t> bytes;
    put(bytes, icc ? 2 : 1, 1);
    put(bytes, 0, 2);
    if (icc)
        append(bytes, wanted.iccProfile);
    else
        put(bytes, static_cast<std::uint64_t>(wanted.colorSpace ? wanted.colorSpace : greySpace),
            4);
    return boxOf("colr", bytes);
}

std::vector<std::uint8_t> definitionBox(const NewBoxes& wanted) {
    std::vector<std::uint8_t> bytes;
    put(bytes, static_cast<std::uint64_t>(wanted.channels), 2);
    for (int c = 0; c < wanted.channels; c++) {
        const bool alpha = c == wanted.channels - 1;
        put(bytes, static_cast<std::uint64_t>(c), 2);
        put(bytes, alpha ? 1 : 0, 2);
        put(bytes, alpha ? 0U : static_cast<std::uint64_t>(c) + 1, 2);
    }
    return boxOf("cdef", bytes);
}

std::vector<std::uint8_t> resolutionBox(const Resolution& x, const Resolution& y) {
    std::vector<std::uint8_t> bytes;
    for (const Resolution* const axis : {&y, &x}) {
        put(bytes, static_cast<std::uint64_t>(axis->numerator), 2);
        put(bytes, static_cast<std::uint64_t>(axis->denominator), 2);
    }
    put(bytes, static_cast<std::uint8_t>(y.exponent), 1);
    put(bytes, static_cast<std::uint8_t>(x.exponent), 1);
    return boxOf("res ", boxOf("resc", bytes));
}

} // namespace

Resolution resolutionOf(double number, int denominator, int exponent) {
    constexpr double most = 65535;
    constexpr int farthest = 100; // the exponent has 8 bits
    if (!(number > 0) || !std::isfinite(number))
        return {};
    for (; number > most && exponent < farthest; exponent++)
        number /= 10;
    // As many digits as there is room for, unless the number is whole.
    for (; number * 10 <= most && number != std::floor(number) && exponent > -farthest; exponent--)
        number *= 10;
    const auto whole = static_cast<int>(std::min(std::round(number), most));
    return {whole, denominator, exponent};
}

zelStatus readBoxes(int fd, Boxes& boxes) {
    boxes = {};
    std::int64_t length = 0;
    std::uint8_t start[4] = {};
    zelStatus status = zelkit::getFileLength(fd, length);
    if (status == zelOKAY)
        status = zelkit::readExact(fd, start, sizeof start, 0);
    if (status != zelOKAY)
        return status;
    if (ByteCursor(start).take(4) == startOfCodestream) {
        boxes.codestreamBytes = length;
        return zelOKAY;
    }
    for (std::int64_t offset = 0; offset < length;) {
        Box box;
        status = readBox(fd, offset, length, box);
        if (status == zelOKAY && box.name == nameOf("jp2c")) {
            boxes.codestream = box.content;
            boxes.codestreamBytes = std::min(box.end, length) - box.content;
            boxes.shortened = box.end > length;
            return boxes.codestreamBytes > 0 ? zelOKAY : zelStatusEncode(zelPREMATUREEOF);
        }
        if (status == zelOKAY && box.end > length)
            status = zelStatusEncode(zelPREMATUREEOF);
        if (status == zelOKAY && box.name == nameOf("jp2h"))
            status = box.end - box.content <= largestHeader ? readHeaderBox(fd, box, boxes)
                                                            : zelStatusEncode(zelCORRUPTED);
        if (status != zelOKAY)
            return status;
        offset = box.end;
    }
    return zelStatusEncode(length < 32 ? zelPREMATUREEOF : zelCORRUPTED);
}

std::vector<std::uint8_t> formatBoxes(const NewBoxes& wanted) {
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> content;
    put(content, signatureText, 4);
    append(bytes, boxOf("jP  ", content));
    content.clear();
    put(content, nameOf("jp2 "), 4);
    put(content, 0, 4);
    put(content, nameOf("jp2 "), 4);
    append(bytes, boxOf("ftyp", content));
    content = imageHeader(wanted);
    append(content, colorBox(wanted));
    if (wanted.alpha)
        append(content, definitionBox(wanted));
    if (wanted.x.numerator > 0 && wanted.y.numerator > 0)
        append(content, resolutionBox(wanted.x, wanted.y));
    append(bytes, boxOf("jp2h", content));
    append(bytes, codestreamHeader(0));
    return bytes;
}

// A length of 64 bits, since nobody knows yet how long it gets.
std::vector<std::uint8_t> codestreamHeader(std::int64_t codestreamBytes) {
    std::vector<std::uint8_t> bytes;
    put(bytes, 1, 4);
    put(bytes, nameOf("jp2c"), 4);
    put(bytes, static_cast<std::uint64_t>(codestreamBytes) + codestreamHeaderBytes, 8);
    return bytes;
}

} // namespace zeljp2
