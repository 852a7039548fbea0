#ifndef ZEL_ORIENTATION_H
#define ZEL_ORIENTATION_H

#include <zel/zelCoord.h>
#include <zel/zelExport.h>
#include <zel/zelTile.h>

/// The corner at which an image's first pixel lies. Where the side is named first, the x axis runs
/// along the vertical edge: x and y are exchanged. 0 stands for an orientation not chosen; every
/// function here takes it, and any value outside the enumeration, as zelLowerLeftOrigin.
enum zelOrientation : int {
    zelUpperLeftOrigin = 1,
    zelUpperRightOrigin = 2,
    zelLowerRightOrigin = 3,
    zelLowerLeftOrigin = 4,
    zelLeftUpperOrigin = 5,
    zelRightUpperOrigin = 6,
    zelRightLowerOrigin = 7,
    zelLeftLowerOrigin = 8
};

/// Axes to reverse, as bits; both together are 3.
enum zelFlip : int {
    zelNoFlip = 0,
    zelXFlip = 1,
    zelYFlip = 2
};

/// By orientation, 0 to 8: 1 if the origin is at the lower edge, at the left edge, if x and y are
/// exchanged.
extern ZEL_API const char zelOrientationIsLow[9];
extern ZEL_API const char zelOrientationIsLeft[9];
extern ZEL_API const char zelOrientationIsTrans[9];

// Pure functions, for any thread. Where a function takes the image's size, it is the size in the
// frame of `toOrientation`. The exchange of x and y always comes first; the flips are stated in the
// axes of `toOrientation`.

/// The orientation after the x axis is reversed, then the y axis, then x and y are exchanged, each
/// if its argument is not 0; without any of these, the given value as it is.
ZEL_API zelOrientation zelMapOrientation(zelOrientation orientation, int flipX, int flipY,
                                         int transXY);

/// The flips and the exchange (`transXY` 1 or 0) that lead from one orientation to the other.
ZEL_API void zelMapFlipTrans(zelOrientation fromOrientation, zelFlip& flip, int& transXY,
                             zelOrientation toOrientation);

/// Moves a tile to the other orientation's frame, and tells how. Extents keep their sign and the
/// origin stays the tile's smallest corner.
ZEL_API void zelMapTile(zelOrientation fromOrientation, zelTile2D<int>& tile, zelFlip& flip,
                        int& transXY, zelOrientation toOrientation, const zelSize& size);
ZEL_API void zelMapTile(zelOrientation fromOrientation, zelTile2D<int>& tile,
                        zelOrientation toOrientation, const zelSize& size);
ZEL_API void zelMapTile(zelOrientation fromOrientation, zelTile2D<float>& tile,
                        zelOrientation toOrientation, const zelSize& size);

/// Moves the coordinates of a pixel. Those of type int are worked out as floats: they are exact up
/// to 2^24.
ZEL_API void zelMapXY(zelOrientation fromOrientation, float& x, float& y,
                      zelOrientation toOrientation, const zelSize& size);
ZEL_API void zelMapXY(zelOrientation fromOrientation, int& x, int& y, zelOrientation toOrientation,
                      const zelSize& size);

/// Moves a direction, or a difference of two coordinates.
ZEL_API void zelMapXYSign(zelOrientation fromOrientation, float& x, float& y,
                          zelOrientation toOrientation);

/// 1 if the two orientations are mirror images of each other, 0 if a rotation leads from one to the
/// other.
ZEL_API int zelOrientationIsMirror(zelOrientation fromOrientation, zelOrientation toOrientation);

/// Moves a size: exchanges x and y if just one of the orientations has them exchanged.
ZEL_API void zelMapSize(zelOrientation fromOrientation, zelSize& size,
                        zelOrientation toOrientation);
ZEL_API void zelMapSize(zelOrientation fromOrientation, int& sx, int& sy,
                        zelOrientation toOrientation);

#endif
