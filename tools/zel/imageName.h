#ifndef ZEL_TOOL_IMAGENAME_H
#define ZEL_TOOL_IMAGENAME_H

#include <optional>
#include <string>

namespace zel::tool {

/// The pieces of a full image name.
struct ImageName {
    std::string file;
    std::optional<std::string> format;
    int index = -1; ///< -1 if there is none
    std::optional<std::string> arguments;
};

/// Splits a full name as the library does.
ImageName splitImageName(const std::string& fullName);

/// The full name that splits into these pieces again.
std::string joinImageName(const ImageName& name);

/// Throws a Failure for an empty name and for "-", which other programs take for a pipe.
void requireFileName(const std::string& fullName);

} // namespace zel::tool

#endif
