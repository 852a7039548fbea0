#include "platform/asciiCase.h"

#include <limits>

namespace zel::platform {

int compareIgnoreCase(const char* a, const char* b) {
    return compareIgnoreCase(a, b, std::numeric_limits<std::size_t>::max());
}

int compareIgnoreCase(const char* a, const char* b, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto ca = static_cast<unsigned char>(toLowerAscii(a[i]));
        const auto cb = static_cast<unsigned char>(toLowerAscii(b[i]));
        if (ca != cb || ca == 0)
            return ca - cb;
    }
    return 0;
}

} // namespace zel::platform
