#include "registry/lasting.h"

#include <cstring>
#include <memory_resource>

namespace zel::registry {

void* allocateLasting(std::size_t size, std::size_t alignment) {
    static auto* const memory = new std::pmr::monotonic_buffer_resource;
    return memory->allocate(size, alignment);
}

char* copyLasting(std::string_view text) {
    char* copy = static_cast<char*>(allocateLasting(text.size() + 1, 1));
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

} // namespace zel::registry
