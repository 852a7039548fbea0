#include "convert/relayout.h"
#include "convert/roads.h"

#include <zel/zelConvIter.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

using zel::convert::Feed;
using zel::convert::maxSlots;
using zel::convert::Road;
using zel::convert::RowShape;
using zel::convert::Side;

// Indexes are worked out in 64 bits and held in int, which every index of a block fits.
int index(std::int64_t value) {
    return static_cast<int>(value);
}

// The base-2 logarithm of an element's size in bytes; -1 for what has no such size.
int zelDataShift(const zelDataType type) {
    const unsigned size = zelDataSize(type, 1);
    return std::has_single_bit(size) && size <= 16 ? std::countr_zero(size) : -1;
}

// Bytes of `count` elements of a type whose runs take whole bytes.
std::ptrdiff_t bytesOf(zelDataType type, std::int64_t count) {
    return static_cast<std::ptrdiff_t>(type == zelBit ? count / 8 : count << zelDataShift(type));
}

bool isPairOf(zelDataType a, zelDataType b, zelDataType first, zelDataType second) {
    return (a == first || a == second) && (b == first || b == second);
}

// Asks for the first lines of a row. A long row that does not follow the one before would otherwise
// begin with a wait for memory.
void fetchAhead(const void* data, std::int64_t first, std::int64_t elementBytes) {
    constexpr int line = 64;
    const auto* start = static_cast<const std::byte*>(data) + first * elementBytes;
    for (int i = 0; i < 4; ++i)
        __builtin_prefetch(start + i * line);
}

void walkRows(zelConvIter& walk, const RowShape& shape, zelDataType to, zelDataType from,
              Road road) {
    if (road == nullptr)
        return;
    const bool ahead = shape.count >= 1024 && shape.toStep == 1 && shape.fromStep == 1 &&
                       to != zelBit && from != zelBit;
    for (bool more = true; more;) {
        const int toFirst = walk.destIndex();
        const int fromFirst = walk.sourceIndex();
        more = walk.nextRow() != 0;
        if (more && ahead) {
            fetchAhead(shape.to, walk.destIndex(), zelDataSize(to, 1));
            fetchAhead(shape.from, walk.sourceIndex(), zelDataSize(from, 1));
        }
        road(shape, toFirst, fromFirst);
    }
}

} // namespace

zelConvIter::zelConvIter(zelConverter& dest, zelConverter& source) : dst(dest), src(source) {}

int zelConvIter::destIndex() const {
    return yiD;
}

int zelConvIter::sourceIndex() const {
    return yiS;
}

void zelConvIter::convert(const zelTile3D<int>& area) {
    com = area;
    // Outside the areas, where a box without elements may lie, there are no indexes.
    if (com.nx < 1 || com.ny < 1 || com.nz < 1 || reset() == 0 || fastCopy() != 0 ||
        changeLayout() != 0)
        return;
    joinRows();
    switch (dst.type) {
    case zelBit:
        return BitSwitch();
    case zelUChar:
        return uCharSwitch();
    case zelChar:
        return charSwitch();
    case zelUShort:
        return uShortSwitch();
    case zelShort:
        return shortSwitch();
    case zelUInt:
        return uIntSwitch();
    case zelInt:
        return intSwitch();
    case zelFloat:
        return floatSwitch();
    case zelDouble:
        return doubleSwitch();
    }
}

int zelConvIter::reset() {
    const auto cornerIndex = [this](const zelConverter& side) {
        const std::int64_t mx = side.flipX != 0 ? std::int64_t{side.area.nx} - 1 : 0;
        const std::int64_t my = side.flipY != 0 ? std::int64_t{side.area.ny} - 1 : 0;
        return index(side.stride.x * (std::int64_t{com.x} - side.area.x - mx) +
                     side.stride.y * (std::int64_t{com.y} - side.area.y - my) +
                     side.stride.z * (std::int64_t{com.z} - side.area.z));
    };
    baseD = cornerIndex(dst);
    baseS = cornerIndex(src);
    collapse = src.fill == 0 && dst.fill == 0 && dst.order == zelInterleaved &&
               src.order == zelInterleaved && sameXdim() != 0 && sameChans() != 0;
    if (collapse != 0) {
        sxD = sxS = src.flipX != 0 ? -1 : 1;
        nx = index(std::int64_t{com.nx} * src.cSize);
        // A walk downwards begins at the last slot of its first pixel.
        if (src.flipX != 0) {
            baseD = index(std::int64_t{baseD} + dst.cSize - 1);
            baseS = index(std::int64_t{baseS} + dst.cSize - 1);
        }
    } else {
        sxD = dst.stride.x;
        sxS = src.stride.x;
        nx = com.nx;
    }
    zi = 0;
    yi = 0;
    ci = -1;
    return nextChan();
}

// Rows, and then planes, that follow each other on both sides become one row.
void zelConvIter::joinRows() {
    const auto follow = [this](int strideD, int strideS) {
        return std::int64_t{sxD} * nx == strideD && std::int64_t{sxS} * nx == strideS;
    };
    if (com.ny > 1 && follow(dst.stride.y, src.stride.y)) {
        nx = index(std::int64_t{nx} * com.ny);
        com.ny = 1;
    }
    if (com.nz > 1 && follow(dst.stride.z, src.stride.z)) {
        nx = index(std::int64_t{nx} * com.nz);
        com.nz = 1;
    }
}

// Where memory does not run alike on both sides. Gives 1 if the job is done, as `fastCopy` does; if
// not, the walk stands where it stood.
int zelConvIter::changeLayout() {
    if (src.fill != 0 || dst.fill != 0 || sxD == 0 || sxS == 0 || (sxD == 1 && sxS == 1) ||
        std::max(dst.cSize, src.cSize) > maxSlots)
        return 0;
    std::array<Feed, maxSlots> feeds;
    std::size_t count = 0;
    for (int slot = 0; slot < dst.cSize; ++slot) {
        const int channel = channelOf(dst, slot);
        const int source = channel < 0 ? -1 : sourceSlot(channel);
        if (source >= 0)
            feeds[count++] = {slot, source};
    }
    // With `collapse`, a walk downwards begins at the last slot of a pixel.
    const int ahead = collapse != 0 && src.flipX != 0 ? dst.cSize - 1 : 0;
    const auto describe = [&]<class Byte>(const zelConverter& side, int base, Byte* data) {
        const auto size = static_cast<std::ptrdiff_t>(zelDataSize(side.type, 1));
        return Side<Byte>{data + (base - ahead) * size, side.stride.x * size,  side.stride.y * size,
                          side.stride.z * size,         side.cStride * size,   side.cSize,
                          side.order == zelInterleaved, side.transposeXY != 0, side.type};
    };
    return zel::convert::relayout({describe(dst, baseD, static_cast<std::byte*>(dst.data)),
                                   describe(src, baseS, static_cast<const std::byte*>(src.data)),
                                   com.nx, com.ny, com.nz,
                                   std::span<const Feed>(feeds.data(), count)})
               ? 1
               : 0;
}

int zelConvIter::channelOf(const zelConverter& area, int slot) {
    return area.cList != nullptr ? area.cList[slot] : index(std::int64_t{area.cStart} + slot);
}

// The first slot of the source that holds the channel, or -1.
int zelConvIter::sourceSlot(int channel) const {
    if (src.cList == nullptr) {
        const std::int64_t slot = std::int64_t{channel} - src.cStart;
        return slot >= 0 && slot < src.cSize ? index(slot) : -1;
    }
    for (int slot = 0; slot < src.cSize; ++slot) {
        if (src.cList[slot] == channel)
            return slot;
    }
    return -1;
}

int zelConvIter::nextChan() {
    for (;;) {
        ++ci;
        if (ci >= dst.cSize || (ci > 0 && collapse != 0))
            return 0;
        const int channel = channelOf(dst, ci);
        const int slot = channel < 0 ? -1 : sourceSlot(channel);
        if (slot < 0)
            continue;
        ziD = yiD = index(baseD + std::int64_t{ci} * dst.cStride);
        ziS = yiS = index(baseS + std::int64_t{slot} * src.cStride);
        return 1;
    }
}

int zelConvIter::nextRow() {
    if (++yi < com.ny) {
        yiD = index(std::int64_t{yiD} + dst.stride.y);
        yiS = index(std::int64_t{yiS} + src.stride.y);
        return 1;
    }
    yi = 0;
    if (++zi < com.nz) {
        yiD = ziD = index(std::int64_t{ziD} + dst.stride.z);
        yiS = ziS = index(std::int64_t{ziS} + src.stride.z);
        return 1;
    }
    zi = 0;
    return nextChan();
}

int zelConvIter::sameType() const {
    return dst.type == src.type || isPairOf(dst.type, src.type, zelUChar, zelChar) ||
           isPairOf(dst.type, src.type, zelUShort, zelShort) ||
           isPairOf(dst.type, src.type, zelUInt, zelInt);
}

int zelConvIter::sameXdim() const {
    return (src.flipX != 0) == (dst.flipX != 0) && src.transposeXY == 0 && dst.transposeXY == 0;
}

// Moving all slots at once has to do what feeding them one by one does. So slots without a
// channel, which are skipped, and a channel held twice, whose first slot feeds both, count as
// different.
int zelConvIter::sameChans() const {
    if (src.cSize != dst.cSize)
        return 0;
    if (src.cList == nullptr && dst.cList == nullptr)
        return src.cStart == dst.cStart && dst.cStart >= 0;
    for (int slot = 0; slot < dst.cSize; ++slot) {
        const int channel = channelOf(dst, slot);
        if (channel < 0 || sourceSlot(channel) != slot)
            return 0;
    }
    return 1;
}

int zelConvIter::sameXY() const {
    return (dst.flipY != 0) == (src.flipY != 0) && com.nx == dst.area.nx && com.nx == src.area.nx &&
           ((com.ny == dst.area.ny && com.ny == src.area.ny) || com.nz == 1);
}

int zelConvIter::sameZ() const {
    return com.ny == dst.area.ny && com.ny == src.area.ny && com.nz == dst.area.nz &&
           com.nz == src.area.nz;
}

int zelConvIter::fastCopy() {
    // A side whose elements do not lie apart has no block to copy.
    if (src.fill != 0 || dst.fill != 0 || src.stride.x == 0 || dst.stride.x == 0)
        return 0;
    if (sameXdim() == 0 || sameType() == 0 || zelDataShift(dst.type) < 0)
        return 0;
    const bool interleaved = dst.order == zelInterleaved && src.order == zelInterleaved;
    if (dst.type == zelBit && !(interleaved && dst.cSize % 8 == 0 && src.cSize % 8 == 0))
        return 0;

    if (interleaved) {
        if (sameChans() == 0)
            return 0;
        sameXY() != 0 ? wholeCopy() : rowCopy();
        return 1;
    }
    if (dst.order == zelInterleaved || src.order == zelInterleaved)
        return 0;
    if (dst.order != src.order || sameXY() == 0) {
        rowCopy();
        return 1;
    }
    const bool separate = dst.order == zelSeparate;
    const bool wholePlanes = !separate || sameZ() != 0;
    if (wholePlanes && sameChans() != 0)
        wholeCopy();
    else if (separate && (com.nz == 1 || (dst.cSize == 1 && src.cSize == 1)))
        chanCopy();
    else
        rowCopy();
    return 1;
}

// Bytes from the data's start to the block of a walk that begins at `start`: to the lowest index of
// a row, or of several rows.
std::ptrdiff_t zelConvIter::blockOffset(const zelConverter& side, int start,
                                        bool severalRows) const {
    std::int64_t first = start;
    if (side.flipX != 0)
        first -= std::int64_t{nx} - 1;
    if (severalRows && side.flipY != 0)
        first += std::int64_t{side.stride.y} * (com.ny - 1);
    return bytesOf(side.type, first);
}

void zelConvIter::copyBlock(std::int64_t count) {
    std::memcpy(static_cast<std::byte*>(dst.data) + blockOffset(dst, yiD, true),
                static_cast<const std::byte*>(src.data) + blockOffset(src, yiS, true),
                static_cast<std::size_t>(bytesOf(dst.type, count)));
}

// All rows of a plane at a time: they are too short for much to be done between them.
void zelConvIter::rowCopy() {
    const auto length = static_cast<std::size_t>(bytesOf(dst.type, nx));
    const std::ptrdiff_t stepD = bytesOf(dst.type, dst.stride.y);
    const std::ptrdiff_t stepS = bytesOf(src.type, src.stride.y);
    do {
        auto* to = static_cast<std::byte*>(dst.data) + blockOffset(dst, yiD, false);
        const auto* from = static_cast<const std::byte*>(src.data) + blockOffset(src, yiS, false);
        for (std::ptrdiff_t row = 0; row < com.ny; ++row)
            std::memcpy(to + row * stepD, from + row * stepS, length);
        yi = com.ny - 1;
    } while (nextRow() != 0);
}

void zelConvIter::chanCopy() {
    do {
        copyBlock(std::int64_t{com.nx} * com.ny * com.nz);
    } while (nextChan() != 0);
}

void zelConvIter::wholeCopy() {
    copyBlock(std::int64_t{com.nx} * com.ny * com.nz * dst.cSize);
}

void zelConvIter::BitSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToBit(src.type));
}

// The sign of an integer destination never matters, since the low bits are stored.

void zelConvIter::uCharSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToInteger8(src.type));
}

void zelConvIter::charSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToInteger8(src.type));
}

void zelConvIter::uShortSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToInteger16(src.type));
}

void zelConvIter::shortSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToInteger16(src.type));
}

void zelConvIter::uIntSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToInteger32(src.type));
}

void zelConvIter::intSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToInteger32(src.type));
}

void zelConvIter::floatSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToFloat(src.type));
}

void zelConvIter::doubleSwitch() {
    walkRows(*this, {dst.data, src.data, sxD, sxS, nx}, dst.type, src.type,
             zel::convert::roadToDouble(src.type));
}
