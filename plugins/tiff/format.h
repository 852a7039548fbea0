#ifndef ZELTIFF_FORMAT_H
#define ZELTIFF_FORMAT_H

#include "kit/tableFormat.h"

namespace zeltiff {

/// What TIFF can store. Pages are strips, as wide as the image, or tiles of multiples of 16.
class TiffFormat final : public zelkit::TableFormat {
public:
    TiffFormat();

    int pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ, int pageC,
                            zelOrientation orientation) override;
    void getPreferredPageSize(int x, int y, int z, int c, int& pageX, int& pageY, int& pageZ,
                              int& pageC, zelOrientation orientation) override;

protected:
    zelFile* newfileobj() override;
    zelTagDescription* _getTagDescriptions(int& count) override;
};

} // namespace zeltiff

#endif
