#ifndef ZEL_COORD_H
#define ZEL_COORD_H

// Coordinates and sizes: plain values. Default constructors leave the fields unset. The operators
// are those of T, field by field: results must fit T, and a divisor must not be 0.

/// An axis of an image. zelC is the axis of the channels.
enum zelAxis : int {
    zelX = 0,
    zelY = 1,
    zelZ = 2,
    zelC = 3
};

template <class T>
class zelXY {
public:
    T x, y;

    zelXY() = default;
    zelXY(T px, T py) : x(px), y(py) {}
};

/// The bare fields of zelXYZ.
template <class T>
struct zelXYZS {
    T x, y, z;
};

template <class T>
class zelXYZ : public zelXYZS<T> {
public:
    zelXYZ() = default;
    zelXYZ(T px, T py, T pz) { init(px, py, pz); }
    /// The same value in every field.
    explicit zelXYZ(T all) { init(all, all, all); }

    zelXYZ& init(T px, T py, T pz) {
        this->x = px;
        this->y = py;
        this->z = pz;
        return *this;
    }

    zelXYZ& operator+=(const zelXYZ& b) {
        return init(this->x + b.x, this->y + b.y, this->z + b.z);
    }
    zelXYZ& operator-=(const zelXYZ& b) {
        return init(this->x - b.x, this->y - b.y, this->z - b.z);
    }
    zelXYZ& operator*=(const zelXYZ& b) {
        return init(this->x * b.x, this->y * b.y, this->z * b.z);
    }
    zelXYZ& operator/=(const zelXYZ& b) {
        return init(this->x / b.x, this->y / b.y, this->z / b.z);
    }
    zelXYZ& operator%=(const zelXYZ& b) {
        return init(this->x % b.x, this->y % b.y, this->z % b.z);
    }
    zelXYZ& operator&=(const zelXYZ& b) {
        return init(this->x & b.x, this->y & b.y, this->z & b.z);
    }
    zelXYZ& operator|=(const zelXYZ& b) {
        return init(this->x | b.x, this->y | b.y, this->z | b.z);
    }

    zelXYZ operator+(const zelXYZ& b) const { return zelXYZ(*this) += b; }
    zelXYZ operator-(const zelXYZ& b) const { return zelXYZ(*this) -= b; }
    zelXYZ operator*(const zelXYZ& b) const { return zelXYZ(*this) *= b; }
    zelXYZ operator/(const zelXYZ& b) const { return zelXYZ(*this) /= b; }
    zelXYZ operator%(const zelXYZ& b) const { return zelXYZ(*this) %= b; }
    zelXYZ operator&(const zelXYZ& b) const { return zelXYZ(*this) &= b; }
    zelXYZ operator|(const zelXYZ& b) const { return zelXYZ(*this) |= b; }

    int operator==(const zelXYZ& b) const {
        return this->x == b.x && this->y == b.y && this->z == b.z;
    }
    int operator!=(const zelXYZ& b) const { return !(*this == b); }

    /// The orderings hold if they hold in every field, so that two values may be unordered.
    int operator<=(const zelXYZ& b) const {
        return this->x <= b.x && this->y <= b.y && this->z <= b.z;
    }
    int operator<(const zelXYZ& b) const { return this->x < b.x && this->y < b.y && this->z < b.z; }
    int operator>=(const zelXYZ& b) const { return b <= *this; }
    int operator>(const zelXYZ& b) const { return b < *this; }

    /// The field of an axis; zelC, which this type lacks, gives z.
    T& operator[](zelAxis axis) {
        return axis == zelX ? this->x : axis == zelY ? this->y : this->z;
    }
    const T& operator[](zelAxis axis) const { return const_cast<zelXYZ&>(*this)[axis]; }
};

/// The bare fields of zelXYZC.
template <class T>
struct zelXYZCS {
    T x, y, z, c;
};

template <class T>
class zelXYZC : public zelXYZCS<T> {
public:
    zelXYZC() = default;
    zelXYZC(T px, T py, T pz, T pc) { init(px, py, pz, pc); }
    /// The same value in every field.
    explicit zelXYZC(T all) { init(all, all, all, all); }

    zelXYZC& init(T px, T py, T pz, T pc) {
        this->x = px;
        this->y = py;
        this->z = pz;
        this->c = pc;
        return *this;
    }

    zelXYZC& operator+=(const zelXYZC& b) {
        return init(this->x + b.x, this->y + b.y, this->z + b.z, this->c + b.c);
    }
    zelXYZC& operator-=(const zelXYZC& b) {
        return init(this->x - b.x, this->y - b.y, this->z - b.z, this->c - b.c);
    }
    zelXYZC& operator*=(const zelXYZC& b) {
        return init(this->x * b.x, this->y * b.y, this->z * b.z, this->c * b.c);
    }
    zelXYZC& operator/=(const zelXYZC& b) {
        return init(this->x / b.x, this->y / b.y, this->z / b.z, this->c / b.c);
    }
    zelXYZC& operator%=(const zelXYZC& b) {
        return init(this->x % b.x, this->y % b.y, this->z % b.z, this->c % b.c);
    }
    zelXYZC& operator&=(const zelXYZC& b) {
        return init(this->x & b.x, this->y & b.y, this->z & b.z, this->c & b.c);
    }
    zelXYZC& operator|=(const zelXYZC& b) {
        return init(this->x | b.x, this->y | b.y, this->z | b.z, this->c | b.c);
    }

    zelXYZC operator+(const zelXYZC& b) const { return zelXYZC(*this) += b; }
    zelXYZC operator-(const zelXYZC& b) const { return zelXYZC(*this) -= b; }
    zelXYZC operator*(const zelXYZC& b) const { return zelXYZC(*this) *= b; }
    zelXYZC operator/(const zelXYZC& b) const { return zelXYZC(*this) /= b; }
    zelXYZC operator%(const zelXYZC& b) const { return zelXYZC(*this) %= b; }
    zelXYZC operator&(const zelXYZC& b) const { return zelXYZC(*this) &= b; }
    zelXYZC operator|(const zelXYZC& b) const { return zelXYZC(*this) |= b; }

    int operator==(const zelXYZC& b) const {
        return this->x == b.x && this->y == b.y && this->z == b.z && this->c == b.c;
    }
    int operator!=(const zelXYZC& b) const { return !(*this == b); }

    /// The orderings hold if they hold in every field, so that two values may be unordered.
    int operator<=(const zelXYZC& b) const {
        return this->x <= b.x && this->y <= b.y && this->z <= b.z && this->c <= b.c;
    }
    int operator<(const zelXYZC& b) const {
        return this->x < b.x && this->y < b.y && this->z < b.z && this->c < b.c;
    }
    int operator>=(const zelXYZC& b) const { return b <= *this; }
    int operator>(const zelXYZC& b) const { return b < *this; }

    /// The field of an axis.
    T& operator[](zelAxis axis) {
        return axis == zelX ? this->x : axis == zelY ? this->y : axis == zelZ ? this->z : this->c;
    }
    const T& operator[](zelAxis axis) const { return const_cast<zelXYZC&>(*this)[axis]; }
};

/// The extents of an image or a page: x by y pixels in a plane, z planes, c channels. 0 stands for
/// an extent that is not known or not given.
class zelSize : public zelXYZC<int> {
public:
    zelSize() = default;
    zelSize(int px, int py, int pz, int pc) : zelXYZC<int>(px, py, pz, pc) {}
    /// One channel.
    zelSize(int px, int py, int pz) : zelXYZC<int>(px, py, pz, 1) {}

    /// The number of elements, x * y * z * c, of which an int holds the low 32 bits.
    operator int() const {
        return static_cast<int>(static_cast<unsigned>(x) * static_cast<unsigned>(y) *
                                static_cast<unsigned>(z) * static_cast<unsigned>(c));
    }
};

#endif
