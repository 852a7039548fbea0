#ifndef ZEL_BENCH_DIRECT_H
#define ZEL_BENCH_DIRECT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace bench {

/// Where decoded elements go. In a timed run every piece goes to the same memory, as in a client
/// that works a page off before it asks for the next; else the pieces lie one behind the other.
class Place {
public:
    explicit Place(bool keepsAll) : keepsAll_(keepsAll) {}

    /// Memory for the next piece, until the next call, with room for more than is kept of it.
    std::uint8_t* next(std::size_t bytes, std::size_t room = 0) {
        const std::size_t at = keepsAll_ ? used_ : 0;
        used_ = at + bytes;
        if (bytes_.size() < at + std::max(bytes, room))
            bytes_.resize(at + std::max(bytes, room));
        return bytes_.data() + at;
    }

    /// All pieces that were kept.
    std::span<const std::uint8_t> kept() const { return std::span(bytes_).first(used_); }
    bool keepsAll() const { return keepsAll_; }

private:
    bool keepsAll_;
    std::size_t used_ = 0;
    std::vector<std::uint8_t> bytes_;
};

/// What is known of a file that a codec library decodes.
struct Coded {
    std::string path;
    int width;
    int height;
    int channels;
    int elementBytes;
    int pageRows; ///< a piece of as many rows is decoded at once where the library decodes rows

    std::size_t rowBytes() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) *
               static_cast<std::size_t>(elementBytes);
    }
};

/// Decodes a file by its library alone, from the name to the last pixel. False at any failure.
using DirectDecoder = bool (*)(const Coded& file, Place& place);

/// The decoder for a format of the database; null if the library was not there at configure time.
/// For formats without a library it reads the file and copies as many bytes as it decodes to.
DirectDecoder directDecoder(const std::string& format);

/// Whether a format is decoded by a library at all.
bool hasCodecLibrary(const std::string& format);

/// Adds a decoder; each file of this folder does so for its library.
struct DirectRegistration {
    DirectRegistration(const char* format, DirectDecoder decoder);
};

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

} // namespace bench

#endif
