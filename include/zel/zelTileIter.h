#ifndef ZEL_TILE_ITER_H
#define ZEL_TILE_ITER_H

#include <zel/zelConfig.h>
#include <zel/zelCoord.h>
#include <zel/zelExport.h>
#include <zel/zelTile.h>

/// A cursor over the pages that a tile touches.
///
/// The base object is the result of the walk: x, y and z are the origin of the current page, nx, ny
/// and nz the page size, borders included. Pages come with x fastest, then y, z and the channel
/// page. The page grid begins at the image's origin, or at the tile's own corner if the walk is
/// tile-aligned. Pages may overlap their neighbours by a border.
///
/// A plain value that owns nothing and allocates nothing. A channel list is referred to, not
/// copied, and must outlive the walk. One thread at a time.
class ZEL_API zelTileIter : public zelTile3D<int> {
public:
    /// An iterator over nothing: set a page size and a tile before the first step.
    zelTileIter();

    /// A walk over `tile` by pages of `pageSize` without a border. `cSize` is the number of
    /// channels of the image; `config`, which may be null, selects channels by its nchans, choff
    /// and channels. Nonzero `tileAligned` lays the pages from the tile's origin.
    zelTileIter(const zelTile3D<int>& tile, const zelSize& pageSize, int cSize,
                const zelConfig* config = nullptr, int tileAligned = 0);

    /// The same without a page size, which must be set before the first step.
    zelTileIter(const zelTile3D<int>& tile, int cSize, const zelConfig* config = nullptr,
                int tileAligned = 0);

    zelTileIter(const zelTileIter&) = default;
    zelTileIter& operator=(const zelTileIter&) = default;

    /// The extent of a page. Every extent must be above twice its border, and the channels above 0;
    /// otherwise there are no pages.
    void setPageSize(const zelSize& pageSize);

    /// Gives every page a border of this width on each side, counted in the page size. Nonzero
    /// `includeBorder` also visits pages that the tile reaches only in their border. A width below
    /// 0 leaves a gap of twice that width between neighbouring pages.
    void setPageBorder(const zelXYZ<int>& border, int includeBorder);

    /// The tile to walk over; the arguments are those of the constructors.
    void setTile(const zelTile3D<int>& tile, int cSize, const zelConfig* config = nullptr,
                 int tileAligned = 0);

    /// Moves to the next page, and to the first when called for the first time after a setter.
    /// 1 if there is one, which x, y, z and c then tell; 0 when there are no more. After a 0 a new
    /// walk begins with a setter; a second walk without border pages begins with setTile.
    int more();

    /// The number of pages of the walk; 0 if there are none. With a channel list that leaves gaps
    /// it counts the channel pages in the gaps too. The largest int stands for anything above.
    int getCount();

    int c;  ///< first channel of the current page
    int nc; ///< channels in a page

private:
    void reset();
    int moreChans();
    ZEL_LOCAL bool setPitch();
    ZEL_LOCAL void spanChannelList();
    ZEL_LOCAL bool placeFirstPage();
    ZEL_LOCAL int countPages() const;

    int ox, oy, oz, oc;
    int sx, sy, sz, sc;
    int ex, ey, ez, ec;
    const int* chanList;
    int cLen;
    int dx, dy, dz;
    int bx, by, bz;
    int incBorder;
    int talign;
    int altered;
    int pageCount;
};

#endif
