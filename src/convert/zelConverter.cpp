#include <zel/zelConvIter.h>
#include <zel/zelConverter.h>
#include <zel/zelPixel.h>

#include <cstdint>

namespace {

// Strides of blocks that are too large wrap instead of overflowing; nothing can be done with such
// a block anyway.
int product(int a, int b) {
    return static_cast<int>(std::int64_t{a} * b);
}

zelTile3D<int> tileOf(int x, int y, int z, int nx, int ny, int nz) {
    return zelTile3D<int>(x, y, z, nx, ny, nz);
}

// The end of an extent; what passes the range of int belongs to a box that is left out.
int endOf(int origin, int extent) {
    return static_cast<int>(std::int64_t{origin} + extent);
}

// How far one extent ends behind another.
int beyond(int origin, int extent, int innerOrigin, int innerExtent) {
    return static_cast<int>(std::int64_t{origin} + extent - innerOrigin - innerExtent);
}

bool isEmpty(const zelTile3D<int>& tile) {
    return tile.nx < 1 || tile.ny < 1 || tile.nz < 1;
}

void convertUnlessEmpty(zelConvIter& engine, const zelTile3D<int>& box) {
    if (!isEmpty(box))
        engine.convert(box);
}

// Converts the box less the hole, which lies inside it, as up to six boxes around the hole.
void convertAround(zelConvIter& engine, const zelTile3D<int>& box, const zelTile3D<int>& hole) {
    const int right = endOf(hole.x, hole.nx);
    const int top = endOf(hole.y, hole.ny);
    const int back = endOf(hole.z, hole.nz);
    const zelTile3D<int> parts[] = {
        tileOf(box.x, box.y, box.z, box.nx, box.ny, hole.z - box.z),
        tileOf(box.x, box.y, hole.z, box.nx, hole.y - box.y, hole.nz),
        tileOf(box.x, hole.y, hole.z, hole.x - box.x, hole.ny, hole.nz),
        tileOf(right, hole.y, hole.z, beyond(box.x, box.nx, hole.x, hole.nx), hole.ny, hole.nz),
        tileOf(box.x, top, hole.z, box.nx, beyond(box.y, box.ny, hole.y, hole.ny), hole.nz),
        tileOf(box.x, box.y, back, box.nx, box.ny, beyond(box.z, box.nz, hole.z, hole.nz)),
    };
    for (const zelTile3D<int>& part : parts)
        convertUnlessEmpty(engine, part);
}

} // namespace

zelConverter::zelConverter(void* dp, zelDataType ty, zelOrder ord, int nc, const int* chans, int nx,
                           int ny, int nz, int x, int y, int z, int c) {
    init(dp, ty, ord, nc, chans, nx, ny, nz, x, y, z, c);
}

zelConverter::zelConverter(const zelPixel& val, const zelTile3D<int>* fillMask, const int* chans,
                           int coff) {
    init(val, fillMask, chans, coff);
}

void zelConverter::init() {
    fill = 0;
    transposeXY = 0;
    flipX = 0;
    flipY = 0;
    clipSet = 0;
    order = zelSeparate;
}

void zelConverter::init(void* dp, zelDataType ty, zelOrder ord, int nc, const int* chans, int nx,
                        int ny, int nz, int x, int y, int z, int c) {
    init();
    if (nc > 1)
        order = ord;
    data = dp;
    type = ty;
    cSize = nc;
    cList = chans;
    cStart = c;
    setTile(x, y, z, nx, ny, nz);
    setMask(nullptr);
}

void zelConverter::init(const zelPixel& val, const zelTile3D<int>* fillMask, const int* chans,
                        int coff) {
    init();
    setData(val, chans, coff);
    setMask(fillMask);
    setTile(0, 0, 0, 0, 0, 0);
}

void zelConverter::setData(void* dp) {
    data = dp;
}

void zelConverter::setData(const zelPixel& value, const int* chans, int coff) {
    fill = 1;
    type = value.getDataType();
    cSize = value.getNumChans();
    cList = chans;
    cStart = coff;
    data = value.getData();
    resetStrides();
}

void zelConverter::setOrigin(int x, int y, int z, int c) {
    area.x = x;
    area.y = y;
    area.z = z;
    cStart = c;
}

void zelConverter::setTile(int x, int y, int z, int nx, int ny, int nz) {
    setOrigin(x, y, z, cStart);
    area.nx = nx;
    area.ny = ny;
    area.nz = nz;
    resetStrides();
}

void zelConverter::setClip(int x, int y, int z, int nx, int ny, int nz) {
    clip = tileOf(x, y, z, nx, ny, nz);
    clipSet = 1;
}

void zelConverter::setFlip(zelFlip flip) {
    flipX = (flip & zelXFlip) != 0 ? 1 : 0;
    flipY = (flip & zelYFlip) != 0 ? 1 : 0;
    resetStrides();
}

void zelConverter::setTransposeXY(int t) {
    transposeXY = t;
    resetStrides();
}

void zelConverter::setMask(const zelTile3D<int>* copyMask) {
    mask = copyMask != nullptr ? *copyMask : tileOf(0, 0, 0, 0, 0, 0);
}

zelFillMode zelConverter::checkMask(const zelTile3D<int>& tile) const {
    if (isEmpty(mask))
        return zelFillAll;
    if (mask.contains(tile))
        return zelFillNone;
    return isEmpty(zelTile3D<int>(tile, mask)) ? zelFillAll : zelFillSome;
}

void zelConverter::resetStrides() {
    stride = zelXYZ<int>(0, 0, 0);
    cStride = 1;
    if (fill != 0)
        return;

    // Along a row in memory, across the rows; which of them is x depends on the exchange.
    const int rowLength = transposeXY != 0 ? area.ny : area.nx;
    const int rows = transposeXY != 0 ? area.nx : area.ny;
    int along = 0;
    int across = 0;
    switch (order) {
    case zelInterleaved:
        along = cSize;
        across = product(cSize, rowLength);
        break;
    case zelSequential:
        along = 1;
        across = product(cSize, rowLength);
        cStride = rowLength;
        break;
    case zelSeparate:
        along = 1;
        across = rowLength;
        cStride = product(rowLength, rows);
        break;
    default:
        cStride = 0;
        return;
    }
    stride.x = transposeXY != 0 ? across : along;
    stride.y = transposeXY != 0 ? along : across;
    stride.z = product(product(cSize, rowLength), rows);
    if (flipX != 0)
        stride.x = product(stride.x, -1);
    if (flipY != 0)
        stride.y = product(stride.y, -1);
}

void zelConverter::operator=(zelConverter& from) {
    if (this == &from)
        return;
    if (from.fill == 0 || from.cSize >= cSize) {
        convertFrom(from);
        return;
    }

    // A constant pixel with too few channels stands in as a wider one until the end of the call.
    zelPixel wide(from.type, from.cSize, from.data);
    wide.convert(wide, type, cSize, nullptr);
    if (wide.getNumChans() != cSize)
        return;
    const zelConverter asGiven(from);
    from.data = wide.getData();
    from.cSize = cSize;
    from.type = type;
    convertFrom(from);
    from.data = asGiven.data;
    from.cSize = asGiven.cSize;
    from.type = asGiven.type;
}

void zelConverter::convertFrom(zelConverter& from) {
    zelTile3D<int> common = area;
    if (clipSet != 0)
        common = zelTile3D<int>(common, clip);
    if (from.fill == 0)
        common = zelTile3D<int>(common, from.area);
    if (from.clipSet != 0)
        common = zelTile3D<int>(common, from.clip);

    zelConvIter engine(*this, from);
    switch (from.checkMask(common)) {
    case zelFillAll:
        engine.convert(common);
        break;
    case zelFillSome:
        convertAround(engine, common, zelTile3D<int>(common, from.mask));
        break;
    case zelFillNone:
        break;
    }
}
