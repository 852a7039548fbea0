#ifndef ZEL_PLATFORM_DEBUG_CHANNEL_H
#define ZEL_PLATFORM_DEBUG_CHANNEL_H

#include <string_view>

namespace zel::platform {

/// Hands a text to the debug channel, file descriptor 2, at once and unbuffered, so that nothing is
/// lost when the process ends right after. Interrupted and short writes go on until all is written;
/// a channel that takes nothing is ignored. `errno` stays as it was.
void writeDebug(std::string_view text);

} // namespace zel::platform

#endif
