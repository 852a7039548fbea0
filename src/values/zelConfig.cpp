#include <zel/zelConfig.h>

#include <algorithm>
#include <cstddef>

zelConfig::zelConfig()
    : zelConfig(static_cast<zelDataType>(0), static_cast<zelOrder>(0), 0, nullptr, 0,
                static_cast<zelOrientation>(0)) {}

zelConfig::zelConfig(zelDataType type, zelOrder ord, int nchan, int* chanList, int coff,
                     zelOrientation ori)
    : dtype(type), order(ord), orientation(ori), nchans(nchan), choff(coff), channels(chanList) {}

int zelConfig::mapChan(int i) const {
    if (i < 0 || i >= nchans)
        return -1;
    if (channels)
        return channels[static_cast<std::ptrdiff_t>(i) + choff];
    return static_cast<int>(static_cast<unsigned>(i) + static_cast<unsigned>(choff));
}

void zelConfig::compose(int nc, int* in, int* out) const {
    for (int i = 0; i < nc; ++i)
        out[i] = mapChan(in[i]);
}

void zelConfig::invert(int nc, int* chanList) const {
    std::fill_n(chanList, std::max(nc, 0), -1);
    for (int i = 0; i < nchans; ++i) {
        const int c = mapChan(i);
        if (c >= 0 && c < nc)
            chanList[c] = i;
    }
}

int zelConfig::isInvertable() const {
    for (int j = 1; j < nchans; ++j) {
        for (int i = 0; i < j; ++i) {
            if (mapChan(i) == mapChan(j))
                return 0;
        }
    }
    return 1;
}

int zelConfig::operator[](int i) const {
    return mapChan(i);
}
