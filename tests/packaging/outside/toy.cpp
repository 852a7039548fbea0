// A format of somebody else's: "TOY1", a byte for the width, one for the height, then grey bytes
// from the bottom row up.

#include <cerrno>
#include <new>
#include <unistd.h>
#include <zel/zel.h>

namespace {

constexpr int headerBytes = 6;

class ToyFile : public zelFile {
    zelStatus openFile() override;
    zelStatus closeFile() override;
    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

public:
    static zelClassList classList;
    char* getClassName(int parentIdx) const override { return classList.find(parentIdx); }
    const zelClassList* getClassId() const override { return &classList; }
    int derivesFrom(const zelClassList* other) const override { return classList.find(other); }
};

zelClassList ToyFile::classList("ToyFile", &zelFile::classList);

zelStatus ToyFile::openFile() {
    unsigned char header[headerBytes];
    if (pread(fd, header, sizeof header, 0) != headerBytes)
        return zelStatusEncode(zelPREMATUREEOF);
    size = zelSize(header[4], header[5], 1, 1);
    pageSize = zelSize(header[4], 1, 1, 1);
    dtype = zelUChar;
    order = zelInterleaved;
    cm = zelLuminance;
    orientation = zelLowerLeftOrigin;
    compression = zelNoCompression;
    return zelOKAY;
}

zelStatus ToyFile::closeFile() {
    return ::close(fd) == 0 ? zelOKAY : zelStatusEncode(zelCLOSEFAILED, 1, errno);
}

zelStatus ToyFile::getPage(void* data, int, int y, int, int, int nx, int, int, int) {
    const auto wanted = static_cast<size_t>(nx);
    const ssize_t got = pread(fd, data, wanted, headerBytes + static_cast<off_t>(y) * size.x);
    return got == static_cast<ssize_t>(wanted) ? zelOKAY : zelStatusEncode(zelPREMATUREEOF);
}

class ToyFormat : public zelReadOnlyFormat {
public:
    ToyFormat() : zelReadOnlyFormat("TOY") {}

private:
    zelFile* newfileobj() override { return new (std::nothrow) ToyFile; }
};

ToyFormat format;

} // namespace
