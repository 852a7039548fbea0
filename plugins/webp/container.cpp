#include "container.h"

#include "kit/fileIo.h"
#include "kit/littleEndian.h"
#include "kit/sizes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <webp/decode.h>
#include <webp/demux.h>

namespace zelwebp {

namespace {

constexpr std::int64_t headBytes = 8; // of a chunk: its name and its length
constexpr std::int64_t firstChunk = 12;
// Files up to this length are looked at as a whole when they are opened.
constexpr std::int64_t smallFile = 1 << 20;
constexpr std::size_t longestExif = 1 << 20;

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

int get24(const std::uint8_t* bytes) {
    return static_cast<int>(zelkit::get16(bytes) | std::uint32_t{bytes[2]} << 16);
}

} // namespace

struct Container::Chunk {
    std::int64_t offset = 0;
    std::int64_t bytes = 0; ///< of its content
    /// The name, the length and as much of the content as tells of an image.
    std::array<std::uint8_t, 64> start{};
    std::size_t startBytes = 0;

    bool is(std::string_view name) const { return std::memcmp(start.data(), name.data(), 4) == 0; }
    const std::uint8_t* content() const { return start.data() + headBytes; }
    std::int64_t end() const { return offset + headBytes + bytes + (bytes & 1); }
};

zelStatus Container::open(int fd, const char* name) {
    fd_ = fd;
    name_ = name;
    zelStatus status = readLength();
    if (status == zelOKAY)
        status = walk();
    if (status == zelOKAY && length_ <= smallFile)
        status = load();
    return status;
}

zelStatus Container::readLength() {
    std::array<std::uint8_t, firstChunk> head{};
    std::int64_t onDisk = 0;
    zelStatus status = zelkit::readExact(fd_, head.data(), head.size(), 0);
    if (status == zelOKAY)
        status = zelkit::getFileLength(fd_, onDisk);
    if (status != zelOKAY)
        return status;
    if (std::memcmp(head.data(), "RIFF", 4) != 0 || std::memcmp(head.data() + 8, "WEBP", 4) != 0)
        return zelStatusEncode(zelCORRUPTED);
    length_ = headBytes + std::int64_t{zelkit::get32(head.data() + 4)};
    return length_ > onDisk ? zelStatusEncode(zelPREMATUREEOF) : zelOKAY;
}

// A chunk that does not lie inside the file is damage.
zelStatus Container::readChunk(std::int64_t offset, Chunk& chunk) const {
    const auto wanted = std::min<std::int64_t>(std::size(chunk.start), length_ - offset);
    chunk.offset = offset;
    if (wanted < headBytes)
        return zelStatusEncode(zelCORRUPTED);
    chunk.startBytes = static_cast<std::size_t>(wanted);
    const zelStatus status = zelkit::readExact(fd_, chunk.start.data(), chunk.startBytes, offset);
    chunk.bytes = zelkit::get32(chunk.start.data() + 4);
    if (status == zelOKAY && offset + headBytes + chunk.bytes > length_)
        return zelStatusEncode(zelCORRUPTED);
    return status;
}

zelStatus Container::walk() {
    zelStatus status = zelOKAY;
    Chunk chunk;
    // Without a chunk for the canvas the first one is the image, and nothing else counts.
    for (std::int64_t at = firstChunk;
         status == zelOKAY && at + headBytes <= length_ && (extended_ || frames.empty());
         at = chunk.end()) {
        status = readChunk(at, chunk);
        if (status == zelOKAY)
            status = take(chunk);
    }
    if (status != zelOKAY)
        return status;
    const bool whole = !frames.empty() && width >= 1 && height >= 1;
    return whole ? zelOKAY : zelStatusEncode(zelCORRUPTED);
}

zelStatus Container::take(const Chunk& chunk) {
    if (chunk.is("VP8X"))
        return takeCanvas(chunk);
    if (chunk.is("VP8 ") || chunk.is("VP8L"))
        return isAnimation || !frames.empty() ? zelOKAY : takeImage(chunk);
    if (chunk.is("ANMF"))
        return isAnimation ? takeFrame(chunk) : zelOKAY;
    if (chunk.is("ANIM") && chunk.bytes >= 6)
        loopCount = static_cast<int>(zelkit::get16(chunk.content() + 4));
    if (chunk.is("ICCP") && iccProfile.empty())
        return takeBlock(chunk, zelkit::largestProfile, iccProfile);
    if (chunk.is("EXIF") && exif.empty())
        return takeBlock(chunk, longestExif, exif);
    return zelOKAY;
}

zelStatus Container::takeCanvas(const Chunk& chunk) {
    constexpr std::int64_t canvasBytes = 10;
    if (chunk.bytes < canvasBytes || chunk.startBytes < headBytes + canvasBytes)
        return zelStatusEncode(zelCORRUPTED);
    extended_ = true;
    const unsigned flags = chunk.content()[0];
    isAnimation = (flags & ANIMATION_FLAG) != 0;
    hasAlpha = (flags & ALPHA_FLAG) != 0;
    width = get24(chunk.content() + 4) + 1;
    height = get24(chunk.content() + 7) + 1;
    return zelOKAY;
}

zelStatus Container::takeImage(const Chunk& chunk) {
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(chunk.start.data(), chunk.startBytes, &features) != VP8_STATUS_OK)
        return zelStatusEncode(zelCORRUPTED);
    if (!extended_) {
        width = features.width;
        height = features.height;
        hasAlpha = features.has_alpha != 0;
    }
    frames.push_back({0, chunk.is("VP8L")});
    return zelOKAY;
}

// Behind its place and its duration a frame has chunks of its own: alpha, if any, and the image.
zelStatus Container::takeFrame(const Chunk& chunk) {
    constexpr std::int64_t placeBytes = 16;
    if (chunk.bytes < placeBytes + headBytes)
        return zelStatusEncode(zelCORRUPTED);
    Chunk image;
    const zelStatus status = readChunk(chunk.offset + headBytes + placeBytes, image);
    if (status == zelOKAY)
        frames.push_back({get24(chunk.content() + 12), image.is("VP8L")});
    return status;
}

zelStatus Container::takeBlock(const Chunk& chunk, std::size_t most,
                               std::vector<std::uint8_t>& block) {
    const auto bytes = static_cast<std::size_t>(chunk.bytes);
    if (bytes > most) {
        zelError(zelSevWarning, "%s: a %.4s chunk of %zu bytes is left out", name_.c_str(),
                 reinterpret_cast<const char*>(chunk.start.data()), bytes);
        return zelOKAY;
    }
    block.resize(bytes);
    return zelkit::readExact(fd_, block.data(), bytes, chunk.offset + headBytes);
}

zelStatus Container::load() {
    if (bytes_.size() > 0)
        return zelOKAY;
    if (!bytes_.allocate(static_cast<std::size_t>(length_)))
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    const zelStatus status = zelkit::readExact(fd_, bytes_.data(), bytes_.size(), 0);
    const WebPData whole = data();
    const bool sound = status == zelOKAY && Demuxer(WebPDemux(&whole)) != nullptr;
    if (!sound)
        bytes_ = zelkit::Buffer();
    return sound || status != zelOKAY ? status : zelStatusEncode(zelCORRUPTED);
}

} // namespace zelwebp
