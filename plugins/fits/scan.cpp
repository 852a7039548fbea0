#include "scan.h"

#include "cards.h"

#include "kit/fileIo.h"
#include "kit/sizes.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <fitsio.h>
#include <memory>

namespace zelfits {

namespace {

struct CloseFits {
    void operator()(fitsfile* file) const {
        int status = 0;
        fits_close_file(file, &status);
        fits_clear_errmsg();
    }
};
using Handle = std::unique_ptr<fitsfile, CloseFits>;

void reportComplaints(const char* name) {
    char message[FLEN_ERRMSG];
    while (fits_read_errmsg(message) != 0)
        zelError(zelSevWarning, "%s: %s", name, message);
}

zelStatus toStatus(int fitsStatus, zelMainStatus otherwise) {
    switch (fitsStatus) {
    case 0:
        return zelOKAY;
    case MEMORY_ALLOCATION:
        return zelStatusEncode(zelMALLOCFAILED);
    case END_OF_FILE:
        return zelStatusEncode(zelPREMATUREEOF);
    default:
        return zelStatusEncode(otherwise);
    }
}

// The file as a name that leads to the descriptor's file, whatever its real name is or was.
zelStatus openHandle(int fd, const char* name, int mode, Handle& handle) {
    // CFITSIO would unpack a compressed file in memory, however large it becomes.
    constexpr char magic[] = "SIMPLE  =";
    char start[sizeof magic - 1];
    const zelStatus read = zelkit::readExact(fd, start, sizeof start, 0);
    if (read != zelOKAY)
        return read;
    if (std::memcmp(start, magic, sizeof start) != 0)
        return zelStatusEncode(zelBADMAGIC);
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    int status = 0;
    fitsfile* file = nullptr;
    fits_clear_errmsg();
    fits_open_diskfile(&file, path.c_str(), mode, &status);
    handle.reset(file);
    if (status != 0)
        reportComplaints(name);
    return toStatus(status, status == FILE_NOT_OPENED ? zelOPENFAILED : zelCORRUPTED);
}

double readNumber(fitsfile* file, const char* keyword, double otherwise) {
    int status = 0;
    double number = 0;
    fits_read_key(file, TDOUBLE, keyword, &number, nullptr, &status);
    return status == 0 ? number : otherwise;
}

std::string readText(fitsfile* file, const char* keyword) {
    int status = 0;
    char text[FLEN_VALUE] = "";
    fits_read_key(file, TSTRING, keyword, text, nullptr, &status);
    return status == 0 ? text : "";
}

void readStorage(fitsfile* file, Storage& storage) {
    storage.scale = readNumber(file, "BSCALE", 1);
    storage.zero = readNumber(file, "BZERO", 0);
    int status = 0;
    LONGLONG blank = 0;
    if (storage.bitpix > 0 &&
        fits_read_key(file, TLONGLONG, "BLANK", &blank, nullptr, &status) == 0)
        storage.blank = blank;
}

// The axes behind the second are planes, unless the third one counts channels.
bool readAxes(fitsfile* file, std::vector<LONGLONG> axes, Image& image) {
    axes.resize(std::max<std::size_t>(axes.size(), 3), 1);
    image.colorModel = channelAxisModel(readText(file, "CTYPE3"), axes[2]);
    const bool channels = image.colorModel != zelLuminance;
    std::int64_t planes = 1;
    for (std::size_t i = channels ? 3 : 2; i < axes.size(); i++)
        planes = zelkit::checkedProduct({planes, axes[i]}).value_or(-1);
    for (const std::int64_t extent : {std::int64_t{axes[0]}, std::int64_t{axes[1]}, planes})
        if (extent < 1 || extent > INT_MAX)
            return false;
    if (axes[2] < 1 || axes[2] > INT_MAX)
        return false;
    image.size = zelSize(static_cast<int>(axes[0]), static_cast<int>(axes[1]),
                         static_cast<int>(planes), channels ? static_cast<int>(axes[2]) : 1);
    return true;
}

void checkData(std::int64_t fileLength, Image& image) {
    const zelSize& size = image.size;
    const auto bytes =
        zelkit::checkedProduct({size.x, size.y, size.z, size.c, image.storage.bytes()});
    std::int64_t end = 0;
    if (!bytes || __builtin_add_overflow(image.dataOffset, *bytes, &end))
        image.status = zelStatusEncode(zelCORRUPTED);
    else if (end > fileLength)
        image.status = zelStatusEncode(zelPREMATUREEOF);
    image.dataBytes = bytes.value_or(0);
}

// Tables, and images packed into tables, are no images here; nor is a unit without data.
bool readUnit(fitsfile* file, std::int64_t dataOffset, std::int64_t fileLength, Image& image) {
    constexpr int mostAxes = 99;
    LONGLONG axes[mostAxes] = {};
    int status = 0, type = 0, axisCount = 0;
    fits_get_hdu_type(file, &type, &status);
    if (status != 0 || type != IMAGE_HDU || fits_is_compressed_image(file, &status))
        return false;
    fits_get_img_paramll(file, mostAxes, &image.storage.bitpix, &axisCount, axes, &status);
    if (status != 0 || axisCount < 1 || axisCount > mostAxes ||
        std::any_of(axes, axes + axisCount, [](LONGLONG extent) { return extent == 0; }))
        return false;
    image.dataOffset = dataOffset;
    if (!readAxes(file, {axes, axes + axisCount}, image)) {
        image.status = zelStatusEncode(zelCORRUPTED);
        return true;
    }
    readStorage(file, image.storage);
    checkData(fileLength, image);
    readTags(file, image.tags);
    return true;
}

} // namespace

zelStatus scan(int fd, const char* name, Contents& contents) {
    contents = {};
    std::int64_t fileLength = 0;
    zelStatus opened = zelkit::getFileLength(fd, fileLength);
    Handle handle;
    if (opened == zelOKAY)
        opened = openHandle(fd, name, READONLY, handle);
    if (opened != zelOKAY)
        return opened;
    int status = 0;
    for (int unit = 1; status == 0; unit++) {
        LONGLONG header = 0, data = 0, end = 0;
        fits_get_hduaddrll(handle.get(), &header, &data, &end, &status);
        // A unit always lies behind the one before it; sizes that overflow say otherwise.
        if (status != 0 || data <= header || end < data || header < contents.end)
            break;
        contents.end = end;
        Image image;
        image.unit = unit;
        if (readUnit(handle.get(), data, fileLength, image))
            contents.images.push_back(std::move(image));
        fits_clear_errmsg();
        if (end >= fileLength)
            break;
        fits_movrel_hdu(handle.get(), 1, nullptr, &status);
        if (status != 0 && status != END_OF_FILE)
            zelError(zelSevWarning, "%s: what follows unit %d is no unit", name, unit);
    }
    fits_clear_errmsg();
    return contents.images.empty() ? zelStatusEncode(zelUNSUPPORTEDBYFILE) : zelOKAY;
}

zelStatus rewriteTag(int fd, const char* name, const Image& image, int tag) {
    Handle handle;
    const zelTagDescription* const known = findTag(tag);
    const zelStatus opened =
        known ? openHandle(fd, name, READWRITE, handle) : zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    if (opened != zelOKAY)
        return opened;
    int status = 0;
    fits_movabs_hdu(handle.get(), image.unit, nullptr, &status);
    if (status == 0)
        status = writeTag(handle.get(), *known, image.tags);
    int closing = 0;
    fits_close_file(handle.release(), &closing);
    if (status != 0 || closing != 0)
        reportComplaints(name);
    return toStatus(status != 0 ? status : closing, zelWRITEFAILED);
}

} // namespace zelfits
