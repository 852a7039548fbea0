#ifndef ZEL_PIXEL_H
#define ZEL_PIXEL_H

#include <zel/zelDataSize.h>
#include <zel/zelExport.h>

/// One pixel by value: an element type, a number of elements, and a buffer of its own that holds
/// them packed as in an image, in the machine's byte order. Values pass between types as plain
/// numbers: nothing is scaled, clamped or rounded.
///
/// A copy is a deep one. If a buffer cannot be allocated, the pixel keeps its type and has no
/// elements; a setElem that would have grown it changes nothing. One object belongs to one thread
/// at a time.
class ZEL_API zelPixel {
public:
    /// As set(tp, c, d) on an empty pixel.
    zelPixel(zelDataType tp = static_cast<zelDataType>(0), int c = 0, const void* d = nullptr);
    zelPixel(const zelPixel& pix);
    zelPixel& operator=(const zelPixel& pix);
    ~zelPixel();

    /// Gives the pixel `nc` elements of type `tp`, copied from `dat`, zelDataSize(tp, nc) bytes.
    /// With `dat` null their values are open. With `tp` 0 or `nc` not above 0 it has no elements.
    void set(zelDataType tp, int nc, const void* dat);

    /// Makes this pixel the conversion of `pix`, which may be this pixel, to `nc` elements of type
    /// `toType`; `nc` 0 means as many as `pix` has. Element i comes from element chans[i] of `pix`,
    /// or from element i if `chans` is null, read as by getElem and stored as by setElem.
    void convert(const zelPixel& pix, zelDataType toType, int nc, int* chans);

    /// Element `index` as a number. An index out of range gives the nearest element, a pixel
    /// without elements 0.0.
    double getElem(int index) const;
    double operator[](int index) const;

    /// Stores a number. An integer type gets the low bits of the number cut toward zero to 64 bits,
    /// and a bit is set if the low 32 bits of that are not 0. A NaN, and what 64 bits do not hold,
    /// is stored as 0. An index of `nchans` or more makes the pixel grow, by zeros, and gives it
    /// the type zelDouble if it has none; one below 0 does nothing.
    void setElem(double eval, int index);

    /// The smallest and the largest element, 0.0 without elements.
    double min() const;
    double max() const;

    /// 1 if type, number and bytes of the elements are equal, else 0. It compares bytes, not
    /// numbers: 0.0 and -0.0 differ, and so do the unused bits of a last byte.
    int operator==(const zelPixel& p) const;
    int operator!=(const zelPixel& p) const;

    int getNumChans() const;
    zelDataType getDataType() const;
    /// The elements; null if there are none. Stays the pixel's, until it is next changed.
    void* getData() const;

private:
    zelDataType dtype;
    int nchans;
    void* data;
};

#endif
