#ifndef ZEL_REGISTRY_ENTRY_MARKER_H
#define ZEL_REGISTRY_ENTRY_MARKER_H

#include <cstdint>

namespace zel::registry {

/// What stands for the plug-in's name in an entry that declares a plug-in and does not name it: all
/// bits set. It is no text.
inline char* undisclosedName() {
    return reinterpret_cast<char*>(~std::uintptr_t{0});
}

/// Whether this is a plug-in's name and not the marker or null.
inline bool isNamed(const char* dsoname) {
    return dsoname != nullptr && dsoname != undisclosedName();
}

} // namespace zel::registry

#endif
