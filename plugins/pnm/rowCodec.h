#ifndef ZELPNM_ROWCODEC_H
#define ZELPNM_ROWCODEC_H

#include "header.h"

#include <cstdint>
#include <optional>

namespace zelpnm {

/// Translates rows of samples between the file's bytes and the elements of a page.
///
/// - A maxval of 1 means bits: eight to a byte in a PBM, one to a byte elsewhere.
/// - Samples of one byte fill the range 0 to 255 in a page, whatever the maxval.
/// - Samples of two bytes keep their numbers; in the file the high byte comes first.
/// - Floats keep their numbers.
///
/// A sample above the maxval counts as the maxval. A plain file's row, once it is read from its
/// text, has the form of a PAM's: one or two bytes a sample.
class RowCodec {
public:
    RowCodec() = default;
    /// `invert` exchanges 0 and 1 of bits between file and page.
    RowCodec(const Header& header, bool invert);

    /// The bytes of a row in the file; nothing if they pass 63 bits.
    std::optional<std::int64_t> rowBytes() const;

    /// Translate one row; its elements begin at index `first` of the page.
    void decode(const std::uint8_t* row, void* page, std::int64_t first) const;
    void encode(const void* page, std::int64_t first, std::uint8_t* row) const;

private:
    enum class Encoding {
        packedBits,
        bitBytes,
        bytes,
        words,
        floats
    };
    static Encoding encodingOf(const Header& header);

    Encoding encoding_ = Encoding::bytes;
    std::int64_t width_ = 0;
    std::int64_t channels_ = 0;
    unsigned maxval_ = 255;
    bool littleEndian_ = true;
    bool invert_ = false;
};

} // namespace zelpnm

#endif
