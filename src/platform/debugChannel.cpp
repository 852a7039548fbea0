#include "platform/debugChannel.h"

#include <cerrno>
#include <cstddef>
#include <unistd.h>

namespace zel::platform {

void writeDebug(std::string_view text) {
    const int callersErrno = errno;
    while (!text.empty()) {
        const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            break;
    }
    errno = callersErrno;
}

} // namespace zel::platform
