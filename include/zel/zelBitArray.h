#ifndef ZEL_BIT_ARRAY_H
#define ZEL_BIT_ARRAY_H

#include <zel/zelExport.h>

/// Makes packed bits look like an array of int: `bits[i]` is read as 0 or 1 and written with any
/// int. Bit i lies in byte i / 8 at bit 7 - (i mod 8), so bit 0 is the top bit of the first byte.
///
/// The object owns nothing; the bytes must outlive it. Nothing is checked against a length. It
/// belongs to one thread at a time, and a write rewrites the whole byte around its bit.
class ZEL_API zelBitArray {
public:
    /// An array whose bit 0 is the top bit of the byte at `p`.
    zelBitArray(void* p) : data(static_cast<unsigned char*>(p)) {}
    zelBitArray(const zelBitArray&) = default;
    /// Copies are made by construction alone: `a[i] = b[j]` would otherwise copy the accessor
    /// and not the bit.
    zelBitArray& operator=(const zelBitArray&) = delete;

    /// Takes bit `i` in hand and gives this object, to be read or written.
    zelBitArray& operator[](int i) {
        sub = i;
        return *this;
    }

    /// The bit in hand: 0 or 1.
    operator int() const { return (byte() >> shift()) & 1; }

    /// Sets the bit in hand if `value` is not 0 and clears it otherwise; the other seven bits of
    /// its byte stay.
    zelBitArray& operator=(int value) {
        const auto bit = static_cast<unsigned char>(1 << shift());
        byte() = static_cast<unsigned char>(value != 0 ? byte() | bit : byte() & ~bit);
        return *this;
    }

private:
    unsigned char& byte() const { return data[sub >> 3]; }
    int shift() const { return ~sub & 7; }

    unsigned char* data;
    int sub = 0;
};

#endif
