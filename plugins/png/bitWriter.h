#ifndef ZELPNG_BITWRITER_H
#define ZELPNG_BITWRITER_H

#include "kit/buffer.h"

#include <cstdint>
#include <span>

namespace zelpng {

/// Puts bits into memory, the lowest first, as deflate has them.
class BitWriter {
public:
    bool allocate(std::size_t bytes) {
        clear();
        held_ = 0;
        return bytes_.allocate(bytes + sizeof pending_);
    }

    /// Adds the lowest `count` bits of a value that has no others. Up to 57 bits go between two
    /// calls of `flush`.
    void put(std::uint64_t value, int count) {
        pending_ |= value << held_;
        held_ += count;
    }

    /// Moves whole bytes out of the register.
    void flush() {
        std::uint8_t* const to = bytes_.data() + size_;
        for (int i = 0; i < 8; i++)
            to[i] = static_cast<std::uint8_t>(pending_ >> (8 * i));
        const int whole = held_ / 8;
        size_ += static_cast<std::size_t>(whole);
        pending_ = whole == 8 ? 0 : pending_ >> (8 * whole);
        held_ %= 8;
    }

    /// Goes on at a whole byte.
    void align() {
        held_ = (held_ + 7) / 8 * 8;
        flush();
    }

    void putByte(std::uint8_t byte) { bytes_.data()[size_++] = byte; }

    std::span<const std::uint8_t> bytes() const { return {bytes_.data(), size_}; }
    void clear() { size_ = 0; }

private:
    zelkit::Buffer bytes_;
    std::size_t size_ = 0;
    std::uint64_t pending_ = 0;
    int held_ = 0;
};

} // namespace zelpng

#endif
