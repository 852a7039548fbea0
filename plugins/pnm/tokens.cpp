#include "tokens.h"

#include <cstdint>

namespace zelpnm {

namespace {

void skipLine(ByteReader& reader) {
    int byte = reader.next();
    while (byte >= 0 && byte != '\n')
        byte = reader.next();
}

} // namespace

void skipSpace(ByteReader& reader) {
    for (;;) {
        if (reader.peek() == '#')
            skipLine(reader);
        else if (isSpace(reader.peek()))
            reader.next();
        else
            return;
    }
}

zelStatus readSeparator(ByteReader& reader) {
    const int byte = reader.next();
    if (byte < 0)
        return reader.endStatus();
    if (byte == '#')
        skipLine(reader);
    else if (!isSpace(byte))
        return zelStatusEncode(zelCORRUPTED);
    return zelOKAY;
}

zelStatus readNumber(ByteReader& reader, int highest, int& number) {
    skipSpace(reader);
    if (reader.peek() < 0)
        return reader.endStatus();
    if (!isDigit(reader.peek()))
        return zelStatusEncode(zelCORRUPTED);
    std::int64_t value = 0;
    while (isDigit(reader.peek())) {
        value = value * 10 + (reader.next() - '0');
        if (value > highest)
            return zelStatusEncode(zelCORRUPTED);
    }
    number = static_cast<int>(value);
    return zelOKAY;
}

} // namespace zelpnm
