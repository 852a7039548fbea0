#include <zel/zelFile.h>

#include <cstring>

#include "platform/asciiCase.h"

namespace {

constexpr const char* blanks = " \t";

/// Ends the word that stops at `cursor`, and gives what stands behind it.
char* endWord(char* cursor) {
    if (*cursor)
        *cursor++ = '\0';
    return cursor;
}

/// Cuts one argument out of the text at `cursor`, and gives what stands behind it.
char* takeArgument(char* cursor, zelParameterDesc& row) {
    row.name = cursor;
    row.value = nullptr;
    cursor += std::strcspn(cursor, " \t=%");
    bool hasValue = *cursor == '=';
    cursor = endWord(cursor);
    if (!hasValue) {
        cursor += std::strspn(cursor, blanks);
        hasValue = *cursor == '=';
        if (hasValue)
            ++cursor;
    }
    if (hasValue) {
        cursor += std::strspn(cursor, blanks);
        row.value = cursor;
        cursor = endWord(cursor + std::strcspn(cursor, " \t%"));
    }
    return cursor;
}

} // namespace

int zelFile::parseArguments(zelParameterDesc* params, int maxParams) {
    int count = 0;
    for (char* cursor = formatArgs; cursor && count < maxParams; ++count) {
        cursor += std::strspn(cursor, " \t%");
        if (!*cursor)
            break;
        cursor = takeArgument(cursor, params[count]);
    }
    return count;
}

int zelFile::lookupName(const char* name, const zelNameDesc* names) {
    const size_t length = std::strlen(name);
    while (names->name && zel::platform::compareIgnoreCase(name, names->name, length) != 0)
        ++names;
    return names->id;
}
