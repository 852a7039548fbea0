#ifndef ZELKIT_BYTEWRITER_H
#define ZELKIT_BYTEWRITER_H

#include "kit/fileIo.h"

#include <cstdint>
#include <vector>

namespace zelkit {

/// Bytes that go to a file one behind the other, without moving the descriptor's position.
class ByteWriter {
public:
    void begin(int fd, std::int64_t offset) {
        pending.clear();
        fd_ = fd;
        end_ = offset;
    }

    /// Writes what is pending. Fails as `writeExact` does.
    zelStatus flush() {
        const zelStatus status = writeExact(fd_, pending.data(), pending.size(), end_);
        end_ += static_cast<std::int64_t>(pending.size());
        pending.clear();
        return status;
    }

    /// Where in the file the next byte will lie.
    std::int64_t position() const { return end_ + static_cast<std::int64_t>(pending.size()); }

    std::vector<std::uint8_t> pending;

private:
    int fd_ = -1;
    std::int64_t end_ = 0;
};

} // namespace zelkit

#endif
