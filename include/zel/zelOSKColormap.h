#ifndef ZEL_OSK_COLORMAP_H
#define ZEL_OSK_COLORMAP_H

#include <zel/zelColormap.h>
#include <zel/zelExport.h>

/// A fixed palette for 8-bit indexes: red, green and blue as zelUChar for the indexes 32 to 255.
/// 32 to 55 are a grey ramp without its ends; 56 to 255 are a cube of 5 levels of red, 8 of green
/// and 5 of blue, green running fastest, then red. All maps share one constant table: read only,
/// make a copy to change it.
class ZEL_API zelOSKColormap : public zelColormap {
public:
    zelOSKColormap();
    /// The copy has a table of its own.
    zelOSKColormap(const zelOSKColormap& from);
    ~zelOSKColormap() override;

    void operator=(const zelOSKColormap& from);
};

#endif
