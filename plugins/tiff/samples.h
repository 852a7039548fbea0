#ifndef ZELTIFF_SAMPLES_H
#define ZELTIFF_SAMPLES_H

#include <zel/zelDataSize.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace zeltiff {

/// How a stored sample becomes an element of the page.
enum class SampleKind {
    Bit,    ///< stays one bit
    Copy,   ///< has the element's own form
    Spread, ///< unsigned, spread over the full range of the element
    Number, ///< unsigned, the number is kept: a palette's index
    Signed, ///< signed, the number is kept
    Float,  ///< a short float, widened to single
    Unsigned64,
    Signed64, ///< 64-bit integers, as double
};

/// What a stored sample is, and what it becomes.
struct SampleFormat {
    SampleKind kind = SampleKind::Copy;
    int bits = 8;
    zelDataType type = zelUChar;

    /// What a stored number is multiplied by.
    double factor() const;
};

/// The form of samples of `bits` bits with libtiff's SAMPLEFORMAT number; nothing for a form that
/// has no element type.
std::optional<SampleFormat> sampleFormatOf(int bits, int sampleFormat, bool palette);

/// Turns `count` samples that lie packed in `stored`, high bits first and wider ones in the
/// machine's byte order, into the elements of `page` from element `first` on.
void unpackSamples(const SampleFormat& format, const std::uint8_t* stored, std::size_t count,
                   std::uint8_t* page, std::size_t first);

/// Copies `count` bits, high bits first in each byte. Other bits of the last byte may change.
void copyBits(std::uint8_t* to, std::size_t toBit, const std::uint8_t* from, std::size_t fromBit,
              std::size_t count);

/// Reverses the bytes of each sample of 16, 24, 32 or 64 bits; other widths have no byte order.
/// `data` is aligned as such samples are.
void swapSamples(std::uint8_t* data, std::size_t bytes, int bits);

} // namespace zeltiff

#endif
