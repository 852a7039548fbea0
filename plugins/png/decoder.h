#ifndef ZELPNG_DECODER_H
#define ZELPNG_DECODER_H

#include "codec.h"
#include "metadata.h"

namespace zelpng {

/// The longest text or EXIF block that is read, packed or not.
constexpr std::size_t longestLooseChunk = 128 * 1024;

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

    /// Reads what stands before the pixels, but no texts, no time and no EXIF block: these only
    /// from bytes that were set as input. Fails with zelCORRUPTED if the file is too short for an
    /// image of its size.
    zelStatus open(Header& header);
    /// Of what `open` has read.
    void getMetadata(Metadata& metadata);

    /// Whether `start` may be called: once, and again if the image is interlaced.
    bool canStart() const { return !started_ || image_.size() > 0; }
    /// Goes to the first row; an interlaced image is decoded whole and kept.
    zelStatus start();
    zelStatus decodeRows(std::uint8_t* rows, int count);
    zelStatus skipRows(int count);

private:
    /// Decodes the next rows of an image that is not interlaced; with null, passes over them.
    zelStatus readRows(std::uint8_t* rows, int count);
    zelStatus decodeImage();
    zelStatus checkLength(const Header& header) const;
    zelStatus readEnd();

    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    Header header_;
    zelkit::Buffer image_; ///< of an interlaced file, once it is decoded
    int row_ = 0;          ///< the next one
    bool started_ = false;
};

} // namespace zelpng

#endif
