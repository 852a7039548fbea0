#include "platform/databaseDirectory.h"

#include <dlfcn.h>

namespace zel::platform {

namespace {

// An address inside this library, for the loader to tell where it comes from.
const char addressInLibrary = 0;

} // namespace

std::string databaseDirectory() {
    Dl_info info{};
    std::string path;
    if (dladdr(&addressInLibrary, &info) != 0 && info.dli_fname)
        path = info.dli_fname;
    path.erase(path.rfind('/') + 1);
    return path + "zel";
}

} // namespace zel::platform
