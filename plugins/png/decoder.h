#ifndef ZELPNG_DECODER_H
#define ZELPNG_DECODER_H

#include "codec.h"
#include "metadata.h"

namespace zelpng {

/// What the header says, with rows as `decodeRows` gives them.
struct Header {
    int width = 0;
    int height = 0;
    int bits = 8; ///< of an element of a decoded row: 1, 8 or 16
    int colorType = PNG_COLOR_TYPE_GRAY;
    int channels = 1;
    bool interlaced = false;
    std::size_t rowBytes = 0;
};

/// Reads a file from its start, once.
class Decoder : private Codec {
public:
    using Codec::Codec;
    using Codec::setInput;
    ~Decoder();

    /// Reads all that stands before the pixels. Fails with zelCORRUPTED if the file is too short
    /// for an image of its size.
    zelStatus open(Header& header);
    /// Of what `open` has read.
    void getMetadata(Metadata& metadata);

    /// Decodes the next rows of an image that is not interlaced; with null, passes over them.
    zelStatus decodeRows(std::uint8_t* rows, int count);
    /// Decodes an interlaced image.
    zelStatus decodeImage(std::uint8_t* rows);

private:
    zelStatus checkLength(const Header& header) const;
    zelStatus readEnd();

    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    Header header_;
    int row_ = 0;
};

} // namespace zelpng

#endif
