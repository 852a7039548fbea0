#ifndef ZEL_PLATFORM_SPLIT_PATH_H
#define ZEL_PLATFORM_SPLIT_PATH_H

namespace zel::platform {

/// A path in four zero-ended parts that give the path again when they are written one after the
/// other. `drive` is empty on this system, `directory` ends with its slash, `extension` begins with
/// its dot.
struct SplitPath {
    char drive[3];
    char directory[256];
    char base[256];
    char extension[256];
};

/// Splits a path at its last slash, and what follows that at its last dot. A path with a part that
/// does not fit is not split at all: the answer is false and all parts are empty, so that no caller
/// ever sees a shortened name.
bool splitPath(const char* path, SplitPath& parts);

} // namespace zel::platform

#endif
