#include "rowCodec.h"

#include "kit/bits.h"
#include "kit/sizes.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace zelpnm {

namespace {

using Byte = std::uint8_t;
using zelkit::getBit;
using zelkit::moveBits;
using zelkit::setBit;

std::uint32_t swapBytes(std::uint32_t word) {
    return word << 24 | (word & 0xff00) << 8 | (word >> 8 & 0xff00) | word >> 24;
}

// The high byte comes first.
std::uint16_t getWord(const Byte* bytes) {
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap16(word) : word;
}

// Floats move as their bits, so that a NaN stays the NaN that it is.
void moveFloats(Byte* to, const Byte* from, std::int64_t count, bool swap) {
    if (!swap) {
        std::memcpy(to, from, static_cast<std::size_t>(count) * 4);
        return;
    }
    for (std::int64_t i = 0; i < count; i++) {
        std::uint32_t word = 0;
        std::memcpy(&word, from + i * 4, 4);
        word = swapBytes(word);
        std::memcpy(to + i * 4, &word, 4);
    }
}

} // namespace

RowCodec::Encoding RowCodec::encodingOf(const Header& header) {
    if (header.kind == Kind::pfm)
        return Encoding::floats;
    if (header.maxval == 1)
        return header.kind == Kind::pbm && !header.plain ? Encoding::packedBits
                                                         : Encoding::bitBytes;
    return header.maxval <= 255 ? Encoding::bytes : Encoding::words;
}

RowCodec::RowCodec(const Header& header, bool invert)
    : encoding_(encodingOf(header)), width_(header.width), channels_(header.channels),
      maxval_(static_cast<unsigned>(header.maxval)), littleEndian_(header.littleEndian),
      invert_(invert) {}

std::optional<std::int64_t> RowCodec::rowBytes() const {
    switch (encoding_) {
    case Encoding::packedBits:
        return (width_ + 7) / 8;
    case Encoding::bitBytes:
    case Encoding::bytes:
        return zelkit::checkedProduct({width_, channels_});
    case Encoding::words:
        return zelkit::checkedProduct({width_, channels_, 2});
    case Encoding::floats:
        return zelkit::checkedProduct({width_, channels_, 4});
    }
    return std::nullopt;
}

void RowCodec::decode(const Byte* row, void* page, std::int64_t first) const {
    Byte* const bytes = static_cast<Byte*>(page);
    const std::int64_t count = width_ * channels_;
    switch (encoding_) {
    case Encoding::packedBits:
        moveBits(bytes, first, row, 0, count, invert_ ? 0xff : 0);
        break;
    case Encoding::bitBytes:
        for (std::int64_t i = 0; i < count; i++)
            setBit(bytes, first + i, (row[i] != 0) != invert_);
        break;
    case Encoding::bytes:
        if (maxval_ == 255)
            std::memcpy(bytes + first, row, static_cast<std::size_t>(count));
        else
            for (std::int64_t i = 0; i < count; i++)
                bytes[first + i] = static_cast<Byte>(
                    (std::min<unsigned>(row[i], maxval_) * 255 + maxval_ / 2) / maxval_);
        break;
    case Encoding::words: {
        auto* const words = static_cast<std::uint16_t*>(page) + first;
        const auto highest = static_cast<std::uint16_t>(maxval_);
        for (std::int64_t i = 0; i < count; i++)
            words[i] = std::min(getWord(row + i * 2), highest);
        break;
    }
    case Encoding::floats:
        moveFloats(bytes + first * 4, row, count,
                   littleEndian_ != (std::endian::native == std::endian::little));
        break;
    }
}

void RowCodec::encode(const void* page, std::int64_t first, Byte* row) const {
    const Byte* const bytes = static_cast<const Byte*>(page);
    const std::int64_t count = width_ * channels_;
    switch (encoding_) {
    case Encoding::packedBits:
        row[(count - 1) / 8] = 0; // the padding behind the last bit
        moveBits(row, 0, bytes, first, count, invert_ ? 0xff : 0);
        break;
    case Encoding::bitBytes:
        for (std::int64_t i = 0; i < count; i++)
            row[i] = (getBit(bytes, first + i) != 0) != invert_;
        break;
    case Encoding::bytes:
        for (std::int64_t i = 0; i < count; i++)
            row[i] = static_cast<Byte>((bytes[first + i] * maxval_ + 127) / 255);
        break;
    case Encoding::words: {
        const auto* const words = static_cast<const std::uint16_t*>(page) + first;
        for (std::int64_t i = 0; i < count; i++) {
            const unsigned sample = std::min<unsigned>(words[i], maxval_);
            row[i * 2] = static_cast<Byte>(sample >> 8);
            row[i * 2 + 1] = static_cast<Byte>(sample);
        }
        break;
    }
    case Encoding::floats:
        moveFloats(row, bytes + first * 4, count,
                   littleEndian_ != (std::endian::native == std::endian::little));
        break;
    }
}

} // namespace zelpnm
