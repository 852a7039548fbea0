#ifndef ZEL_CONVERTER_H
#define ZEL_CONVERTER_H

#include <zel/zelColor.h>
#include <zel/zelCoord.h>
#include <zel/zelDataSize.h>
#include <zel/zelExport.h>
#include <zel/zelOrientation.h>
#include <zel/zelTile.h>

class zelPixel;

/// How much of a box a source writes, given the hole in it.
enum zelFillMode : int {
    zelFillAll = 0,  ///< the whole box
    zelFillSome = 1, ///< the box except the hole
    zelFillNone = 2, ///< nothing: the box lies wholly in the hole
};

/// Describes one area of pixel data: a box of elements in memory, and where that box lies in a
/// space of x, y, z and channel that both sides of a conversion share. `dst = src` does not copy
/// the description but converts the pixel data that both areas cover.
///
/// Coordinates of area, clip and mask are those of the shared space; flips and the exchange of x
/// and y only say how memory runs against it. Distances count elements, and a block holds fewer
/// than 2^31 of them and lies at an address that suits their type. `zelBit` elements are packed as
/// `zelBitArray` has them, with nothing inserted between rows, channels or planes.
///
/// Memory outermost first, without an exchange of x and y: `zelInterleaved` z, y, x, channel;
/// `zelSequential` z, y, channel, x; `zelSeparate` z, channel, y, x. With it, x and y change
/// places.
///
/// A description owns neither the data nor the channel list, which must outlive it; copies made
/// by the copy constructor point at the same memory. Nothing here fails or reports. A description
/// belongs to one thread at a time.
class ZEL_API zelConverter {
public:
    /// Describes nothing yet: every field is set, and the area is empty.
    zelConverter() = default;
    /// Describes a block, as `init` with the same parameters.
    zelConverter(void* dp, zelDataType ty, zelOrder ord, int nc, const int* chans, int nx, int ny,
                 int nz, int x, int y, int z, int c);
    /// Describes a constant pixel, as `init` with the same parameters.
    zelConverter(const zelPixel& val, const zelTile3D<int>* fillMask, const int* chans, int coff);
    zelConverter(const zelConverter& other) = default;
    ~zelConverter() = default;

    /// Describes a block of `nx` x `ny` x `nz` points at `x`, `y`, `z` with `nc` channel slots at
    /// `dp`: type `ty`, order `ord` (with `nc` of 1 or less always `zelSeparate`). Slot i holds
    /// channel `chans[i]`, where an entry below 0 marks a slot without a channel, or channel
    /// `c` + i if `chans` is null. Flips, exchange, clip and mask are taken off. An order
    /// outside the three leaves strides of 0.
    void init(void* dp, zelDataType ty, zelOrder ord, int nc, const int* chans, int nx, int ny,
              int nz, int x, int y, int z, int c);

    /// Describes a constant pixel: a source with the value of `val` at every point, without
    /// bounds of its own, less the hole `fillMask` (null for none). Element i of the pixel holds
    /// channel `chans[i]`, or `coff` + i if `chans` is null. The pixel's elements are not copied
    /// and must outlive the description. Flips, exchange and order have no effect on it.
    void init(const zelPixel& val, const zelTile3D<int>* fillMask, const int* chans, int coff);

    /// Replaces the address of the block.
    void setData(void* dp);
    /// Makes this a constant pixel with the value of `value`; mask and clip stay. See `init`.
    void setData(const zelPixel& value, const int* chans, int coff);
    /// Moves the area without changing its extents; `c` is the channel of the first slot.
    void setOrigin(int x, int y, int z, int c);
    /// Replaces the area; first channel, clip and mask stay.
    void setTile(int x, int y, int z, int nx, int ny, int nz);
    /// Sets a further limit on what takes part in an assignment, on either side of it.
    void setClip(int x, int y, int z, int nx, int ny, int nz);
    /// Says which axes memory runs against.
    void setFlip(zelFlip flip);
    /// Nonzero: rows in memory run along y.
    void setTransposeXY(int t);
    /// Sets the hole: as the source of an assignment, this description writes nothing inside it.
    /// Null, or an extent below 1 in any dimension, means no hole.
    void setMask(const zelTile3D<int>* copyMask);

    /// The mode of this description's hole against `tile`.
    zelFillMode checkMask(const zelTile3D<int>& tile) const;

    /// Converts pixel data: writes the part of this area that `from` covers too, within both clips
    /// and less the hole of `from`, channel by channel where both have it; all else in memory
    /// stays. A channel that `from` holds in several slots is taken from the first. Values pass by
    /// plain number, never scaled, rounded or clamped; integers keep their low bits, and floating
    /// values are cut toward zero to 64 bits first (NaN, and what does not fit, store 0).
    ///
    /// The two blocks must not overlap in memory. A type outside the nine writes nothing. A
    /// constant pixel with fewer channels than this area is widened for the length of the call by
    /// repeating its last element, which is the only allocation (if it fails, nothing is
    /// written); its channel list, if any, must then be as long as this area's. `from` is the same
    /// after the call, but must not be the source of two calls at once.
    void operator=(zelConverter& from);

protected:
    friend class zelConvIter;

    void* data = nullptr; ///< first element of the block, or the constant pixel's own
    zelTile3D<int> area{0, 0, 0, 0, 0, 0}; ///< the box that the block holds
    zelXYZ<int> stride{0, 0, 0};           ///< signed distance between neighbours along x, y and z
    int cStart = 0;                        ///< channel of the first slot, where `cList` is null
    int cStride = 0;                       ///< distance between two neighbouring slots of a pixel
    int cSize = 0;                         ///< channel slots of a pixel
    zelTile3D<int> clip{0, 0, 0, 0, 0, 0}; ///< a further limit, in force if `clipSet` is nonzero
    zelDataType type{};                    ///< element type
    zelOrder order = zelSeparate;          ///< how channels lie in memory
    const int* cList = nullptr;            ///< channel of each slot, or null
    int clipSet = 0;                       ///< nonzero: `clip` is in force
    int flipX = 0;                         ///< nonzero: memory runs against x
    int flipY = 0;                         ///< nonzero: memory runs against y
    int transposeXY = 0;                   ///< nonzero: rows in memory run along y
    zelTile3D<int> mask{0, 0, 0, 0, 0, 0}; ///< the hole
    int fill = 0;                          ///< nonzero: a constant pixel

private:
    void init();
    void resetStrides();
    ZEL_LOCAL void convertFrom(zelConverter& from);
};

#endif
