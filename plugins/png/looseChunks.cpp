#include "looseChunks.h"

#include "decoder.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zelpng {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::int64_t signatureBytes = 8;
constexpr std::size_t headBytes = 8;
constexpr int mostChunks = 64;

// The signature and the header of a grey image of one pixel.
constexpr std::uint8_t onePixel[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n', 0,    0,    0,
                                     13,   'I', 'H', 'D', 'R',  0,    0,    0,    1,    0,    0,
                                     0,    1,   8,   0,   0,    0,    0,    0x3a, 0x7e, 0x9b, 0x55};
constexpr std::uint8_t emptyPixels[] = {0, 0, 0, 0, 'I', 'D', 'A', 'T'};

struct Chunk {
    std::int64_t offset = signatureBytes;
    std::uint32_t bytes = 0;
    std::array<char, 4> name{};

    std::int64_t end() const { return offset + 12 + bytes; }
    bool is(const char* other) const { return std::memcmp(name.data(), other, 4) == 0; }
};

// Goes from chunk to chunk. Many short ones are read at once.
class Walk {
public:
    explicit Walk(int fd) : fd_(fd) {}

    /// False at the end of what can be read.
    bool next(Chunk& chunk) {
        const std::uint8_t* const head = find(at_);
        if (!head)
            return false;
        chunk.offset = at_;
        chunk.bytes = std::uint32_t{head[0]} << 24 | std::uint32_t{head[1]} << 16 |
                      std::uint32_t{head[2]} << 8 | head[3];
        std::copy_n(head + 4, 4, chunk.name.begin());
        at_ = chunk.end();
        return true;
    }

private:
    const std::uint8_t* find(std::int64_t offset) {
        const bool isHere =
            offset >= start_ && offset + std::int64_t{headBytes} <= start_ + std::int64_t(held_);
        if (!isHere) {
            start_ = offset;
            if (zelkit::readSome(fd_, buffer_.data(), buffer_.size(), offset, held_) != zelOKAY)
                held_ = 0;
            if (held_ < headBytes)
                return nullptr;
        }
        return buffer_.data() + (offset - start_);
    }

    int fd_;
    std::int64_t at_ = signatureBytes;
    std::array<std::uint8_t, 1024> buffer_{};
    std::int64_t start_ = 0;
    std::size_t held_ = 0;
};

bool isText(const Chunk& chunk) {
    return chunk.is("tEXt") || chunk.is("zTXt") || chunk.is("iTXt");
}

// Whether the chunk is one that says something here. Most texts have keywords of their programs.
bool isWanted(int fd, const Chunk& chunk) {
    if (!isText(chunk))
        return chunk.is("tIME") || chunk.is("eXIf");
    constexpr std::size_t longestKeyword = 79;
    std::array<char, longestKeyword + 1> keyword{};
    std::size_t got = 0;
    return zelkit::readSome(fd, keyword.data(), longestKeyword, chunk.offset + headBytes, got) ==
               zelOKAY &&
           isKeyword(keyword.data());
}

// The chunk as a file of one pixel that ends where its pixel would begin; empty if it cannot be
// read.
Bytes fileOf(int fd, const Chunk& chunk) {
    Bytes stream(std::begin(onePixel), std::end(onePixel));
    const auto bytes = static_cast<std::size_t>(chunk.end() - chunk.offset);
    stream.resize(stream.size() + bytes);
    if (zelkit::readExact(fd, stream.data() + std::size(onePixel), bytes, chunk.offset) != zelOKAY)
        return {};
    stream.insert(stream.end(), std::begin(emptyPixels), std::end(emptyPixels));
    return stream;
}

void take(int fd, const char* name, const Chunk& chunk, Metadata& metadata) {
    if (chunk.bytes > longestLooseChunk) {
        zelError(zelSevWarning, "%s: a %.4s chunk of %u bytes is left out", name, chunk.name.data(),
                 chunk.bytes);
        return;
    }
    const Bytes stream = fileOf(fd, chunk);
    Decoder decoder(fd, name, false);
    Header ofOnePixel;
    if (!stream.empty() && decoder.setInput(stream) && decoder.open(ofOnePixel) == zelOKAY)
        decoder.getMetadata(metadata);
}

} // namespace

void readLooseChunks(int fd, const char* name, Metadata& metadata) {
    int left = mostChunks;
    Walk walk(fd);
    for (Chunk chunk; left > 0 && walk.next(chunk) && !chunk.is("IEND");)
        if (isWanted(fd, chunk)) {
            take(fd, name, chunk, metadata);
            left--;
        }
}

} // namespace zelpng
