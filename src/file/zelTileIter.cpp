#include <zel/zelTileIter.h>

#include <algorithm>
#include <climits>
#include <cstdint>

namespace {

using Wide = std::int64_t;

int clampToInt(Wide value) {
    return static_cast<int>(std::clamp<Wide>(value, INT_MIN, INT_MAX));
}

bool fitsInt(Wide value) {
    return value >= INT_MIN && value <= INT_MAX;
}

/// Remainders are counted up from the floor, so that the grid carries on below 0.
Wide floorMod(Wide value, Wide divisor) {
    const Wide rest = value % divisor;
    return rest < 0 ? rest + divisor : rest;
}

/// One axis of a walk: the tile from `origin` to `end`, pages `pitch` apart with a border.
struct Axis {
    Wide origin;
    Wide end;
    Wide pitch;
    Wide border;

    Wide pageAt() const { return origin - floorMod(origin + border, pitch); }

    /// The first page when pages count that the tile reaches only in their border.
    Wide firstWithBorder() const {
        const Wide start = pageAt();
        return start + 2 * border > origin ? start - pitch : start;
    }

    /// Where the tile ends when such pages do not count: a further page is wanted only if the tile
    /// reaches past the end of the page before it.
    Wide endWithoutBorder() const { return pageAt() + pitch < end ? end - 2 * border : end; }
};

/// How many pages begin in the range; 0 if it is empty.
Wide pagesAlong(Wide start, Wide end, Wide pitch) {
    return start < end ? (end - start - 1) / pitch + 1 : 0;
}

} // namespace

zelTileIter::zelTileIter() : zelTileIter(zelTile3D<int>(0, 0, 0, 0, 0, 0), 0) {}

zelTileIter::zelTileIter(const zelTile3D<int>& tile, int cSize, const zelConfig* config,
                         int tileAligned)
    : zelTileIter(tile, zelSize(0, 0, 0, 0), cSize, config, tileAligned) {}

zelTileIter::zelTileIter(const zelTile3D<int>& tile, const zelSize& pageSize, int cSize,
                         const zelConfig* config, int tileAligned)
    : zelTile3D<int>(0, 0, 0, 0, 0, 0), c(0), sx(0), sy(0), sz(0), sc(0), cLen(0), dx(0), dy(0),
      dz(0), pageCount(0) {
    setPageSize(pageSize);
    setTile(tile, cSize, config, tileAligned);
    setPageBorder(zelXYZ<int>(0, 0, 0), 1);
}

void zelTileIter::setPageSize(const zelSize& pageSize) {
    nx = pageSize.x;
    ny = pageSize.y;
    nz = pageSize.z;
    nc = pageSize.c;
    altered = 1;
}

void zelTileIter::setPageBorder(const zelXYZ<int>& border, int includeBorder) {
    bx = border.x;
    by = border.y;
    bz = border.z;
    incBorder = includeBorder;
    altered = 1;
}

void zelTileIter::setTile(const zelTile3D<int>& tile, int cSize, const zelConfig* config,
                          int tileAligned) {
    ox = tile.x;
    oy = tile.y;
    oz = tile.z;
    ex = clampToInt(Wide{tile.x} + tile.nx);
    ey = clampToInt(Wide{tile.y} + tile.ny);
    ez = clampToInt(Wide{tile.z} + tile.nz);
    const int wanted = config && config->nchans > 0 ? config->nchans : cSize;
    chanList = config ? config->channels : nullptr;
    if (chanList) {
        // A reversed range tells reset that the list has not been looked at.
        cLen = wanted;
        oc = cSize;
        ec = 0;
    } else {
        oc = config ? config->choff : 0;
        ec = clampToInt(Wide{oc} + wanted);
    }
    talign = tileAligned;
    altered = 1;
}

int zelTileIter::getCount() {
    if (altered)
        reset();
    return pageCount;
}

int zelTileIter::more() {
    if (altered)
        reset();
    if (pageCount == 0)
        return 0;
    if (Wide{x} + dx < ex) {
        x += dx;
        return 1;
    }
    x = sx;
    if (Wide{y} + dy < ey) {
        y += dy;
        return 1;
    }
    y = sy;
    if (Wide{z} + dz < ez) {
        z += dz;
        return 1;
    }
    z = sz;
    return moreChans();
}

void zelTileIter::reset() {
    altered = 0;
    pageCount = 0;
    if (ox >= ex || oy >= ey || oz >= ez || !setPitch())
        return;
    if (chanList && ec < oc)
        spanChannelList();
    if (!placeFirstPage())
        return;
    x = sx - dx;
    y = sy;
    z = sz;
    c = sc - nc;
    if (moreChans())
        pageCount = countPages();
}

/// False if the page size leaves nothing between the borders.
bool zelTileIter::setPitch() {
    const Wide px = nx - 2 * Wide{bx};
    const Wide py = ny - 2 * Wide{by};
    const Wide pz = nz - 2 * Wide{bz};
    if (px < 1 || py < 1 || pz < 1 || nc < 1 || !fitsInt(std::max({px, py, pz})))
        return false;
    dx = static_cast<int>(px);
    dy = static_cast<int>(py);
    dz = static_cast<int>(pz);
    return true;
}

void zelTileIter::spanChannelList() {
    for (int i = 0; i < cLen; ++i) {
        if (chanList[i] < 0)
            continue;
        const int page = chanList[i] - chanList[i] % nc;
        oc = std::min(oc, page);
        ec = std::max(ec, clampToInt(Wide{page} + nc));
    }
}

/// False if the page, or the cursor one step before it, lies where no int reaches.
bool zelTileIter::placeFirstPage() {
    Wide first[] = {ox, oy, oz, oc};
    if (!talign) {
        const Axis axes[] = {{ox, ex, dx, bx}, {oy, ey, dy, by}, {oz, ez, dz, bz}};
        int* const ends[] = {&ex, &ey, &ez};
        for (int i = 0; i < 3; ++i) {
            first[i] = incBorder ? axes[i].firstWithBorder() : axes[i].pageAt();
            if (!incBorder)
                *ends[i] = clampToInt(axes[i].endWithoutBorder());
        }
        first[3] -= floorMod(oc, nc);
    }
    if (!fitsInt(first[0] - dx) || !fitsInt(first[1]) || !fitsInt(first[2]) ||
        !fitsInt(first[3] - nc))
        return false;
    sx = static_cast<int>(first[0]);
    sy = static_cast<int>(first[1]);
    sz = static_cast<int>(first[2]);
    sc = static_cast<int>(first[3]);
    return true;
}

/// Moves to the next channel page that holds a wanted channel.
int zelTileIter::moreChans() {
    Wide next = Wide{c} + nc;
    if (chanList) {
        int lowest = -1;
        for (int i = 0; i < cLen; ++i)
            if (chanList[i] >= 0 && chanList[i] >= next && (lowest < 0 || chanList[i] < lowest))
                lowest = chanList[i];
        if (lowest < 0)
            return 0;
        next += (lowest - next) / nc * nc;
    }
    if (next >= ec)
        return 0;
    c = static_cast<int>(next);
    return 1;
}

int zelTileIter::countPages() const {
    Wide count = 1;
    for (const Wide pages : {pagesAlong(sx, ex, dx), pagesAlong(sy, ey, dy), pagesAlong(sz, ez, dz),
                             pagesAlong(sc, ec, nc)})
        count = std::min<Wide>(count * pages, INT_MAX);
    return static_cast<int>(count);
}
