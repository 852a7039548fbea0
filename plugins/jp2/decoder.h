#ifndef ZELJP2_DECODER_H
#define ZELJP2_DECODER_H

#include "shape.h"
#include "stream.h"

#include <cstdint>
#include <optional>
#include <span>

namespace zeljp2 {

/// A box of the reference grid, ends excluded.
struct Area {
    std::int64_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;

    bool contains(const Area& other) const {
        return x0 <= other.x0 && y0 <= other.y0 && x1 >= other.x1 && y1 >= other.y1;
    }
};

/// Decodes parts of a codestream, in any order. The part that was decoded last is kept.
class Decoder {
public:
    Decoder(int fd, const Boxes& boxes, const Shape& shape, const char* name)
        : stream_(fd, boxes.codestream, boxes.codestreamBytes, name), shape_(shape) {}

    /// Reads the codestream's header, if that is not done yet.
    zelStatus open();
    /// Decodes an area, if it is not there already.
    zelStatus decode(const Area& area);
    /// Whether an area was decoded last, alone or in a larger one.
    bool holds(const Area& area) const { return decoded_ && decoded_->contains(area); }
    /// A row of one component from the area; samples of a component of lower density are repeated.
    /// x and y are on the reference grid.
    void fetchRow(int component, std::int64_t x, std::int64_t y, std::span<std::int32_t> row) const;

private:
    void drop();
    zelStatus decodeTile(const Area& area, std::int64_t tile);
    zelStatus decodeArea(const Area& area);
    std::optional<std::int64_t> tileAt(const Area& area) const;
    bool isComplete(const Area& area) const;

    Stream stream_;
    Shape shape_;
    StreamHandle handle_;
    CodecHandle codec_;
    ImageHandle image_;
    std::optional<Area> decoded_;
    bool used_ = false; ///< the codec has decoded something
};

} // namespace zeljp2

#endif
