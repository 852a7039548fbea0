#ifndef ZELPNG_ROWFILTER_H
#define ZELPNG_ROWFILTER_H

#include "kit/buffer.h"

#include <cstdint>
#include <span>

namespace zelpng {

/// Turns the rows of an image, from the first on, into what PNG packs: the number of a filter, and
/// the bytes less what the filter foretells from their neighbours.
class RowFilter {
public:
    /// `step` is the bytes of a pixel, at least 1; `filters` a mask of libpng's. With several, each
    /// row gets the one whose bytes lie nearest to 0. Wide samples have two bytes, which PNG has
    /// the other way round on many machines. False without memory.
    bool start(std::size_t rowBytes, std::size_t step, int filters, bool wide);

    /// The bytes to pack, which stay until the next call.
    std::span<const std::uint8_t> apply(const std::uint8_t* row);

private:
    void takeRow(const std::uint8_t* row);
    void apply(int filter, std::uint8_t* out) const;

    std::size_t rowBytes_ = 0;
    std::size_t step_ = 1;
    int filters_ = 0;
    bool swaps_ = false;
    zelkit::Buffer row_;
    zelkit::Buffer above_;
    zelkit::Buffer best_;
    zelkit::Buffer trial_;
};

} // namespace zelpng

#endif
