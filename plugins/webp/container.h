#ifndef ZELWEBP_CONTAINER_H
#define ZELWEBP_CONTAINER_H

#include "kit/buffer.h"

#include <zel/zelError.h>

#include <cstdint>
#include <string>
#include <vector>
#include <webp/mux_types.h>

namespace zelwebp {

struct Frame {
    int duration = 0; ///< in milliseconds
    bool lossless = false;
};

/// A WebP file: what it says of its images, and once they are wanted the compressed images, which
/// are held in memory.
class Container {
public:
    /// Goes through the file's parts; `name` is the file's in warnings. zelPREMATUREEOF if the file
    /// is shorter than it says, zelCORRUPTED if its parts are damaged as far as they are looked at:
    /// all of a small file.
    zelStatus open(int fd, const char* name);
    /// Reads the whole file, unless that is done. Fails as `open`, and for lack of memory.
    zelStatus load();

    /// Of a file that is loaded.
    WebPData data() const { return {bytes_.data(), bytes_.size()}; }

    int width = 0;
    int height = 0;
    bool hasAlpha = false;
    bool isAnimation = false;
    int loopCount = 0;
    std::vector<Frame> frames;
    std::vector<std::uint8_t> iccProfile; ///< empty if there is none, as is the next
    std::vector<std::uint8_t> exif;

private:
    struct Chunk;

    zelStatus readLength();
    zelStatus readChunk(std::int64_t offset, Chunk& chunk) const;
    zelStatus walk();
    zelStatus take(const Chunk& chunk);
    zelStatus takeCanvas(const Chunk& chunk);
    zelStatus takeImage(const Chunk& chunk);
    zelStatus takeFrame(const Chunk& chunk);
    zelStatus takeBlock(const Chunk& chunk, std::size_t most, std::vector<std::uint8_t>& block);

    int fd_ = -1;
    std::string name_;
    std::int64_t length_ = 0; ///< as the file says
    bool extended_ = false;   ///< the canvas is told apart from the images
    zelkit::Buffer bytes_;
};

} // namespace zelwebp

#endif
