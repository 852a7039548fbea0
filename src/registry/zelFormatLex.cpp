#include "registry/zelFormatLex.h"

#include "registry/lasting.h"

#include <zel/zelError.h>
#include <zel/zelFormatDB.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

using namespace zel::registry;

zel::registry::Value zellval;

namespace {

char emptyText[] = "";

} // namespace

char* zeltext = emptyText;

namespace {

constexpr std::size_t firstBufferSize = 16384;
constexpr std::size_t endBytes = 2;
constexpr std::size_t largestRefill = 8192;

// What at() gives behind the last byte of the input. Bytes come as 0 to 255.
constexpr int endOfInput = -1;

constexpr std::string_view directiveWord = "include";

struct Keyword {
    std::string_view word;
    Token token;
};

constexpr Keyword keywords[] = {
    {"format", tokenFormat},
    {"description", tokenDescription},
    {"dso", tokenDso},
    {"dll", tokenDll},
    {"subsystem", tokenSubsystem},
    {"suffixes", tokenSuffixes},
    {"access", tokenAccess},
    {"match", tokenMatch},
    {"readwrite", tokenReadWrite},
    {"readonly", tokenReadOnly},
    {"writeonly", tokenWriteOnly},
    {"uchar", tokenUChar},
    {"char", tokenChar},
    {"ushort", tokenUShort},
    {"short", tokenShort},
    {"uint", tokenUInt},
    {"int", tokenInt},
    {"ulong", tokenUInt},
    {"long", tokenInt},
    {"string", tokenString},
};

constexpr bool isBlank(int c) {
    return c == ' ' || c == '\t' || c == '\n';
}

constexpr bool isDigit(int c) {
    return c >= '0' && c <= '9';
}

constexpr bool isHexDigit(int c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr bool startsIdent(int c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '.';
}

constexpr bool continuesIdent(int c) {
    return startsIdent(c) || isDigit(c);
}

// The bytes of the input from the current token on. Bytes are taken from the reader one at a time
// and only when they are looked at, so that an include directive finds nothing of the old file
// behind its own newline.
class TokenBuffer {
public:
    // The byte `offset` places behind the token's first. Only the byte behind the last one looked
    // at can be new.
    int at(std::size_t offset) {
        if (start + offset == end && !fetch()) {
            return endOfInput;
        }
        return static_cast<unsigned char>(bytes[start + offset]);
    }

    // Ends the token with a zero byte, for which the byte behind it is put aside.
    char* endToken(std::size_t length) {
        tokenEnd = start + length;
        putAside = bytes[tokenEnd];
        bytes[tokenEnd] = '\0';
        return bytes + start;
    }

    // Goes on behind the token.
    void startToken() {
        if (bytes != nullptr) {
            bytes[tokenEnd] = putAside;
        }
        start = tokenEnd;
    }

    bool isBroken() const { return broken; }

private:
    bool fetch() {
        if (broken || (end == capacity && !makeRoom())) {
            return false;
        }
        const int wanted = static_cast<int>(std::min(largestRefill, capacity - end));
        const int got = zelFormatDB::getInput(bytes + end, wanted);
        end += static_cast<std::size_t>(got);
        return got > 0;
    }

    // Moves the token to the front, and doubles the buffer if the token fills more than half of it,
    // so that a byte is not moved over and over.
    bool makeRoom() {
        const std::size_t length = end - start;
        if (start > 0) {
            std::memmove(bytes, bytes + start, length);
            start = 0;
            end = length;
        }
        return (bytes != nullptr && length <= capacity / 2) || enlarge();
    }

    bool enlarge() {
        const std::size_t wanted = bytes == nullptr ? firstBufferSize : 2 * capacity;
        auto* larger = static_cast<char*>(std::realloc(bytes, wanted + endBytes));
        if (larger == nullptr) {
            broken = true;
            zelError(zelSevFatal, "Fatal error parsing ZEL format database:\n    %s",
                     bytes == nullptr ? "out of dynamic memory in yy_create_buffer()"
                                      : "fatal error - scanner input buffer overflow");
            return false;
        }
        bytes = larger;
        capacity = wanted;
        return true;
    }

    char* bytes = nullptr;
    std::size_t capacity = 0;
    std::size_t start = 0;
    std::size_t end = 0;
    std::size_t tokenEnd = 0;
    char putAside = '\0';
    bool broken = false;
};

constinit TokenBuffer input;
bool atLineStart = true;

// Each of the following gives the length of the longest match of its rule at the current place, 0
// if the rule does not match there.

std::size_t matchDirective() {
    std::size_t length = 1;
    while (input.at(length) == ' ' || input.at(length) == '\t') {
        ++length;
    }
    for (const char c : directiveWord) {
        if (input.at(length) != c) {
            return 0;
        }
        ++length;
    }
    return length;
}

// The place of the newline at or behind `from`, 0 if the input ends before one.
std::size_t findNewline(std::size_t from) {
    while (input.at(from) != '\n') {
        if (input.at(from) == endOfInput) {
            return 0;
        }
        ++from;
    }
    return from;
}

std::size_t matchIdent() {
    std::size_t length = 1;
    while (continuesIdent(input.at(length))) {
        ++length;
    }
    return length > 1 ? length : 0;
}

std::size_t matchDigits(std::size_t length) {
    while (isDigit(input.at(length))) {
        ++length;
    }
    return length;
}

std::size_t matchHexDigits(std::size_t length) {
    while (isHexDigit(input.at(length))) {
        ++length;
    }
    return length;
}

std::size_t matchNumber(int first) {
    if (first == '0' && (input.at(1) == 'x' || input.at(1) == 'X') && isHexDigit(input.at(2))) {
        return matchHexDigits(3);
    }
    const std::size_t length = matchDigits(1);
    return isDigit(first) || length > 1 ? length : 0;
}

// A quote behind a backslash ends the string only if no plain quote follows in the whole input.
std::size_t matchString() {
    std::size_t lastEscapedEnd = 0;
    for (std::size_t i = 1;; ++i) {
        const int c = input.at(i);
        if (c == endOfInput) {
            return lastEscapedEnd;
        }
        if (c == '"') {
            if (input.at(i - 1) != '\\') {
                return i + 1;
            }
            lastEscapedEnd = i + 1;
        }
    }
}

std::size_t matchBlanks() {
    std::size_t length = 1;
    while (isBlank(input.at(length))) {
        ++length;
    }
    return length;
}

struct Match {
    int token;
    std::size_t length;
};

// What is dropped or carried out here and never reaches the parser.
enum Hidden : int {
    hiddenDirective = 1000,
    hiddenBlanks,
};

Match singleCharacter(int c) {
    return {static_cast<signed char>(c), 1};
}

Match pairOr(int first, char second, Token token) {
    return input.at(1) == second ? Match{token, 2} : singleCharacter(first);
}

Match matchIfAny(int first, Token token, std::size_t length) {
    return length > 0 ? Match{token, length} : singleCharacter(first);
}

// A comment is longer than the operator that it begins like, whatever follows that.
Match matchExclamation() {
    if (input.at(1) == '=' && input.at(2) == endOfInput) {
        return {tokenNotEqual, 2};
    }
    const std::size_t length = findNewline(1);
    return length > 0 ? Match{hiddenBlanks, length} : singleCharacter('!');
}

Match matchHash() {
    if (const std::size_t word = atLineStart ? matchDirective() : 0) {
        if (const std::size_t length = findNewline(word)) {
            return {hiddenDirective, length};
        }
    }
    return singleCharacter('#');
}

Match longestMatch() {
    const int first = input.at(0);
    if (isBlank(first)) {
        return {hiddenBlanks, matchBlanks()};
    }
    if (startsIdent(first)) {
        return matchIfAny(first, tokenIdent, matchIdent());
    }
    if (isDigit(first) || first == '+' || first == '-') {
        return matchIfAny(first, tokenNumber, matchNumber(first));
    }
    switch (first) {
    case endOfInput:
        return {tokenEnd, 0};
    case '#':
        return matchHash();
    case '!':
        return matchExclamation();
    case '"':
        return matchIfAny(first, tokenText, matchString());
    case '&':
        return pairOr(first, '&', tokenAnd);
    case '|':
        return pairOr(first, '|', tokenOr);
    case '=':
        return pairOr(first, '=', tokenEqual);
    case '>':
        return pairOr(first, '=', tokenGreaterEqual);
    case '<':
        return pairOr(first, '=', tokenLessEqual);
    default:
        return singleCharacter(first);
    }
}

int keywordOrIdent(std::string_view text) {
    const auto* known = std::find_if(std::begin(keywords), std::end(keywords),
                                     [&](const Keyword& k) { return k.word == text; });
    return known != std::end(keywords) ? known->token : tokenIdent;
}

// The 32 bits of the number, whose leading 0 or 0x tells the base. A value that they cannot hold
// becomes the largest one, whatever its sign.
int numberValue(const char* text) {
    const bool negative = *text == '-';
    const bool hasSign = negative || *text == '+';
    const unsigned long long magnitude = std::strtoull(text + (hasSign ? 1 : 0), nullptr, 0);
    if (magnitude > UINT32_MAX) {
        return static_cast<int>(UINT32_MAX);
    }
    const auto bits = static_cast<std::uint32_t>(magnitude);
    return static_cast<int>(negative ? 0U - bits : bits);
}

// Sets the value of the token, and tells an identifier from a keyword.
int finishToken(int token, std::string_view text) {
    switch (token) {
    case tokenNumber:
        zellval.ival = numberValue(zeltext);
        return token;
    case tokenText:
        zellval.sval = copyLasting(text.substr(1, text.size() - 2));
        return token;
    case tokenIdent:
        token = keywordOrIdent(text);
        if (token == tokenIdent) {
            zellval.sval = copyLasting(text);
        }
        return token;
    default:
        return token;
    }
}

} // namespace

int zellex() {
    while (!input.isBroken()) {
        input.startToken();
        const Match match = longestMatch();
        if (input.isBroken()) {
            break;
        }
        zeltext = input.endToken(match.length);
        if (match.length == 0) {
            return tokenEnd;
        }
        atLineStart = zeltext[match.length - 1] == '\n';
        if (match.token == hiddenDirective) {
            zelFormatDB::processInclude(zeltext);
        } else if (match.token != hiddenBlanks) {
            return finishToken(match.token, {zeltext, match.length});
        }
    }
    zeltext = emptyText;
    return tokenEnd;
}
