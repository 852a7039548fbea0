#include "header.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <optional>
#include <string_view>
#include <system_error>

namespace zelpnm {

namespace {

constexpr int highestMaxval = 65535;

zelStatus corrupted() {
    return zelStatusEncode(zelCORRUPTED);
}

zelStatus readPositive(ByteReader& reader, int highest, int& number) {
    const zelStatus status = readNumber(reader, highest, number);
    return status == zelOKAY && number == 0 ? corrupted() : status;
}

zelStatus readSize(ByteReader& reader, Header& header) {
    const zelStatus status = readPositive(reader, INT_MAX, header.width);
    return status == zelOKAY ? readPositive(reader, INT_MAX, header.height) : status;
}

zelStatus readPnm(ByteReader& reader, Header& header) {
    zelStatus status = readSize(reader, header);
    if (status == zelOKAY && header.kind != Kind::pbm)
        status = readPositive(reader, highestMaxval, header.maxval);
    // Exactly one byte of white space: the next one may already be a sample.
    return status == zelOKAY ? readSeparator(reader) : status;
}

// Reads up to white space or the end; a word longer than `longest` is cut, and so no use.
std::string readWord(ByteReader& reader, std::size_t longest) {
    std::string word;
    while (reader.peek() >= 0 && !isSpace(reader.peek()) && word.size() <= longest)
        word += static_cast<char>(reader.next());
    return word;
}

// The scale's sign tells the byte order.
zelStatus readPfm(ByteReader& reader, Header& header) {
    const zelStatus status = readSize(reader, header);
    if (status != zelOKAY)
        return status;
    skipSpace(reader);
    const std::string word = readWord(reader, 40);
    const char* const begin = word.c_str() + (word.starts_with('+') ? 1 : 0);
    const char* const end = word.c_str() + word.size();
    double scale = 0;
    const auto result = std::from_chars(begin, end, scale);
    if (reader.peek() < 0)
        return reader.endStatus();
    if (result.ptr != end || result.ec != std::errc() || !std::isfinite(scale) || scale == 0)
        return corrupted();
    header.littleEndian = scale < 0;
    header.scale = std::abs(scale);
    return readSeparator(reader);
}

// The tuple types of a PAM and what they mean; the first of a colour model is the one written.
struct TupleType {
    std::string_view name;
    zelColorModel colorModel;
    int channels; // 0: any number
    bool bits;
};

constexpr TupleType tupleTypes[] = {
    {"BLACKANDWHITE", zelLuminance, 1, true},
    {"GRAYSCALE", zelLuminance, 1, false},
    {"BLACKANDWHITE_ALPHA", zelLuminanceAlpha, 2, true},
    {"GRAYSCALE_ALPHA", zelLuminanceAlpha, 2, false},
    {"RGB", zelRGB, 3, false},
    {"RGB_ALPHA", zelRGBA, 4, false},
    {"CMYK", zelCMYK, 4, false},
    {"MULTISPECTRAL", zelMultiSpectral, 0, false},
};

zelColorModel colorModelOf(std::string_view tupleType, int channels) {
    if (tupleType.empty())
        return zelColorModelFromChans(channels);
    for (const TupleType& known : tupleTypes)
        if (known.name == tupleType && known.channels == channels)
            return known.colorModel;
    return zelMultiSpectral;
}

std::string_view tupleTypeOf(const Header& header) {
    const bool bits = header.maxval == 1;
    for (const TupleType& known : tupleTypes)
        if (known.colorModel == header.colorModel && (bits || !known.bits))
            return known.name;
    return "MULTISPECTRAL";
}

// Several TUPLTYPE lines make one type, with blanks between. No known type is long.
zelStatus readTupleType(ByteReader& reader, std::string& tupleType) {
    constexpr std::size_t longest = 255;
    std::string line;
    while (reader.peek() >= 0 && reader.peek() != '\n') {
        const int byte = reader.next();
        if (line.size() < longest && !(line.empty() && isSpace(byte)))
            line += static_cast<char>(byte);
    }
    while (!line.empty() && isSpace(line.back()))
        line.pop_back();
    if (tupleType.size() + line.size() > longest)
        return corrupted();
    tupleType += (tupleType.empty() ? "" : " ") + line;
    return zelOKAY;
}

zelStatus readPam(ByteReader& reader, Header& header) {
    header.width = header.height = header.channels = header.maxval = 0;
    std::string tupleType;
    zelStatus status = zelOKAY;
    while (status == zelOKAY) {
        skipSpace(reader);
        const std::string word = readWord(reader, 10);
        if (reader.peek() < 0)
            return reader.endStatus();
        if (word == "ENDHDR")
            break;
        if (word == "WIDTH")
            status = readPositive(reader, INT_MAX, header.width);
        else if (word == "HEIGHT")
            status = readPositive(reader, INT_MAX, header.height);
        else if (word == "DEPTH")
            status = readPositive(reader, INT_MAX, header.channels);
        else if (word == "MAXVAL")
            status = readPositive(reader, highestMaxval, header.maxval);
        else if (word == "TUPLTYPE")
            status = readTupleType(reader, tupleType);
        else
            status = corrupted();
    }
    if (status != zelOKAY)
        return status;
    if (!header.width || !header.height || !header.channels || !header.maxval ||
        reader.next() != '\n')
        return corrupted();
    header.colorModel = colorModelOf(tupleType, header.channels);
    return zelOKAY;
}

struct Magic {
    Kind kind;
    zelColorModel colorModel;
    char letter;
    bool plain;
};

constexpr Magic magics[] = {
    {Kind::pbm, zelNegative, '1', true},   {Kind::pgm, zelLuminance, '2', true},
    {Kind::ppm, zelRGB, '3', true},        {Kind::pbm, zelNegative, '4', false},
    {Kind::pgm, zelLuminance, '5', false}, {Kind::ppm, zelRGB, '6', false},
    {Kind::pam, zelLuminance, '7', false}, {Kind::pfm, zelLuminance, 'f', false},
    {Kind::pfm, zelRGB, 'F', false},
};

bool applyMagic(int letter, Header& header) {
    for (const Magic& magic : magics) {
        if (magic.letter != letter)
            continue;
        header.kind = magic.kind;
        header.plain = magic.plain;
        header.colorModel = magic.colorModel;
        header.channels = magic.colorModel == zelRGB ? 3 : 1;
        header.maxval = magic.kind == Kind::pbm ? 1 : 255;
        return true;
    }
    return false;
}

char magicOf(const Header& header) {
    for (const Magic& magic : magics)
        if (magic.kind == header.kind && magic.plain == header.plain &&
            (header.kind != Kind::pfm || magic.colorModel == header.colorModel))
            return magic.letter;
    return '?';
}

} // namespace

zelStatus readHeader(ByteReader& reader, Header& header) {
    header = Header();
    const int first = reader.next();
    const int letter = reader.next();
    if (letter < 0)
        return reader.endStatus();
    if (first != 'P' || !applyMagic(letter, header))
        return zelStatusEncode(zelBADMAGIC);
    const zelStatus status = header.kind == Kind::pam   ? readPam(reader, header)
                             : header.kind == Kind::pfm ? readPfm(reader, header)
                                                        : readPnm(reader, header);
    header.rasterOffset = reader.position();
    return status;
}

std::string formatHeader(const Header& header) {
    std::string text = {'P', magicOf(header), '\n'};
    const std::string width = std::to_string(header.width);
    const std::string height = std::to_string(header.height);
    const std::string maxval = std::to_string(header.maxval);
    if (header.kind == Kind::pam)
        return text + "WIDTH " + width + "\nHEIGHT " + height + "\nDEPTH " +
               std::to_string(header.channels) + "\nMAXVAL " + maxval + "\nTUPLTYPE " +
               std::string(tupleTypeOf(header)) + "\nENDHDR\n";
    text += width + " " + height + "\n";
    if (header.kind == Kind::pfm)
        text += header.littleEndian ? "-1.0\n" : "1.0\n";
    else if (header.kind != Kind::pbm)
        text += maxval + "\n";
    return text;
}

} // namespace zelpnm
