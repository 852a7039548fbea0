#ifndef ZEL_TOOL_ICCPROFILE_H
#define ZEL_TOOL_ICCPROFILE_H

#include <zel/zelFile.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace zel::tool {

/// The ICC profile of the current image, if it has one.
std::optional<std::vector<std::byte>> readProfile(zelFile& file);

/// The name that a profile gives itself; empty if it has none or is damaged.
std::string profileName(const std::vector<std::byte>& profile);

} // namespace zel::tool

#endif
