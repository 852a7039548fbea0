#include "kit/bits.h"

namespace zelkit {

using Byte = std::uint8_t;

void moveBits(Byte* to, std::int64_t toBit, const Byte* from, std::int64_t fromBit,
              std::int64_t count, Byte flip) {
    const auto moveOne = [&] {
        setBit(to, toBit++, getBit(from, fromBit++) ^ (flip & 1));
        count--;
    };
    while (count > 0 && toBit % 8 != 0)
        moveOne();
    const std::int64_t whole = count / 8;
    const int shift = static_cast<int>(fromBit % 8);
    const Byte* const source = from + fromBit / 8;
    Byte* const target = to + toBit / 8;
    // Two loops, so that the one without a shift reads nothing behind the last bit.
    if (shift == 0)
        for (std::int64_t i = 0; i < whole; i++)
            target[i] = static_cast<Byte>(source[i] ^ flip);
    else
        for (std::int64_t i = 0; i < whole; i++)
            target[i] =
                static_cast<Byte>((source[i] << shift | source[i + 1] >> (8 - shift)) ^ flip);
    toBit += whole * 8;
    fromBit += whole * 8;
    count -= whole * 8;
    while (count > 0)
        moveOne();
}

} // namespace zelkit
