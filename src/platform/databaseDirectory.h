#ifndef ZEL_PLATFORM_DATABASE_DIRECTORY_H
#define ZEL_PLATFORM_DATABASE_DIRECTORY_H

#include <string>

namespace zel::platform {

/// The directory of the default database, without a slash at its end: `zel` beside the shared
/// object that this library was loaded from, wherever that lies now. Relative, if the library was
/// loaded by a relative path. Whether the directory exists is not looked at.
std::string databaseDirectory();

} // namespace zel::platform

#endif
