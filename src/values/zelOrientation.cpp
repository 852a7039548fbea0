#include <zel/zelOrientation.h>

#include "platform/truncate.h"

#include <cstdint>
#include <utility>

const char zelOrientationIsLow[9] = {1, 0, 0, 1, 1, 0, 0, 1, 1};
const char zelOrientationIsLeft[9] = {1, 1, 0, 0, 1, 1, 0, 0, 1};
const char zelOrientationIsTrans[9] = {0, 0, 0, 0, 0, 1, 1, 1, 1};

namespace {

constexpr zelOrientation flipXorientation[9] = {
    zelLowerRightOrigin, zelUpperRightOrigin, zelUpperLeftOrigin,
    zelLowerLeftOrigin,  zelLowerRightOrigin, zelLeftLowerOrigin,
    zelRightLowerOrigin, zelRightUpperOrigin, zelLeftUpperOrigin,
};
constexpr zelOrientation flipYorientation[9] = {
    zelUpperLeftOrigin,  zelLowerLeftOrigin, zelLowerRightOrigin,
    zelUpperRightOrigin, zelUpperLeftOrigin, zelRightUpperOrigin,
    zelLeftUpperOrigin,  zelLeftLowerOrigin, zelRightLowerOrigin,
};
constexpr zelOrientation transXYorientation[9] = {
    zelLeftLowerOrigin,  zelLeftUpperOrigin,  zelRightUpperOrigin,
    zelRightLowerOrigin, zelLeftLowerOrigin,  zelUpperLeftOrigin,
    zelUpperRightOrigin, zelLowerRightOrigin, zelLowerLeftOrigin,
};

// A place in the tables, whatever the value.
int indexOf(zelOrientation orientation) {
    return orientation >= 0 && orientation <= zelLeftLowerOrigin ? orientation : 0;
}

// Which way two orientations differ.
struct Difference {
    bool low, left, trans;

    Difference(zelOrientation a, zelOrientation b)
        : low(zelOrientationIsLow[indexOf(a)] != zelOrientationIsLow[indexOf(b)]),
          left(zelOrientationIsLeft[indexOf(a)] != zelOrientationIsLeft[indexOf(b)]),
          trans(zelOrientationIsTrans[indexOf(a)] != zelOrientationIsTrans[indexOf(b)]) {}
};

// The way from one orientation to the other: the exchange first, then the flips.
struct Way {
    bool trans, flipX, flipY;

    Way(zelOrientation from, zelOrientation to) {
        const Difference differ(from, to);
        const bool exchanged = zelOrientationIsTrans[indexOf(to)] != 0;
        trans = differ.trans;
        flipX = exchanged ? differ.low : differ.left;
        flipY = exchanged ? differ.left : differ.low;
    }

    zelFlip flips() const {
        return static_cast<zelFlip>((flipX ? zelXFlip : zelNoFlip) |
                                    (flipY ? zelYFlip : zelNoFlip));
    }
};

// Origin of a mirrored extent. Integers wrap, so that no tile of a caller's has undefined
// behaviour.
int mirrored(int size, int from, int extent) {
    return static_cast<int>(static_cast<std::int64_t>(size) - from - extent);
}
float mirrored(int size, float from, float extent) {
    return static_cast<float>(size) - from - extent;
}

template <class T>
void mapTile(const Way& way, zelTile2D<T>& tile, const zelSize& size) {
    if (way.trans) {
        std::swap(tile.x, tile.y);
        std::swap(tile.nx, tile.ny);
    }
    if (way.flipX)
        tile.x = mirrored(size.x, tile.x, tile.nx);
    if (way.flipY)
        tile.y = mirrored(size.y, tile.y, tile.ny);
}

} // namespace

zelOrientation zelMapOrientation(zelOrientation orientation, int flipX, int flipY, int transXY) {
    if (flipX)
        orientation = flipXorientation[indexOf(orientation)];
    if (flipY)
        orientation = flipYorientation[indexOf(orientation)];
    if (transXY)
        orientation = transXYorientation[indexOf(orientation)];
    return orientation;
}

void zelMapFlipTrans(zelOrientation fromOrientation, zelFlip& flip, int& transXY,
                     zelOrientation toOrientation) {
    const Way way(fromOrientation, toOrientation);
    transXY = way.trans;
    flip = way.flips();
}

void zelMapTile(zelOrientation fromOrientation, zelTile2D<int>& tile, zelFlip& flip, int& transXY,
                zelOrientation toOrientation, const zelSize& size) {
    zelMapFlipTrans(fromOrientation, flip, transXY, toOrientation);
    mapTile(Way(fromOrientation, toOrientation), tile, size);
}

void zelMapTile(zelOrientation fromOrientation, zelTile2D<int>& tile, zelOrientation toOrientation,
                const zelSize& size) {
    mapTile(Way(fromOrientation, toOrientation), tile, size);
}

void zelMapTile(zelOrientation fromOrientation, zelTile2D<float>& tile,
                zelOrientation toOrientation, const zelSize& size) {
    mapTile(Way(fromOrientation, toOrientation), tile, size);
}

void zelMapXY(zelOrientation fromOrientation, float& x, float& y, zelOrientation toOrientation,
              const zelSize& size) {
    const Way way(fromOrientation, toOrientation);
    if (way.trans)
        std::swap(x, y);
    // A coordinate names a pixel, and is mirrored as an extent of 1 is. The 1 is taken off the size
    // first: the other order rounds otherwise.
    if (way.flipX)
        x = static_cast<float>(static_cast<std::int64_t>(size.x) - 1) - x;
    if (way.flipY)
        y = static_cast<float>(static_cast<std::int64_t>(size.y) - 1) - y;
}

void zelMapXY(zelOrientation fromOrientation, int& x, int& y, zelOrientation toOrientation,
              const zelSize& size) {
    auto fx = static_cast<float>(x);
    auto fy = static_cast<float>(y);
    zelMapXY(fromOrientation, fx, fy, toOrientation, size);
    x = static_cast<int>(zel::platform::truncateToInt64(fx));
    y = static_cast<int>(zel::platform::truncateToInt64(fy));
}

void zelMapXYSign(zelOrientation fromOrientation, float& x, float& y,
                  zelOrientation toOrientation) {
    const Way way(fromOrientation, toOrientation);
    if (way.trans)
        std::swap(x, y);
    if (way.flipX)
        x = -x;
    if (way.flipY)
        y = -y;
}

int zelOrientationIsMirror(zelOrientation fromOrientation, zelOrientation toOrientation) {
    const Difference differ(fromOrientation, toOrientation);
    return differ.trans ^ differ.low ^ differ.left;
}

void zelMapSize(zelOrientation fromOrientation, zelSize& size, zelOrientation toOrientation) {
    zelMapSize(fromOrientation, size.x, size.y, toOrientation);
}

void zelMapSize(zelOrientation fromOrientation, int& sx, int& sy, zelOrientation toOrientation) {
    if (Difference(fromOrientation, toOrientation).trans)
        std::swap(sx, sy);
}
