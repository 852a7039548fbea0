#include "gridFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int headerBytes = 8;

zelStatus failure(zelMainStatus status) {
    return zelStatusEncode(status, 1, errno);
}

} // namespace

zelClassList GridFile::classList("GridFile", &zelFile::classList);

char* GridFile::getDefaultDescription() const {
    static char text[] = "Grid of grey bytes";
    return text;
}

zelStatus GridFile::openFile() {
    unsigned char header[headerBytes];
    const ssize_t got = pread(fd, header, sizeof header, 0);
    if (got < 0)
        return failure(zelREADFAILED);
    if (got != headerBytes)
        return zelStatusEncode(zelPREMATUREEOF);
    const int width = header[4] << 8 | header[5];
    const int height = header[6] << 8 | header[7];
    if (std::memcmp(header, "GRID", 4) != 0 || width == 0 || height == 0)
        return zelStatusEncode(zelCORRUPTED);
    struct stat info;
    if (fstat(fd, &info) != 0)
        return failure(zelREADFAILED);
    if (info.st_size < headerBytes + static_cast<off_t>(width) * height)
        return zelStatusEncode(zelPREMATUREEOF);
    size = zelSize(width, height, 1, 1);
    pageSize = zelSize(width, 1, 1, 1);
    dtype = zelUChar;
    order = zelInterleaved;
    cm = zelLuminance;
    orientation = zelUpperLeftOrigin;
    compression = zelNoCompression;
    return zelOKAY;
}

zelStatus GridFile::createFile() {
    const unsigned char header[headerBytes] = {'G',
                                               'R',
                                               'I',
                                               'D',
                                               static_cast<unsigned char>(size.x >> 8),
                                               static_cast<unsigned char>(size.x),
                                               static_cast<unsigned char>(size.y >> 8),
                                               static_cast<unsigned char>(size.y)};
    if (fd < 0) {
        fd = ::open(filename, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (fd < 0)
            return failure(zelOPENFAILED);
        ownsDescriptor = true;
    }
    // Rows that nobody writes are 0.
    if (ftruncate(fd, headerBytes + static_cast<off_t>(size.x) * size.y) != 0 ||
        pwrite(fd, header, sizeof header, 0) != headerBytes)
        return failure(zelWRITEFAILED);
    return zelOKAY;
}

zelStatus GridFile::closeFile() {
    const int closing = fd;
    fd = -1;
    ownsDescriptor = false;
    return ::close(closing) == 0 ? zelOKAY : failure(zelCLOSEFAILED);
}

// Without closeFile after a failed createFile, which alone opens a descriptor here.
GridFile::~GridFile() {
    if (ownsDescriptor)
        ::close(fd);
}

zelStatus GridFile::getPage(void* data, int, int y, int, int, int nx, int, int, int) {
    const ssize_t got =
        pread(fd, data, static_cast<size_t>(nx), headerBytes + static_cast<off_t>(y) * size.x);
    if (got < 0)
        return failure(zelREADFAILED);
    return got == nx ? zelOKAY : zelStatusEncode(zelPREMATUREEOF);
}

zelStatus GridFile::setPage(const void* data, int, int y, int, int, int nx, int, int, int) {
    if (accessmode == 0)
        return zelStatusEncode(zelREADONLY);
    const ssize_t put =
        pwrite(fd, data, static_cast<size_t>(nx), headerBytes + static_cast<off_t>(y) * size.x);
    return put == nx ? zelOKAY : failure(zelWRITEFAILED);
}
