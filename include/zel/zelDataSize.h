#ifndef ZEL_DATA_SIZE_H
#define ZEL_DATA_SIZE_H

#include <zel/zelExport.h>

/// The type of a pixel element. Each is a single bit, so that an int holds a set of types. 0 stands
/// for no type.
enum zelDataType : int {
    zelBit = 0x001,    ///< one bit, 8 to a byte, the first in the byte's top bit
    zelUChar = 0x002,  ///< unsigned 8-bit
    zelChar = 0x004,   ///< signed 8-bit
    zelUShort = 0x008, ///< unsigned 16-bit
    zelShort = 0x010,  ///< signed 16-bit
    zelUInt = 0x020,   ///< unsigned 32-bit
    zelInt = 0x040,    ///< signed 32-bit
    zelULong = zelUInt,
    zelLong = zelInt,
    zelFloat = 0x080, ///< IEEE 754 single
    zelDouble = 0x100 ///< IEEE 754 double
};

/// Flags of zelDataClosestType.
enum : int {
    zelDataWantSigned = 1, ///< the result is signed, even if the wanted type is not
    zelDataAnySign = 2,    ///< the result may be signed or not; overrides zelDataWantSigned
    zelDataDemote = 4      ///< do not widen: if the wanted type is not there, only smaller ones
};

// Pure functions, for any thread.

extern "C" {

/// Bytes that `count` consecutive elements take; bits are rounded up to whole bytes. 0 for a value
/// that is not one type and for a count below 0; the largest unsigned for a size beyond it.
ZEL_API unsigned zelDataSize(zelDataType type, int count);

/// The first type of the set `typeMask`, from zelBit up, that holds all whole numbers from `minVal`
/// to `maxVal`; fractions are cut off and do not call for a floating type. 0 if there is none.
ZEL_API zelDataType zelDataTypeFromRange(double minVal, double maxVal, int typeMask);

/// The smallest (most negative) and the largest finite value of a type; 0 for any other value.
ZEL_API double zelDataMin(zelDataType type);
ZEL_API double zelDataMax(zelDataType type);

/// Non-zero (not always 1) for a signed type; the floating types are signed.
ZEL_API int zelDataIsSigned(zelDataType type);

/// Non-zero (not always 1) for an integral type.
ZEL_API int zelDataIsIntegral(zelDataType type);

/// The type of the set `allowed` that serves best for data of type `desired`: the type itself, else
/// the smallest of the same sign class that holds all its values, else the largest smaller type of
/// that class, else the largest smaller type at all. 0 if none of these is allowed.
ZEL_API zelDataType zelDataClosestType(zelDataType desired, int allowed, int flags);

} // extern "C"

#endif
