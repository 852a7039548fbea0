#include "values/element.h"

#include "platform/truncate.h"

#include <zel/zelBitArray.h>

#include <cstring>
#include <limits>
#include <type_traits>

namespace zel {

namespace {

// The bit with a 64-bit index, through the accessor of bits, whose index is an int.
zelBitArray bitAt(void* data, std::int64_t index) {
    zelBitArray bits(static_cast<unsigned char*>(data) + index / 8);
    bits[static_cast<int>(index % 8)];
    return bits;
}

template <class T>
constexpr auto bytesOf = static_cast<std::int64_t>(sizeof(T));

// Elements are copied by bytes, since nobody promises that they are aligned.
template <class T>
double load(const void* data, std::int64_t index) {
    T element;
    std::memcpy(&element, static_cast<const char*>(data) + index * bytesOf<T>, sizeof element);
    return static_cast<double>(element);
}

template <class T>
T fromNumber(double value) {
    if constexpr (std::is_integral_v<T>)
        return static_cast<T>(platform::truncateToInt64(value));
    else
        return static_cast<T>(value);
}

template <class T>
void store(void* data, std::int64_t index, double value) {
    const T element = fromNumber<T>(value);
    std::memcpy(static_cast<char*>(data) + index * bytesOf<T>, &element, sizeof element);
}

// 0 for a value that is not a type of whole bytes.
int bytesPerElement(zelDataType type) {
    switch (type) {
    case zelUChar:
    case zelChar:
        return 1;
    case zelUShort:
    case zelShort:
        return 2;
    case zelUInt:
    case zelInt:
    case zelFloat:
        return 4;
    case zelDouble:
        return 8;
    default:
        return 0;
    }
}

} // namespace

std::int64_t elementBytes(zelDataType type, std::int64_t count) {
    if (count < 0)
        return 0;
    if (type == zelBit)
        return count / 8 + (count % 8 != 0 ? 1 : 0);
    const int bytes = bytesPerElement(type);
    if (bytes != 0 && count > std::numeric_limits<std::int64_t>::max() / bytes)
        return -1;
    return count * bytes;
}

double loadElement(const void* data, zelDataType type, std::int64_t index) {
    switch (type) {
    case zelBit:
        return bitAt(const_cast<void*>(data), index);
    case zelUChar:
        return load<std::uint8_t>(data, index);
    case zelChar:
        return load<std::int8_t>(data, index);
    case zelUShort:
        return load<std::uint16_t>(data, index);
    case zelShort:
        return load<std::int16_t>(data, index);
    case zelUInt:
        return load<std::uint32_t>(data, index);
    case zelInt:
        return load<std::int32_t>(data, index);
    case zelFloat:
        return load<float>(data, index);
    case zelDouble:
        return load<double>(data, index);
    default:
        return 0.0;
    }
}

void storeElement(void* data, zelDataType type, std::int64_t index, double value) {
    switch (type) {
    case zelBit:
        bitAt(data, index) = fromNumber<std::int32_t>(value);
        break;
    case zelUChar:
        store<std::uint8_t>(data, index, value);
        break;
    case zelChar:
        store<std::int8_t>(data, index, value);
        break;
    case zelUShort:
        store<std::uint16_t>(data, index, value);
        break;
    case zelShort:
        store<std::int16_t>(data, index, value);
        break;
    case zelUInt:
        store<std::uint32_t>(data, index, value);
        break;
    case zelInt:
        store<std::int32_t>(data, index, value);
        break;
    case zelFloat:
        store<float>(data, index, value);
        break;
    case zelDouble:
        store<double>(data, index, value);
        break;
    default:
        break;
    }
}

} // namespace zel
