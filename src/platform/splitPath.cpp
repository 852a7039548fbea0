#include "platform/splitPath.h"

#include <cstddef>
#include <string_view>

namespace zel::platform {

namespace {

template <std::size_t capacity>
bool store(std::string_view text, char (&part)[capacity]) {
    if (text.size() >= capacity)
        return false;
    part[text.copy(part, capacity - 1)] = '\0';
    return true;
}

} // namespace

bool splitPath(const char* path, SplitPath& parts) {
    const std::string_view whole(path);
    const std::size_t slash = whole.rfind('/');
    const std::size_t nameStart = slash == std::string_view::npos ? 0 : slash + 1;
    const std::string_view name = whole.substr(nameStart);
    const std::size_t dot = name.rfind('.');
    const std::size_t baseLength = dot == std::string_view::npos ? name.size() : dot;

    parts = SplitPath{};
    if (store(whole.substr(0, nameStart), parts.directory) &&
        store(name.substr(0, baseLength), parts.base) &&
        store(name.substr(baseLength), parts.extension))
        return true;
    parts = SplitPath{};
    return false;
}

} // namespace zel::platform
