#include "iccProfile.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace zel::tool {
namespace {

constexpr size_t kHeaderSize = 128;
constexpr size_t kTagEntrySize = 12;

constexpr std::uint32_t signature(const char (&text)[5]) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = value << 8 | static_cast<unsigned char>(text[i]);
    }
    return value;
}

/// Reads big-endian numbers; what lies beyond the end reads as 0.
class Bytes {
public:
    explicit Bytes(const std::vector<std::byte>& all) : data(all) {}

    std::uint32_t word(size_t at, size_t bytes = 4) const {
        if (at > data.size() || data.size() - at < bytes) {
            return 0;
        }
        std::uint32_t value = 0;
        for (size_t i = 0; i < bytes; ++i) {
            value = value << 8 | std::to_integer<std::uint32_t>(data[at + i]);
        }
        return value;
    }

    /// At most `length` characters, up to a zero byte.
    std::string text(size_t at, size_t length) const {
        std::string result;
        for (size_t i = at; i < data.size() && i - at < length; ++i) {
            const char c = std::to_integer<char>(data[i]);
            if (c == '\0') {
                break;
            }
            result += c;
        }
        return result;
    }

    /// UTF-16, of which the characters beyond ASCII become question marks.
    std::string wideText(size_t at, size_t length) const {
        std::string result;
        for (size_t i = at; i + 1 < data.size() && i + 1 < at + length; i += 2) {
            const std::uint32_t unit = word(i, 2);
            if (unit == 0) {
                break;
            }
            result += unit < 0x80 ? static_cast<char>(unit) : '?';
        }
        return result;
    }

private:
    const std::vector<std::byte>& data;
};

} // namespace

std::optional<std::vector<std::byte>> readProfile(zelFile& file) {
    int size = 0;
    void* profile = nullptr;
    if (file.getICCProfile(size, profile) != zelOKAY || !profile || size <= 0) {
        return std::nullopt;
    }
    std::vector<std::byte> bytes(static_cast<size_t>(size));
    std::memcpy(bytes.data(), profile, bytes.size());
    file.freeICCProfile(profile);
    return bytes;
}

std::string profileName(const std::vector<std::byte>& profile) {
    const Bytes bytes(profile);
    const size_t tags = std::min<size_t>(bytes.word(kHeaderSize), profile.size() / kTagEntrySize);
    for (size_t i = 0; i < tags; ++i) {
        const size_t entry = kHeaderSize + 4 + i * kTagEntrySize;
        if (bytes.word(entry) != signature("desc")) {
            continue;
        }
        const size_t at = bytes.word(entry + 4);
        if (bytes.word(at) == signature("desc")) {
            return bytes.text(at + 12, bytes.word(at + 8));
        }
        if (bytes.word(at) == signature("mluc")) {
            return bytes.wideText(at + bytes.word(at + 24), bytes.word(at + 20));
        }
    }
    return {};
}

} // namespace zel::tool
