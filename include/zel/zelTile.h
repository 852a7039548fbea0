#ifndef ZEL_TILE_H
#define ZEL_TILE_H

#include <zel/zelCoord.h>

#include <limits>

// Boxes of pixels: plain values. A tile covers x up to, but not including, x + nx, and so on along
// every axis. Default constructors leave the fields unset. What +=, -=, grow and shrink work out
// must fit T.

/// Arithmetic of tiles that cannot overflow: an extent that T does not hold becomes T's nearest
/// value.
template <class T>
struct zelTileMath {
    typedef T Wide;
    static T narrow(Wide value) { return value; }
};
template <>
struct zelTileMath<int> {
    typedef long long Wide;
    static int narrow(Wide value) {
        typedef std::numeric_limits<int> limits;
        return value < limits::min()   ? limits::min()
               : value > limits::max() ? limits::max()
                                       : static_cast<int>(value);
    }
};

/// One axis of a tile, and the questions about two of them.
template <class T>
struct zelTileSpan {
    typedef zelTileMath<T> Math;
    typedef typename Math::Wide Wide;

    T from, extent;

    Wide end() const { return static_cast<Wide>(from) + extent; }

    zelTileSpan intersect(const zelTileSpan& b) const {
        const T start = from < b.from ? b.from : from;
        const Wide stop = end() < b.end() ? end() : b.end();
        return {start, Math::narrow(stop - start)};
    }
    zelTileSpan bound(const zelTileSpan& b) const {
        const T start = from < b.from ? from : b.from;
        const Wide stop = end() < b.end() ? b.end() : end();
        return {start, Math::narrow(stop - start)};
    }
    bool contains(const zelTileSpan& b) const { return from <= b.from && b.end() <= end(); }
    bool contains(const zelTileSpan& b, T max) const {
        return from <= b.from && (b.end() <= end() || max <= end());
    }
    bool contains(T p) const { return from <= p && p < end(); }
};

/// A rectangle.
template <class T>
class zelTile2D {
public:
    T x, y;   ///< origin
    T nx, ny; ///< extent

    zelTile2D() = default;
    zelTile2D(T px, T py, T pnx, T pny) : x(px), y(py), nx(pnx), ny(pny) {}
    /// The intersection of the tiles.
    zelTile2D(const zelTile2D& a, const zelTile2D& b) { intersect(a, b); }
    zelTile2D(const zelTile2D& a, const zelTile2D& b, const zelTile2D& c) { intersect(a, b, c); }

    zelTile2D& init(T px, T py, T pnx, T pny) { return *this = zelTile2D(px, py, pnx, pny); }
    zelTile2D& init(const zelTile2D& tile) { return *this = tile; }

    /// What the tiles have in common. Where they have nothing, an extent comes out 0 or below.
    zelTile2D& intersect(const zelTile2D& a, const zelTile2D& b) {
        return setSpans(a.spanX().intersect(b.spanX()), a.spanY().intersect(b.spanY()));
    }
    zelTile2D& intersect(const zelTile2D& a, const zelTile2D& b, const zelTile2D& c) {
        return setSpans(a.spanX().intersect(b.spanX()).intersect(c.spanX()),
                        a.spanY().intersect(b.spanY()).intersect(c.spanY()));
    }

    /// The smallest tile that contains all of them.
    zelTile2D& boundingBox(const zelTile2D& a, const zelTile2D& b) {
        return setSpans(a.spanX().bound(b.spanX()), a.spanY().bound(b.spanY()));
    }
    zelTile2D& boundingBox(const zelTile2D& a, const zelTile2D& b, const zelTile2D& c) {
        return setSpans(a.spanX().bound(b.spanX()).bound(c.spanX()),
                        a.spanY().bound(b.spanY()).bound(c.spanY()));
    }

    /// 1 if the tile lies wholly in this one, else 0.
    int contains(const zelTile2D& tile) const {
        return spanX().contains(tile.spanX()) && spanY().contains(tile.spanY());
    }
    /// 1 if the point lies in this tile.
    int contains(T px, T py) const { return spanX().contains(px) && spanY().contains(py); }
    /// 1 if that part of the tile which lies below the maxima lies in this one.
    int contains(const zelTile2D& tile, T xMax, T yMax) const {
        return spanX().contains(tile.spanX(), xMax) && spanY().contains(tile.spanY(), yMax);
    }

    int operator==(const zelTile2D& b) const {
        return x == b.x && y == b.y && nx == b.nx && ny == b.ny;
    }
    int operator!=(const zelTile2D& b) const { return !(*this == b); }

    /// Moves the origin.
    zelTile2D& operator+=(const zelXY<T>& d) {
        x += d.x;
        y += d.y;
        return *this;
    }
    zelTile2D& operator-=(const zelXY<T>& d) {
        x -= d.x;
        y -= d.y;
        return *this;
    }
    /// Moves every side outwards by d.
    zelTile2D& grow(const zelXY<T>& d) {
        *this -= d;
        nx += 2 * d.x;
        ny += 2 * d.y;
        return *this;
    }
    /// Moves every side inwards by d.
    zelTile2D& shrink(const zelXY<T>& d) { return grow(zelXY<T>(-d.x, -d.y)); }

    /// The origin on an axis, and the extent along it; any axis but zelX gives y.
    T& origin(zelAxis axis) { return axis == zelX ? x : y; }
    const T& origin(zelAxis axis) const { return axis == zelX ? x : y; }
    T& size(zelAxis axis) { return axis == zelX ? nx : ny; }
    const T& size(zelAxis axis) const { return axis == zelX ? nx : ny; }

protected:
    typedef zelTileSpan<T> Span;

    Span spanX() const { return {x, nx}; }
    Span spanY() const { return {y, ny}; }
    zelTile2D& setSpans(const Span& sx, const Span& sy) {
        return init(sx.from, sy.from, sx.extent, sy.extent);
    }
};

/// A box. Note that its fields are in the order x, y, nx, ny, z, nz, while the calls take all
/// origins first.
template <class T>
class zelTile3D : public zelTile2D<T> {
public:
    T z;  ///< origin
    T nz; ///< extent

    zelTile3D() = default;
    zelTile3D(T px, T py, T pz, T pnx, T pny, T pnz)
        : zelTile2D<T>(px, py, pnx, pny), z(pz), nz(pnz) {}
    zelTile3D(const zelTile2D<T>& tile, T pz, T pnz) : zelTile2D<T>(tile), z(pz), nz(pnz) {}
    zelTile3D(const zelTile3D&) = default;
    /// The intersection of the tiles.
    zelTile3D(const zelTile3D& a, const zelTile3D& b) { intersect(a, b); }
    zelTile3D(const zelTile3D& a, const zelTile3D& b, const zelTile3D& c) { intersect(a, b, c); }

    zelTile3D& operator=(const zelTile3D&) = default;
    /// Takes over x and y; z and nz stay.
    zelTile3D& operator=(const zelTile2D<T>& tile) {
        zelTile2D<T>::operator=(tile);
        return *this;
    }

    zelTile3D& init(T px, T py, T pz, T pnx, T pny, T pnz) {
        return *this = zelTile3D(px, py, pz, pnx, pny, pnz);
    }
    zelTile3D& init(const zelTile2D<T>& tile, T pz, T pnz) {
        return *this = zelTile3D(tile, pz, pnz);
    }
    zelTile3D& init(const zelTile3D& tile) { return *this = tile; }

    /// What the tiles have in common. Where they have nothing, an extent comes out 0 or below.
    zelTile3D& intersect(const zelTile3D& a, const zelTile3D& b) {
        setSpanZ(a.spanZ().intersect(b.spanZ()));
        zelTile2D<T>::intersect(a, b);
        return *this;
    }
    zelTile3D& intersect(const zelTile3D& a, const zelTile3D& b, const zelTile3D& c) {
        setSpanZ(a.spanZ().intersect(b.spanZ()).intersect(c.spanZ()));
        zelTile2D<T>::intersect(a, b, c);
        return *this;
    }

    /// The smallest tile that contains all of them.
    zelTile3D& boundingBox(const zelTile3D& a, const zelTile3D& b) {
        setSpanZ(a.spanZ().bound(b.spanZ()));
        zelTile2D<T>::boundingBox(a, b);
        return *this;
    }
    zelTile3D& boundingBox(const zelTile3D& a, const zelTile3D& b, const zelTile3D& c) {
        setSpanZ(a.spanZ().bound(b.spanZ()).bound(c.spanZ()));
        zelTile2D<T>::boundingBox(a, b, c);
        return *this;
    }

    using zelTile2D<T>::contains;
    /// 1 if the tile lies wholly in this one, else 0.
    int contains(const zelTile3D& tile) const {
        return zelTile2D<T>::contains(tile) && spanZ().contains(tile.spanZ());
    }
    /// 1 if the point lies in this tile.
    int contains(T px, T py, T pz) const {
        return zelTile2D<T>::contains(px, py) && spanZ().contains(pz);
    }
    /// 1 if that part of the tile which lies below the maxima lies in this one.
    int contains(const zelTile3D& tile, T xMax, T yMax, T zMax) const {
        return zelTile2D<T>::contains(tile, xMax, yMax) && spanZ().contains(tile.spanZ(), zMax);
    }

    int operator==(const zelTile3D& b) const {
        return zelTile2D<T>::operator==(b) && z == b.z && nz == b.nz;
    }
    int operator!=(const zelTile3D& b) const { return !(*this == b); }

    /// Moves the origin.
    zelTile3D& operator+=(const zelXY<T>& d) {
        zelTile2D<T>::operator+=(d);
        return *this;
    }
    zelTile3D& operator-=(const zelXY<T>& d) {
        zelTile2D<T>::operator-=(d);
        return *this;
    }
    zelTile3D& operator+=(const zelXYZ<T>& d) {
        z += d.z;
        return *this += zelXY<T>(d.x, d.y);
    }
    zelTile3D& operator-=(const zelXYZ<T>& d) {
        z -= d.z;
        return *this -= zelXY<T>(d.x, d.y);
    }
    /// Moves every side outwards by d.
    zelTile3D& grow(const zelXY<T>& d) {
        zelTile2D<T>::grow(d);
        return *this;
    }
    zelTile3D& grow(const zelXYZ<T>& d) {
        z -= d.z;
        nz += 2 * d.z;
        return grow(zelXY<T>(d.x, d.y));
    }
    /// Moves every side inwards by d.
    zelTile3D& shrink(const zelXY<T>& d) {
        zelTile2D<T>::shrink(d);
        return *this;
    }
    zelTile3D& shrink(const zelXYZ<T>& d) { return grow(zelXYZ<T>(-d.x, -d.y, -d.z)); }

    /// The origin on an axis, and the extent along it; zelC gives z.
    T& origin(zelAxis axis) { return isPlanar(axis) ? zelTile2D<T>::origin(axis) : z; }
    const T& origin(zelAxis axis) const { return isPlanar(axis) ? zelTile2D<T>::origin(axis) : z; }
    T& size(zelAxis axis) { return isPlanar(axis) ? zelTile2D<T>::size(axis) : nz; }
    const T& size(zelAxis axis) const { return isPlanar(axis) ? zelTile2D<T>::size(axis) : nz; }

private:
    typedef zelTileSpan<T> Span;

    static bool isPlanar(zelAxis axis) { return axis == zelX || axis == zelY; }
    Span spanZ() const { return {z, nz}; }
    void setSpanZ(const Span& s) {
        z = s.from;
        nz = s.extent;
    }
};

#endif
