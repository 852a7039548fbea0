#ifndef ZEL_REGISTRY_LASTING_H
#define ZEL_REGISTRY_LASTING_H

#include <cstddef>
#include <new>
#include <string_view>
#include <utility>

namespace zel::registry {

/// Memory for what the reading of the database makes: entries, texts, lists and rules. All of it
/// stays for the life of the process, also what a later statement or a syntax error leaves unused.
void* allocateLasting(std::size_t size, std::size_t alignment);

/// Makes an object that is never destroyed.
template <class T, class... Args>
T* makeLasting(Args&&... args) {
    return new (allocateLasting(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
}

/// A zero-ended copy that is never freed.
char* copyLasting(std::string_view text);

} // namespace zel::registry

#endif
