#ifndef ZELKIT_FIXEDROWS_H
#define ZELKIT_FIXEDROWS_H

#include "kit/buffer.h"

#include <zel/zelError.h>

#include <cstddef>
#include <cstdint>

namespace zelkit {

/// Rows of equal length that lie one behind the other in a file, moved in bands of about 256 KiB.
class FixedRows {
public:
    /// Goes to the first row, which lies at `offset`. zelMALLOCFAILED if there is no memory for a
    /// band.
    zelStatus begin(int fd, std::int64_t offset, std::int64_t rowBytes, int height);

    void skip(int count) { row_ += count; }

    /// Calls `take(stored)` with each of the next rows.
    template <typename Take>
    zelStatus read(int count, Take take) {
        for (int left = count; left > 0;) {
            const int step = left < bandRows_ ? left : bandRows_;
            const zelStatus status = load(step);
            if (status != zelOKAY)
                return status;
            for (int i = 0; i < step; i++)
                take(static_cast<const std::uint8_t*>(rowAt(i)));
            left -= step;
        }
        return zelOKAY;
    }

    /// Calls `fill(stored)` for each of the next rows, and writes them. What `fill` never touches
    /// in a row is 0.
    template <typename Fill>
    zelStatus write(int count, Fill fill) {
        for (int left = count; left > 0;) {
            const int step = left < bandRows_ ? left : bandRows_;
            for (int i = 0; i < step; i++)
                fill(rowAt(i));
            const zelStatus status = store(step);
            if (status != zelOKAY)
                return status;
            left -= step;
        }
        return zelOKAY;
    }

private:
    std::uint8_t* rowAt(int i) {
        return band_.data() + static_cast<std::size_t>(i) * static_cast<std::size_t>(rowBytes_);
    }
    zelStatus load(int rows);
    zelStatus store(int rows);

    int fd_ = -1;
    std::int64_t offset_ = 0;
    std::int64_t rowBytes_ = 0;
    int bandRows_ = 1;
    std::int64_t row_ = 0;
    Buffer band_;
};

} // namespace zelkit

#endif
