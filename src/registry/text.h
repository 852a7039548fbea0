#ifndef ZEL_REGISTRY_TEXT_H
#define ZEL_REGISTRY_TEXT_H

#include <cstring>
#include <string_view>

namespace zel::registry {

/// A zero-ended copy made with new[].
inline char* copyText(std::string_view text) {
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

} // namespace zel::registry

#endif
