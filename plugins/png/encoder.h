#ifndef ZELPNG_ENCODER_H
#define ZELPNG_ENCODER_H

#include "codec.h"
#include "decoder.h"
#include "metadata.h"

namespace zelpng {

/// What the format arguments in a file's name ask for.
struct Options {
    int level = 6;
    int filter = PNG_ALL_FILTERS; ///< a mask; all: libpng chooses one for each row
};

/// Writes a file in one pass.
class Encoder : private Codec {
public:
    using Codec::Codec;
    ~Encoder();

    /// Writes all that stands before the pixels. Of the header, interlacing does not count.
    zelStatus open(const Header& header, const Options& options, const Metadata& metadata);
    /// zelBADPARAMS and a warning for an index that the palette lacks.
    zelStatus encodeRows(const std::uint8_t* rows, int count);
    zelStatus finish();

private:
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::size_t rowBytes_ = 0;
    std::size_t colors_ = 0; ///< of a palette of bytes; 0: none
};

} // namespace zelpng

#endif
