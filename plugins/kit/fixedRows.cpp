#include "kit/fixedRows.h"

#include "kit/fileIo.h"
#include "kit/sizes.h"

#include <cerrno>

namespace zelkit {

zelStatus FixedRows::begin(int fd, std::int64_t offset, std::int64_t rowBytes, int height) {
    fd_ = fd;
    offset_ = offset;
    rowBytes_ = rowBytes;
    bandRows_ = bandRows(rowBytes, height);
    row_ = 0;
    return band_.allocate(static_cast<std::size_t>(rowBytes * bandRows_))
               ? zelOKAY
               : zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
}

zelStatus FixedRows::load(int rows) {
    const std::int64_t first = row_;
    row_ += rows;
    return readExact(fd_, band_.data(), static_cast<std::size_t>(rowBytes_ * rows),
                     offset_ + first * rowBytes_);
}

zelStatus FixedRows::store(int rows) {
    const std::int64_t first = row_;
    row_ += rows;
    return writeExact(fd_, band_.data(), static_cast<std::size_t>(rowBytes_ * rows),
                      offset_ + first * rowBytes_);
}

} // namespace zelkit
