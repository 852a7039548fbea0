#ifndef ZELPNG_ENCODER_H
#define ZELPNG_ENCODER_H

#include "codec.h"
#include "decoder.h"
#include "deflater.h"
#include "metadata.h"
#include "rowFilter.h"

namespace zelpng {

/// What the format arguments in a file's name ask for.
struct Options {
    int level = 6;
    int filter = PNG_ALL_FILTERS; ///< a mask; of several, one is chosen for each row
};

/// Writes a file in one pass: the pixels by filters and deflate of our own, which take a fraction
/// of the time of libpng's at the same size, all else by libpng.
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
    bool startPacking(const Header& header, const Options& options);
    zelStatus writePacked();

    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::size_t rowBytes_ = 0;
    std::size_t colors_ = 0; ///< of a palette of bytes; 0: none
    RowFilter filter_;
    Deflater deflater_;
};

} // namespace zelpng

#endif
