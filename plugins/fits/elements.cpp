#include "elements.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace zelfits {

namespace {

struct TypeRow {
    zelDataType type;
    int bitpix;
    double zero;
};

// Integers of the other signedness are stored moved by half the range.
constexpr TypeRow typeRows[] = {
    {zelUChar, 8, 0}, {zelChar, 8, -128},         {zelShort, 16, 0},  {zelUShort, 16, 32768},
    {zelInt, 32, 0},  {zelUInt, 32, 2147483648.}, {zelFloat, -32, 0}, {zelDouble, -64, 0},
};

std::uint8_t swapped(std::uint8_t bits) {
    return bits;
}
std::uint16_t swapped(std::uint16_t bits) {
    return __builtin_bswap16(bits);
}
std::uint32_t swapped(std::uint32_t bits) {
    return __builtin_bswap32(bits);
}
std::uint64_t swapped(std::uint64_t bits) {
    return __builtin_bswap64(bits);
}

// The stored bits are big-endian.
template <typename Bits>
Bits fromBigEndian(Bits bits) {
    return std::endian::native == std::endian::little ? swapped(bits) : bits;
}

template <typename Bits>
void exchangeHalves(std::uint8_t* elements, std::size_t bytes) {
    for (std::size_t at = 0; at < bytes; at += sizeof(Bits)) {
        Bits bits;
        std::memcpy(&bits, elements + at, sizeof bits);
        bits = std::rotl(bits, int{4 * sizeof bits});
        std::memcpy(elements + at, &bits, sizeof bits);
    }
}

// Halves are exchanged from the smallest on: for whole elements at once there is no instruction
// that every processor has.
template <typename Bits>
void turnBigEndian(std::uint8_t* elements, std::size_t bytes) {
    if constexpr (std::endian::native == std::endian::little && sizeof(Bits) > 1) {
        exchangeHalves<std::uint16_t>(elements, bytes);
        if constexpr (sizeof(Bits) > 2)
            exchangeHalves<std::uint32_t>(elements, bytes);
        if constexpr (sizeof(Bits) > 4)
            exchangeHalves<std::uint64_t>(elements, bytes);
    }
}

template <typename Bits>
void flipSigns(std::uint8_t* elements, std::size_t bytes) {
    constexpr Bits sign = static_cast<Bits>(Bits{1} << (8 * sizeof(Bits) - 1));
    for (std::size_t at = 0; at < bytes; at += sizeof(Bits)) {
        Bits bits;
        std::memcpy(&bits, elements + at, sizeof bits);
        bits = static_cast<Bits>(bits ^ fromBigEndian(sign));
        std::memcpy(elements + at, &bits, sizeof bits);
    }
}

template <typename Bits>
void moveBits(const std::uint8_t* from, std::int64_t count, std::uint8_t* to, bool flipSign) {
    constexpr std::size_t piece = 8192; // which stays in the nearest cache
    for (auto left = static_cast<std::size_t>(count) * sizeof(Bits); left > 0;) {
        const std::size_t bytes = std::min(left, piece);
        if (from != to)
            std::memcpy(to, from, bytes);
        if (flipSign)
            flipSigns<Bits>(to, bytes);
        turnBigEndian<Bits>(to, bytes);
        from += bytes;
        to += bytes;
        left -= bytes;
    }
}

// `from` and `to` may be the same place, and both roads are alike but for where the sign is.
void moveElements(int bytes, const std::uint8_t* from, std::int64_t count, std::uint8_t* to,
                  bool flipSign) {
    switch (bytes) {
    case 1:
        return moveBits<std::uint8_t>(from, count, to, flipSign);
    case 2:
        return moveBits<std::uint16_t>(from, count, to, flipSign);
    case 4:
        return moveBits<std::uint32_t>(from, count, to, flipSign);
    default:
        return moveBits<std::uint64_t>(from, count, to, flipSign);
    }
}

template <typename Stored, typename Bits, typename Result>
void compute(const std::uint8_t* stored, std::int64_t count, Result* page, const Storage& storage) {
    for (std::int64_t i = 0; i < count; i++) {
        Bits bits;
        std::memcpy(&bits, stored + i * std::int64_t{sizeof bits}, sizeof bits);
        const auto number = std::bit_cast<Stored>(fromBigEndian(bits));
        bool blank = false;
        if constexpr (std::numeric_limits<Stored>::is_integer)
            blank = storage.blank && *storage.blank == static_cast<std::int64_t>(number);
        page[i] =
            blank ? std::numeric_limits<Result>::quiet_NaN()
                  : static_cast<Result>(static_cast<double>(number) * storage.scale + storage.zero);
    }
}

template <typename Result>
void computeAny(const std::uint8_t* stored, std::int64_t count, Result* page,
                const Storage& storage) {
    switch (storage.bitpix) {
    case 8:
        return compute<std::uint8_t, std::uint8_t>(stored, count, page, storage);
    case 16:
        return compute<std::int16_t, std::uint16_t>(stored, count, page, storage);
    case 32:
        return compute<std::int32_t, std::uint32_t>(stored, count, page, storage);
    case 64:
        return compute<std::int64_t, std::uint64_t>(stored, count, page, storage);
    case -32:
        return compute<float, std::uint32_t>(stored, count, page, storage);
    default:
        return compute<double, std::uint64_t>(stored, count, page, storage);
    }
}

} // namespace

Elements::Elements(const Storage& storage, bool raw) : storage_(storage) {
    if (raw) {
        storage_.scale = 1;
        storage_.zero = 0;
        storage_.blank.reset();
    }
    for (const TypeRow& row : typeRows)
        if (storage_.scale == 1 && row.bitpix == storage_.bitpix && row.zero == storage_.zero) {
            type_ = row.type;
            signFlipped_ = row.zero != 0;
            return;
        }
    computed_ = true;
    // A float holds every number of up to 16 bits exactly.
    type_ = storage_.bitpix == 8 || storage_.bitpix == 16 || storage_.bitpix == -32 ? zelFloat
                                                                                    : zelDouble;
}

void Elements::decode(const std::uint8_t* stored, std::int64_t count, void* page) const {
    if (!computed_)
        moveElements(storedBytes(), stored, count, static_cast<std::uint8_t*>(page), signFlipped_);
    else if (type_ == zelFloat)
        computeAny(stored, count, static_cast<float*>(page), storage_);
    else
        computeAny(stored, count, static_cast<double*>(page), storage_);
}

void Elements::encode(const void* page, std::int64_t count, std::uint8_t* stored) const {
    moveElements(storedBytes(), static_cast<const std::uint8_t*>(page), count, stored, false);
    // The sign of a big-endian number is in its first byte.
    if (signFlipped_)
        for (std::int64_t i = 0; i < count; i++)
            stored[i * storedBytes()] ^= 0x80;
}

std::optional<Storage> storageFor(zelDataType type) {
    for (const TypeRow& row : typeRows)
        if (row.type == type)
            return Storage{row.bitpix, 1, row.zero, {}};
    return std::nullopt;
}

} // namespace zelfits
