#ifndef ZEL_PLATFORM_LOADER_H
#define ZEL_PLATFORM_LOADER_H

#include <string>

namespace zel::platform {

/// Loads a shared object for the life of the process and runs its static constructors on the
/// calling thread before it returns; these may call back into the library. A name without a slash
/// is searched as the system's loader does, the run path of this library included. All of the
/// object's symbols are resolved at once and none is given to other objects. An object that was
/// loaded before is a success, without its constructors running again.
///
/// Returns whether it is loaded; if not, `reason` gets the loader's own words.
bool loadSharedObject(const char* fileName, std::string& reason);

} // namespace zel::platform

#endif
