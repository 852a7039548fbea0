#ifndef ZEL_COLORMAP_H
#define ZEL_COLORMAP_H

#include <zel/zelExport.h>
#include <zel/zelLut.h>

/// A table from a palette's indexes, the whole numbers from `min` to `max`, to colours.
class ZEL_API zelColormap : public zelLut {
public:
    /// Over storage of the caller's: max - min + 1 entries for each of `nchans` channels.
    zelColormap(void* table, int nchans, zelDataType tabType, int min, int max);
    /// The same with storage of its own.
    zelColormap(int nchans, zelDataType tabType, int min, int max);
    /// A map without channels and entries.
    zelColormap();
    zelColormap(const zelColormap& from);
    ~zelColormap() override;

    void operator=(const zelColormap& from);
};

#endif
