#include "samples.h"

#include <cmath>
#include <cstring>

#include <tiffio.h>

namespace zeltiff {

namespace {

std::uint64_t largest(int bits) {
    return bits >= 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << bits) - 1;
}

// Reads packed samples of any width up to 32 bits one after the other.
class BitReader {
public:
    BitReader(const std::uint8_t* data, int bits) : data_(data), bits_(bits) {}

    std::uint32_t next() {
        if (bits_ == 24)
            return nextTriple();
        while (held_ < bits_) {
            pending_ = pending_ << 8 | *data_++;
            held_ += 8;
        }
        held_ -= bits_;
        return static_cast<std::uint32_t>(pending_ >> held_ & largest(bits_));
    }

private:
    // libtiff keeps 24 bits in the machine's byte order.
    std::uint32_t nextTriple() {
        std::uint32_t value = 0;
        std::memcpy(&value, data_, 3);
        data_ += 3;
        return value;
    }

    const std::uint8_t* data_;
    int bits_;
    std::uint64_t pending_ = 0;
    int held_ = 0;
};

float widenFloat(std::uint32_t stored, int bits) {
    const int fractionBits = bits == 16 ? 10 : 16;
    const int exponentBits = bits - 1 - fractionBits;
    const int bias = (1 << (exponentBits - 1)) - 1;
    const auto fraction = static_cast<int>(stored & largest(fractionBits));
    const auto exponent = static_cast<int>(stored >> fractionBits & largest(exponentBits));
    float value = 0;
    if (exponent == (1 << exponentBits) - 1)
        value = fraction ? NAN : INFINITY;
    else if (exponent == 0)
        value = std::ldexp(static_cast<float>(fraction), 1 - bias - fractionBits);
    else
        value = std::ldexp(static_cast<float>(fraction + (1 << fractionBits)),
                           exponent - bias - fractionBits);
    return (stored >> (bits - 1) & 1) != 0 ? -value : value;
}

template <typename Element, typename Convert>
void fill(std::uint8_t* page, std::size_t first, std::size_t count, Convert convert) {
    std::uint8_t* to = page + first * sizeof(Element);
    for (std::size_t i = 0; i < count; i++, to += sizeof(Element)) {
        const auto element = static_cast<Element>(convert());
        std::memcpy(to, &element, sizeof element);
    }
}

template <typename Convert>
void fillIntegers(zelDataType type, std::uint8_t* page, std::size_t first, std::size_t count,
                  Convert convert) {
    switch (zelDataSize(type, 1)) {
    case 1:
        return fill<std::uint8_t>(page, first, count, convert);
    case 2:
        return fill<std::uint16_t>(page, first, count, convert);
    default:
        return fill<std::uint32_t>(page, first, count, convert);
    }
}

template <typename Stored>
void fillDoubles(const std::uint8_t* stored, std::uint8_t* page, std::size_t first,
                 std::size_t count) {
    fill<double>(page, first, count, [&stored] {
        Stored value = 0;
        std::memcpy(&value, stored, sizeof value);
        stored += sizeof value;
        return static_cast<double>(value);
    });
}

zelDataType integerType(int bits, bool isSigned) {
    if (bits <= 8)
        return isSigned ? zelChar : zelUChar;
    if (bits <= 16)
        return isSigned ? zelShort : zelUShort;
    return isSigned ? zelInt : zelUInt;
}

std::optional<SampleFormat> floatFormat(int bits) {
    switch (bits) {
    case 16:
    case 24:
        return SampleFormat{SampleKind::Float, bits, zelFloat};
    case 32:
        return SampleFormat{SampleKind::Copy, bits, zelFloat};
    case 64:
        return SampleFormat{SampleKind::Copy, bits, zelDouble};
    default:
        return std::nullopt;
    }
}

std::optional<SampleFormat> integerFormat(int bits, bool isSigned, bool palette) {
    if (bits == 64)
        return SampleFormat{isSigned ? SampleKind::Signed64 : SampleKind::Unsigned64, bits,
                            zelDouble};
    if (bits < 1 || bits > 32)
        return std::nullopt;
    if (bits == 1 && !isSigned)
        return SampleFormat{SampleKind::Bit, bits, zelBit};
    const zelDataType type = integerType(bits, isSigned);
    if (bits == 8 || bits == 16 || bits == 32)
        return SampleFormat{SampleKind::Copy, bits, type};
    if (isSigned)
        return SampleFormat{SampleKind::Signed, bits, type};
    return SampleFormat{palette ? SampleKind::Number : SampleKind::Spread, bits, type};
}

} // namespace

double SampleFormat::factor() const {
    return kind == SampleKind::Spread ? zelDataMax(type) / static_cast<double>(largest(bits)) : 1;
}

std::optional<SampleFormat> sampleFormatOf(int bits, int sampleFormat, bool palette) {
    switch (sampleFormat) {
    case SAMPLEFORMAT_UINT:
    case SAMPLEFORMAT_VOID:
        return integerFormat(bits, false, palette);
    case SAMPLEFORMAT_INT:
        return integerFormat(bits, true, palette);
    case SAMPLEFORMAT_IEEEFP:
        return floatFormat(bits);
    default:
        return std::nullopt;
    }
}

void unpackSamples(const SampleFormat& format, const std::uint8_t* stored, std::size_t count,
                   std::uint8_t* page, std::size_t first) {
    BitReader reader(stored, format.bits);
    switch (format.kind) {
    case SampleKind::Bit:
        return copyBits(page, first, stored, 0, count);
    case SampleKind::Copy: {
        const std::size_t width = zelDataSize(format.type, 1);
        std::memcpy(page + first * width, stored, count * width);
        return;
    }
    case SampleKind::Spread: {
        const std::uint64_t from = largest(format.bits);
        const auto to = static_cast<std::uint64_t>(zelDataMax(format.type));
        return fillIntegers(format.type, page, first, count,
                            [&] { return (reader.next() * to + from / 2) / from; });
    }
    case SampleKind::Number:
        return fillIntegers(format.type, page, first, count, [&] { return reader.next(); });
    case SampleKind::Signed: {
        const std::uint32_t sign = 1U << (format.bits - 1);
        return fillIntegers(format.type, page, first, count,
                            [&] { return (reader.next() ^ sign) - sign; });
    }
    case SampleKind::Float:
        // A half lies in the machine's byte order, unlike other samples that are read bit by bit.
        return fill<float>(page, first, count, [&] {
            if (format.bits != 16)
                return widenFloat(reader.next(), format.bits);
            std::uint16_t half = 0;
            std::memcpy(&half, stored, sizeof half);
            stored += sizeof half;
            return widenFloat(half, format.bits);
        });
    case SampleKind::Unsigned64:
        return fillDoubles<std::uint64_t>(stored, page, first, count);
    case SampleKind::Signed64:
        return fillDoubles<std::int64_t>(stored, page, first, count);
    }
}

void copyBits(std::uint8_t* to, std::size_t toBit, const std::uint8_t* from, std::size_t fromBit,
              std::size_t count) {
    to += toBit / 8;
    from += fromBit / 8;
    const unsigned shiftTo = toBit % 8;
    const unsigned shiftFrom = fromBit % 8;
    if (shiftTo == 0 && shiftFrom == 0) {
        std::memcpy(to, from, (count + 7) / 8);
        return;
    }
    for (std::size_t done = 0; done < count; done += 8) {
        const std::size_t bits = count - done < 8 ? count - done : 8;
        unsigned byte = static_cast<unsigned>(*from << shiftFrom);
        if (shiftFrom + bits > 8)
            byte |= static_cast<unsigned>(from[1] >> (8 - shiftFrom));
        byte &= 0xff00U >> bits & 0xffU;
        const unsigned kept = 0xffU & ~(0xffU >> shiftTo);
        *to = static_cast<std::uint8_t>((*to & kept) | byte >> shiftTo);
        if (shiftTo + bits > 8)
            to[1] = static_cast<std::uint8_t>(byte << (8 - shiftTo));
        to++;
        from++;
    }
}

void swapSamples(std::uint8_t* data, std::size_t bytes, int bits) {
    const auto count = static_cast<tmsize_t>(bytes * 8 / static_cast<std::size_t>(bits));
    switch (bits) {
    case 16:
        return TIFFSwabArrayOfShort(reinterpret_cast<std::uint16_t*>(data), count);
    case 24:
        return TIFFSwabArrayOfTriples(data, count);
    case 32:
        return TIFFSwabArrayOfLong(reinterpret_cast<std::uint32_t*>(data), count);
    case 64:
        return TIFFSwabArrayOfLong8(reinterpret_cast<std::uint64_t*>(data), count);
    default:
        return;
    }
}

} // namespace zeltiff
