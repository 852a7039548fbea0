#ifndef ZELJP2_BIGENDIAN_H
#define ZELJP2_BIGENDIAN_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zeljp2 {

/// Reads numbers from bytes; behind their end everything is 0 and `good` turns false.
class ByteCursor {
public:
    explicit ByteCursor(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint64_t take(int count) {
        std::uint64_t number = 0;
        for (int i = 0; i < count; i++)
            number = number << 8 | next();
        return number;
    }
    int takeInt(int count) { return static_cast<int>(take(count)); }
    void skip(std::size_t count) {
        good_ = good_ && count <= bytes_.size();
        bytes_ = good_ ? bytes_.subspan(count) : bytes_;
    }
    std::span<const std::uint8_t> rest() const { return bytes_; }
    bool good() const { return good_; }

private:
    std::uint8_t next() {
        good_ = good_ && !bytes_.empty();
        if (!good_)
            return 0;
        const std::uint8_t byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }

    std::span<const std::uint8_t> bytes_;
    bool good_ = true;
};

inline void put(std::vector<std::uint8_t>& bytes, std::uint64_t number, int count) {
    for (int i = count - 1; i >= 0; i--)
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

} // namespace zeljp2

#endif
