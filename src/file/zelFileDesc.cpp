#include <zel/zelFileDesc.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <zel/zelFile.h>
#include <zel/zelFormat.h>

namespace {

constexpr const char* digits = "0123456789";

bool isDelimiter(char ch) {
    return ch == '#' || ch == ':' || ch == '%';
}

/// The number of digits in an index at `text`; 0 if what stands there is no index.
size_t indexLength(const char* text) {
    const size_t length = std::strspn(text, digits);
    return length == std::strcspn(text, "#%") ? length : 0;
}

int indexValue(const char* text, size_t length) {
    int value = 0;
    for (size_t i = 0; i < length; ++i) {
        const int digit = text[i] - '0';
        if (value > (INT_MAX - digit) / 10)
            return INT_MAX;
        value = value * 10 + digit;
    }
    return value;
}

struct NamePieces {
    char* format = nullptr;
    int index = -1;
    char* arguments = nullptr;
};

/// Writes the pieces of `in` to `out`, each ended by a zero byte, the file name first. `out` has
/// room for all of `in`: no piece comes out longer than it was.
NamePieces splitName(const char* in, char* out) {
    NamePieces pieces;
    while (const char ch = *in) {
        ++in;
        const bool doubled = isDelimiter(ch) && *in == ch;
        if (doubled)
            ++in;
        if (!isDelimiter(ch) || doubled || (ch == ':' && indexLength(in) == 0)) {
            *out++ = ch;
            continue;
        }
        *out++ = '\0';
        if (ch == ':') {
            pieces.index = indexValue(in, indexLength(in));
        } else if (ch == '#') {
            pieces.format = out;
        } else {
            pieces.arguments = out;
            std::memcpy(out, in, std::strlen(in) + 1);
            return pieces;
        }
    }
    *out = '\0';
    return pieces;
}

size_t textSize(const char* text) {
    return text ? std::strlen(text) + 1 : 0;
}

} // namespace

char* zelFile::parseFileName(const char* fullname, char** formatName, int* index,
                             char** formatArgs) {
    char* block = fullname ? static_cast<char*>(std::malloc(std::strlen(fullname) + 1)) : nullptr;
    const NamePieces pieces = block ? splitName(fullname, block) : NamePieces{};
    if (formatName)
        *formatName = pieces.format;
    if (index)
        *index = pieces.index;
    if (formatArgs)
        *formatArgs = pieces.arguments;
    return block;
}

zelFileDesc::zelFileDesc(const char* fullname, zelFormat* fmt)
    : fileName(nullptr), index(-1), formatSpecific(nullptr), format(fmt), fd(-1), sts(zelOKAY) {
    char* formatName = nullptr;
    fileName = zelFile::parseFileName(fullname, &formatName, &index, &formatSpecific);
    if (fullname && !fileName)
        sts = zelStatusEncode(zelMALLOCFAILED, 1, errno);
    if (!format && formatName)
        lookupFormat(formatName);
    requireName();
}

zelFileDesc::zelFileDesc(const char* name, int imageIndex, const char* formatName,
                         const char* specific)
    : fileName(nullptr), index(imageIndex), formatSpecific(nullptr), format(nullptr), fd(-1),
      sts(zelOKAY) {
    copyTexts(name, specific);
    if (formatName)
        lookupFormat(formatName);
    requireName();
}

zelFileDesc::zelFileDesc(const char* name, int imageIndex, zelFormat* fmt, const char* specific)
    : fileName(nullptr), index(imageIndex), formatSpecific(nullptr), format(fmt), fd(-1),
      sts(zelOKAY) {
    copyTexts(name, specific);
    requireName();
}

zelFileDesc::~zelFileDesc() {
    // Both texts lie in one block, the file name first.
    std::free(fileName ? fileName : formatSpecific);
}

void zelFileDesc::copyTexts(const char* name, const char* specific) {
    const size_t nameSize = textSize(name);
    const size_t specificSize = textSize(specific);
    if (nameSize + specificSize == 0)
        return;
    char* block = static_cast<char*>(std::malloc(nameSize + specificSize));
    if (!block) {
        sts = zelStatusEncode(zelMALLOCFAILED, 1, errno);
        return;
    }
    if (name)
        fileName = static_cast<char*>(std::memcpy(block, name, nameSize));
    if (specific)
        formatSpecific = static_cast<char*>(std::memcpy(block + nameSize, specific, specificSize));
}

void zelFileDesc::lookupFormat(const char* name) {
    format = zelFormat::findByFormatName(name, 1);
    if (!format)
        sts = zelStatusEncode(zelBADIMGFMT);
}

void zelFileDesc::requireName() {
    if (!fileName && sts == zelOKAY)
        sts = zelStatusEncode(zelBADPARAMS);
}

void zelFileDesc::setFileDesc(int descriptor) {
    fd = descriptor < 0 ? -1 : descriptor;
    if (fd < 0)
        return;
    if (sts == zelBADPARAMS)
        sts = zelOKAY;
    if (!format)
        format = zelFormat::findByMagic(fd, 1);
}

zelStatus zelFileDesc::getStatus() const {
    return sts;
}

char* zelFileDesc::getFileName() const {
    return fileName;
}

int zelFileDesc::getFileDesc() const {
    return fd;
}

int zelFileDesc::getIndex() const {
    return index;
}

zelFormat* zelFileDesc::getFormat() const {
    return format;
}

char* zelFileDesc::getFormatSpecific() const {
    return formatSpecific;
}

const char* zelFileDesc::getFormatName() const {
    return format ? format->getName() : nullptr;
}
