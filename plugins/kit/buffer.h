#ifndef ZELKIT_BUFFER_H
#define ZELKIT_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace zelkit {

/// Bytes on the heap, got without an exception.
class Buffer {
public:
    /// Makes place for `bytes` bytes, all 0; what was there is lost. False if there is no memory.
    bool allocate(std::size_t bytes) {
        bytes_.reset();
        size_ = 0;
        bytes_.reset(new (std::nothrow) std::uint8_t[bytes]());
        size_ = bytes_ ? bytes : 0;
        return bytes_ != nullptr;
    }

    std::uint8_t* data() { return bytes_.get(); }
    const std::uint8_t* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
};

} // namespace zelkit

#endif
