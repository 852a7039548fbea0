#include "fitsFile.h"

#include "cards.h"

#include "kit/sizes.h"

#include <zel/zelFormat.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

namespace zelfits {

namespace {

// Numbers are turned in pieces of this many bytes of the file.
constexpr std::int64_t pieceBytes = 64 * 1024;

std::int64_t wholeBlocks(std::int64_t bytes) {
    return (bytes + blockBytes - 1) / blockBytes * blockBytes;
}

} // namespace

// Opening

void FitsFile::readOptions() {
    const zelkit::Argument arguments[] = {{"raw", &raw_}};
    readArguments(arguments);
}

zelStatus FitsFile::openFile() {
    readOptions();
    const zelStatus status = scan(fd, nameForMessages(), contents_);
    return status == zelOKAY ? showImage(0) : status;
}

zelStatus FitsFile::closeFile() {
    return closeDescriptor();
}

// Fills the attributes of an image that can be shown.
zelStatus FitsFile::showImage(int i) {
    const Image& shown = contents_.images[static_cast<std::size_t>(i)];
    if (shown.status != zelOKAY)
        return shown.status;
    const Elements elements(shown.storage, raw_);
    if (shown.size.x > INT_MAX / static_cast<int>(sizeof(double)))
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    current_ = i;
    elements_ = elements;
    size = shown.size;
    dtype = elements.type();
    order = zelSeparate;
    cm = shown.colorModel;
    orientation = zelLowerLeftOrigin;
    compression = zelNoCompression;
    const std::int64_t rowBytes = std::int64_t{size.x} * elements.storedBytes();
    pageSize = zelSize(size.x, zelkit::bandRows(rowBytes, size.y), 1, 1);
    return zelOKAY;
}

// Pages

bool FitsFile::isPage(int x, int y, int z, int c, int nx, int ny, int nz, int nc) const {
    return x == 0 && nx == size.x && nz == 1 && nc == 1 && z >= 0 && z < size.z && c >= 0 &&
           c < size.c && y >= 0 && ny >= 1 && ny <= pageSize.y && y <= size.y - ny;
}

// That the whole image lies inside the file is known, so nothing here overflows.
std::int64_t FitsFile::offsetOf(int y, int z, int c) const {
    const std::int64_t row = (std::int64_t{z} * size.c + c) * size.y + y;
    return image().dataOffset + row * size.x * elements_.storedBytes();
}

zelStatus FitsFile::getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                            int nc) {
    if (!data || !isPage(x, y, z, c, nx, ny, nz, nc))
        return zelStatusEncode(zelBADPARAMS);
    const std::int64_t count = std::int64_t{nx} * ny;
    const std::int64_t width = elements_.storedBytes();
    auto* const page = static_cast<std::uint8_t*>(data);
    if (elements_.reversible()) {
        const zelStatus status =
            zelkit::readExact(fd, page, static_cast<std::size_t>(count * width), offsetOf(y, z, c));
        if (status == zelOKAY)
            elements_.decode(page, count, page);
        return status;
    }
    std::vector<std::uint8_t> piece(static_cast<std::size_t>(pieceBytes));
    const auto elementBytes = static_cast<std::int64_t>(zelDataSize(dtype, 1));
    for (std::int64_t done = 0; done < count; done += pieceBytes / width) {
        const std::int64_t now = std::min(pieceBytes / width, count - done);
        const zelStatus status =
            zelkit::readExact(fd, piece.data(), static_cast<std::size_t>(now * width),
                              offsetOf(y, z, c) + done * width);
        if (status != zelOKAY)
            return status;
        elements_.decode(piece.data(), now, page + done * elementBytes);
    }
    return zelOKAY;
}

zelStatus FitsFile::setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                            int nc) {
    if (accessmode == 0)
        return zelStatusEncode(zelREADONLY);
    if (!data || !isPage(x, y, z, c, nx, ny, nz, nc))
        return zelStatusEncode(zelBADPARAMS);
    if (!elements_.reversible())
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    const std::int64_t count = std::int64_t{nx} * ny;
    const std::int64_t width = elements_.storedBytes();
    const auto* const page = static_cast<const std::uint8_t*>(data);
    std::vector<std::uint8_t> piece(static_cast<std::size_t>(pieceBytes));
    for (std::int64_t done = 0; done < count; done += pieceBytes / width) {
        const std::int64_t now = std::min(pieceBytes / width, count - done);
        elements_.encode(page + done * width, now, piece.data());
        const zelStatus status =
            zelkit::writeExact(fd, piece.data(), static_cast<std::size_t>(now * width),
                               offsetOf(y, z, c) + done * width);
        if (status != zelOKAY)
            return status;
    }
    return zelOKAY;
}

// Several images

int FitsFile::getNumImgs() {
    return static_cast<int>(contents_.images.size());
}

int FitsFile::getCurrentImg() {
    return current_;
}

// Tags

zelStatus FitsFile::getStatMinMax(double& min, double& max) {
    const double* const low = image().tags.number(dataMinTag);
    const double* const high = image().tags.number(dataMaxTag);
    if (!low || !high)
        return zelStatusEncode(zelBADFIELDGET);
    min = *low;
    max = *high;
    return zelOKAY;
}

zelStatus FitsFile::setStatMinMax(double min, double max) {
    if (!std::isfinite(min) || !std::isfinite(max))
        return zelStatusEncode(zelBADPARAMS);
    zelkit::Fields tags = image().tags;
    tags.set(dataMinTag, min);
    tags.set(dataMaxTag, max);
    const zelStatus status = rewrite(tags, dataMinTag);
    return status == zelOKAY ? rewrite(tags, dataMaxTag) : status;
}

zelStatus FitsFile::getItem(int tag, va_list args) {
    return zelkit::getField(image().tags, tagTable(), tag, args);
}

zelStatus FitsFile::setItem(int tag, va_list args) {
    if (accessmode == 0)
        return zelStatusEncode(zelREADONLY);
    if (findTag(tag) && tag >= firstReadOnlyTag)
        return zelStatusEncode(zelBADFIELDSET);
    zelkit::Fields tags = image().tags;
    const zelStatus status = zelkit::setField(tags, tagTable(), tag, args);
    return status == zelOKAY ? rewrite(tags, tag) : status;
}

// A longer header moves the data, so the places of all images are looked up again.
zelStatus FitsFile::rewrite(const zelkit::Fields& tags, int tag) {
    if (accessmode == 0)
        return zelStatusEncode(zelREADONLY);
    Image changed = image();
    changed.tags = tags;
    const zelStatus written = rewriteTag(fd, nameForMessages(), changed, tag);
    Contents contents;
    const zelStatus scanned = scan(fd, nameForMessages(), contents);
    if (scanned != zelOKAY || contents.images.size() != contents_.images.size())
        return written == zelOKAY ? zelStatusEncode(zelCORRUPTED) : written;
    contents_ = std::move(contents);
    return written;
}

// Creating

// 0 is not always stored as bytes of 0.
zelStatus FitsFile::fillWithZeros(const Image& made, const Elements& elements) const {
    const zelStatus extended =
        zelkit::setFileLength(fd, made.dataOffset + wholeBlocks(made.dataBytes));
    if (extended != zelOKAY || made.storage.zero == 0)
        return extended;
    const std::int64_t most = std::min(pieceBytes, made.dataBytes);
    const std::vector<std::uint8_t> zeros(static_cast<std::size_t>(most));
    std::vector<std::uint8_t> stored(zeros.size());
    elements.encode(zeros.data(), most / elements.storedBytes(), stored.data());
    zelStatus status = zelOKAY;
    for (std::int64_t done = 0; status == zelOKAY && done < made.dataBytes; done += most)
        status = zelkit::writeExact(fd, stored.data(),
                                    static_cast<std::size_t>(std::min(most, made.dataBytes - done)),
                                    made.dataOffset + done);
    return status;
}

// Writes header and data of the new image at `offset`, which is where the last unit ends, and shows
// it.
zelStatus FitsFile::writeImage(const zelFileConfig& wanted, std::int64_t offset) {
    const auto storage = storageFor(wanted.getDataType());
    if (!storage)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    Image made;
    made.storage = *storage;
    made.size = wanted.getDimensions();
    made.colorModel = wanted.getColorModel();
    const int channels = zelColorModelChans(made.colorModel);
    const std::string header = formatHeader(made, offset == 0);
    made.dataOffset = offset + static_cast<std::int64_t>(header.size());
    const auto bytes = zelkit::checkedProduct(
        {made.size.x, made.size.y, made.size.z, made.size.c, storage->bytes()});
    if (!bytes || *bytes > INT64_MAX / 2 || (channels != 0 && channels != made.size.c))
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    made.dataBytes = *bytes;
    zelStatus status = zelkit::writeExact(fd, header.data(), header.size(), offset);
    if (status == zelOKAY)
        status = fillWithZeros(made, Elements(made.storage, false));
    if (status == zelOKAY)
        status = scan(fd, nameForMessages(), contents_);
    if (status != zelOKAY)
        return status;
    status = showImage(getNumImgs() - 1);
    pageSize = wanted.getPageDimensions();
    return status;
}

zelStatus FitsFile::createFile() {
    readOptions();
    raw_ = false; // new numbers are never scaled, and unsigned ones are to come back as such
    const zelFileConfig wanted(this);
    const zelStatus status = makeFile();
    return status == zelOKAY ? writeImage(wanted, 0) : status;
}

zelStatus FitsFile::appendImg(zelFile* source, zelFileConfig* config) {
    if (accessmode == 0)
        return zelStatusEncode(zelREADONLY);
    zelFileConfig wanted = config ? *config : zelFileConfig();
    zelStatus status = format->applyDefaults(source, wanted);
    std::int64_t length = 0;
    if (status == zelOKAY)
        status = zelkit::getFileLength(fd, length);
    if (status != zelOKAY)
        return status;
    if (length > contents_.end)
        return zelStatusEncode(zelCORRUPTED); // nobody knows what stands there
    const Contents before = contents_;
    status = writeImage(wanted, contents_.end);
    if (status != zelOKAY) {
        zelkit::setFileLength(fd, length); // the images that were there stay as they were
        contents_ = before;
    } else {
        markAttributesChanged();
    }
    return status;
}

} // namespace zelfits
