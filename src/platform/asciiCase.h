#ifndef ZEL_PLATFORM_ASCII_CASE_H
#define ZEL_PLATFORM_ASCII_CASE_H

#include <cstddef>

namespace zel::platform {

/// The letters A to Z in lower case, every other character as it is, whatever the locale.
constexpr char toLowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Compares two zero-ended texts without regard to the case of ASCII letters, whatever the locale:
/// below, at or above 0 as `a` sorts before, with or after `b`, by unsigned bytes in lower case.
/// Neither may be null.
int compareIgnoreCase(const char* a, const char* b);

/// The same for at most the first `count` characters of each; 0 if `count` is 0.
int compareIgnoreCase(const char* a, const char* b, std::size_t count);

} // namespace zel::platform

#endif
