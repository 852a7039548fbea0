#include "platform/loader.h"

#include <dlfcn.h>

namespace zel::platform {

bool loadSharedObject(const char* fileName, std::string& reason) {
    if (dlopen(fileName, RTLD_NOW | RTLD_LOCAL))
        return true;
    const char* words = dlerror();
    reason = words ? words : "unknown reason";
    return false;
}

} // namespace zel::platform
