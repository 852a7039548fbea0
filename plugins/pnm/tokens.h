#ifndef ZELPNM_TOKENS_H
#define ZELPNM_TOKENS_H

#include "kit/byteReader.h"

namespace zelpnm {

using zelkit::ByteReader;

/// White space as the format knows it, whatever the locale: blank, tab, newline, vertical tab, form
/// feed, carriage return.
inline bool isSpace(int byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

inline bool isDigit(int byte) {
    return byte >= '0' && byte <= '9';
}

/// Skips white space, and comments from a '#' to the end of the line.
void skipSpace(ByteReader& reader);

/// Reads the byte behind a number or a word of the header: white space, or a comment that stands in
/// for it. Fails with zelCORRUPTED if it is anything else.
zelStatus readSeparator(ByteReader& reader);

/// Skips white space and comments and reads a decimal number from 0 to `highest`.
/// Fails with zelPREMATUREEOF at the file's end and with zelCORRUPTED if there is no such number.
zelStatus readNumber(ByteReader& reader, int highest, int& number);

} // namespace zelpnm

#endif
