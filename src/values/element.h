#ifndef ZEL_VALUES_ELEMENT_H
#define ZEL_VALUES_ELEMENT_H

#include <zel/zelDataSize.h>

#include <cstdint>

namespace zel {

/// Bytes that `count` consecutive elements take: 0 for a value that is not one type and for a count
/// below 0, -1 if 64 bits do not hold the size.
std::int64_t elementBytes(zelDataType type, std::int64_t count);

/// Element `index` of packed elements as a number, exact; 0.0 for a value that is not one type.
/// Elements may lie at any address.
double loadElement(const void* data, zelDataType type, std::int64_t index);

/// Stores a number as element `index` of packed elements. An integer type gets the low bits of the
/// number cut toward zero to 64 bits; a bit is set if the low 32 bits of that are not 0. Nothing is
/// stored for a value that is not one type. Elements may lie at any address.
void storeElement(void* data, zelDataType type, std::int64_t index, double value);

} // namespace zel

#endif
