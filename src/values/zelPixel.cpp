#include <zel/zelPixel.h>

#include "values/element.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace {

// A zeroed buffer, null if it cannot be had; -1 bytes stand for a size beyond 64 bits.
void* allocateZeroed(std::int64_t bytes) {
    if (bytes < 0)
        return nullptr;
    const auto size = static_cast<std::size_t>(bytes);
    void* buffer = ::operator new(size, std::nothrow);
    if (buffer)
        std::memset(buffer, 0, size);
    return buffer;
}

// The source may be the pixel's own buffer.
void copyBytes(void* to, const void* from, std::int64_t bytes) {
    std::memmove(to, from, static_cast<std::size_t>(bytes));
}

} // namespace

zelPixel::zelPixel(zelDataType tp, int c, const void* d)
    : dtype(static_cast<zelDataType>(0)), nchans(0), data(nullptr) {
    set(tp, c, d);
}

zelPixel::zelPixel(const zelPixel& pix) : zelPixel(pix.dtype, pix.nchans, pix.data) {}

zelPixel& zelPixel::operator=(const zelPixel& pix) {
    if (&pix != this)
        set(pix.dtype, pix.nchans, pix.data);
    return *this;
}

zelPixel::~zelPixel() {
    ::operator delete(data);
}

void zelPixel::set(zelDataType tp, int nc, const void* dat) {
    void* buffer = data;
    const std::int64_t newSize = zel::elementBytes(tp, nc);
    const bool hasElements = tp != 0 && nc > 0;
    if (!hasElements)
        buffer = nullptr;
    else if (!data || newSize > zel::elementBytes(dtype, nchans))
        buffer = allocateZeroed(newSize);

    dtype = tp;
    nchans = buffer ? nc : 0;
    if (buffer && dat)
        copyBytes(buffer, dat, newSize);
    // Freed last, since `dat` may lie in it.
    if (buffer != data)
        ::operator delete(data);
    data = buffer;
}

void zelPixel::convert(const zelPixel& pix, zelDataType toType, int nc, int* chans) {
    zelPixel copy;
    if (&pix == this)
        copy = pix;
    const zelPixel& source = &pix == this ? copy : pix;
    const std::int64_t oldSize = data && dtype ? zel::elementBytes(dtype, nchans) : 0;
    const int count = std::max(nc != 0 ? nc : source.nchans, 0);
    const std::int64_t newSize = zel::elementBytes(toType, count);
    if (oldSize < newSize) {
        ::operator delete(data);
        data = allocateZeroed(newSize);
    } else if (data) {
        std::memset(data, 0, static_cast<std::size_t>(newSize));
    }
    dtype = toType;
    nchans = data || newSize == 0 ? count : 0;
    for (int cx = 0; cx < nchans; ++cx)
        setElem(source.getElem(chans ? chans[cx] : cx), cx);
}

double zelPixel::getElem(int index) const {
    if (nchans == 0)
        return 0.0;
    return zel::loadElement(data, dtype, std::clamp(index, 0, nchans - 1));
}

double zelPixel::operator[](int index) const {
    return getElem(index);
}

void zelPixel::setElem(double eval, int index) {
    if (index < 0 || index == std::numeric_limits<int>::max())
        return;
    if (index >= nchans) {
        const zelDataType newType = dtype ? dtype : zelDouble;
        void* grown = allocateZeroed(zel::elementBytes(newType, index + 1));
        if (!grown)
            return;
        if (data)
            copyBytes(grown, data, zel::elementBytes(dtype, nchans));
        ::operator delete(data);
        data = grown;
        dtype = newType;
        nchans = index + 1;
    }
    zel::storeElement(data, dtype, index, eval);
}

double zelPixel::min() const {
    double val = getElem(0);
    for (int i = 1; i < nchans; ++i) {
        const double tmp = getElem(i);
        val = val < tmp ? val : tmp;
    }
    return val;
}

double zelPixel::max() const {
    double val = getElem(0);
    for (int i = 1; i < nchans; ++i) {
        const double tmp = getElem(i);
        val = val > tmp ? val : tmp;
    }
    return val;
}

int zelPixel::operator==(const zelPixel& p) const {
    if (dtype != p.dtype || nchans != p.nchans)
        return 0;
    const auto bytes = static_cast<std::size_t>(zel::elementBytes(dtype, nchans));
    return bytes == 0 || std::memcmp(data, p.data, bytes) == 0;
}

int zelPixel::operator!=(const zelPixel& p) const {
    return !(*this == p);
}

int zelPixel::getNumChans() const {
    return nchans;
}

zelDataType zelPixel::getDataType() const {
    return dtype;
}

void* zelPixel::getData() const {
    return data;
}
