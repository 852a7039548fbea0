#include "gridFile.h"

#include <cerrno>
#include <new>

namespace {

class GridFormat : public zelFormat {
public:
    GridFormat() : zelFormat("GRID", ZEL_VERSION_MAJOR, ZEL_VERSION_MINOR) {}

    int typeIsSupported(zelDataType type) override { return type == zelUChar; }
    int orderIsSupported(zelOrder order) override { return order == zelInterleaved; }
    int orientationIsSupported(zelOrientation orientation) override {
        return orientation == zelUpperLeftOrigin;
    }
    int colorModelIsSupported(zelColorModel cm) override { return cm == zelLuminance; }
    int compressionIsSupported(zelCompression compression) override {
        return compression == zelNoCompression;
    }
    int sizeIsSupported(int x, int y, int z, int c, zelOrientation) override {
        return x >= 1 && x <= 65535 && y >= 1 && y <= 65535 && z == 1 && c == 1;
    }
    int pagingIsSupported() override { return 1; }
    int pageSizeIsSupported(int x, int, int, int, int pageX, int pageY, int pageZ, int pageC,
                            zelOrientation) override {
        return pageX == x && pageY == 1 && pageZ == 1 && pageC == 1;
    }
    int randomAccessReadIsSupported() override { return 1; }
    int randomAccessWriteIsSupported() override { return 1; }

    zelDataType getPreferredType() override { return zelUChar; }
    zelOrder getPreferredOrder() override { return zelInterleaved; }
    zelOrientation getPreferredOrientation() override { return zelUpperLeftOrigin; }
    zelColorModel getPreferredColorModel(int nchans) override {
        return nchans <= 1 ? zelLuminance : zelColorModel(0);
    }
    zelCompression getPreferredCompression() override { return zelNoCompression; }
    void getPreferredPageSize(int x, int, int, int, int& pageX, int& pageY, int& pageZ, int& pageC,
                              zelOrientation) override {
        pageX = x;
        pageY = pageZ = pageC = 1;
    }

protected:
    zelFile* newfileobj() override {
        zelFile* const file = new (std::nothrow) GridFile;
        if (!file)
            errno = ENOMEM;
        return file;
    }
};

GridFormat format;

} // namespace
