#include "kit/scanlineFile.h"

#include "kit/bits.h"
#include "kit/palette.h"
#include "kit/sizes.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace zelkit {

namespace {

std::span<const zelTagDescription> tagsOf(zelFormat* format) {
    int count = 0;
    const zelTagDescription* const first = format ? format->getTagDescriptions(count) : nullptr;
    return {first, static_cast<std::size_t>(count)};
}

} // namespace

std::size_t ScanlineFile::rowBytes() const {
    return bytesOf(size.x);
}

// Of a row of so many pixels.
std::size_t ScanlineFile::bytesOf(int pixels) const {
    const auto elements = static_cast<std::size_t>(pixels) * static_cast<std::size_t>(size.c);
    return dtype == zelBit ? (elements + 7) / 8 : elements * zelDataSize(dtype, 1);
}

zelStatus ScanlineFile::makeBand() {
    held_ = -1;
    wanted_ = -1;
    next_ = -1;
    const auto bytes = checkedProduct(
        {static_cast<std::int64_t>(bytesOf(pageSize.x)), std::min(pageSize.y, size.y)});
    const auto elements = checkedProduct({pageSize.x, pageSize.y, pageSize.c});
    if (!bytes || !elements || *elements > INT_MAX)
        return zelStatusEncode(zelBADPARAMS);
    return band_.allocate(static_cast<std::size_t>(*bytes)) ? zelOKAY : noMemory();
}

zelStatus ScanlineFile::beginReading() {
    const auto elements = checkedProduct({size.x, size.c});
    if (size.x < 1 || size.y < 1 || size.c < 1 || !elements || *elements > INT_MAX)
        return zelStatusEncode(zelBADPARAMS);
    const auto bytes = static_cast<std::int64_t>(rowBytes());
    order = zelInterleaved;
    pageSize = zelSize(size.x, bandRows(bytes, size.y), 1, size.c);
    use_ = Use::Reading;
    return makeBand();
}

zelStatus ScanlineFile::beginWriting() {
    if (size.x < 1 || size.y < 1 || size.z != 1 || size.c < 1 || pageSize.x < 1 ||
        pageSize.x > size.x || pageSize.y < 1 || pageSize.z != 1 || pageSize.c != size.c)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    use_ = Use::Writing;
    writeStatus_ = zelOKAY;
    return makeBand();
}

zelStatus ScanlineFile::prepareNextImage(zelFile* source, const zelFileConfig* config) {
    zelStatus status = checkWritable();
    if (status != zelOKAY)
        return status;
    zelFileConfig wanted = config ? *config : zelFileConfig();
    status = format->applyDefaults(source ? source : this, wanted);
    zelSize wantedSize;
    wanted.getSize(wantedSize);
    if (status == zelOKAY && (wantedSize.x != size.x || wantedSize.y != size.y ||
                              wanted.getOrientation() != orientation)) {
        zelError(zelSevWarning, "%s: all images have the size and orientation of the first one",
                 nameForMessages());
        status = zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    }
    const int channels = zelColorModelChans(wanted.getColorModel());
    if (status == zelOKAY && channels != 0 && channels != wantedSize.c)
        status = zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    if (status == zelOKAY)
        status = finishWriting();
    if (status != zelOKAY)
        return status;
    size = wantedSize;
    wanted.getPageSize(pageSize);
    dtype = wanted.getDataType();
    cm = wanted.getColorModel();
    compression = wanted.getCompression();
    markAttributesChanged();
    return zelOKAY;
}

zelStatus ScanlineFile::finishWriting() {
    if (use_ != Use::Writing)
        return writeStatus_;
    zelStatus status = writeStatus_;
    const std::int64_t last = pageAt(size.x - 1, size.y - 1);
    if (next_ <= last) {
        if (status == zelOKAY)
            status = advanceTo(last);
        if (status == zelOKAY)
            status = emitPage();
    }
    if (status == zelOKAY)
        status = finishEncoding();
    use_ = Use::Finished;
    writeStatus_ = status;
    return status;
}

zelStatus ScanlineFile::closeFile() {
    const zelStatus written = finishWriting();
    const zelStatus closed = closeDescriptor();
    return written != zelOKAY ? written : closed;
}

zelStatus ScanlineFile::flush() {
    return use_ == Use::Writing && held_ >= 0 ? emitPage() : zelOKAY;
}

zelStatus ScanlineFile::checkWritable() const {
    if (accessmode != 2)
        return zelStatusEncode(zelREADONLY);
    if (use_ == Use::Writing)
        return zelOKAY;
    zelError(zelSevWarning, "%s: the format cannot change an existing image", nameForMessages());
    return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

zelStatus ScanlineFile::checkHeaderOpen() const {
    const zelStatus status = checkWritable();
    if (status != zelOKAY || next_ < 0)
        return status;
    zelError(zelSevWarning, "%s: tags, colour map and profile come before the first rows",
             nameForMessages());
    return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

bool ScanlineFile::isPage(int x, int y, int z, int c, int nx, int ny, int nz, int nc) const {
    const auto fits = [](int at, int count, int page, int extent) {
        return at >= 0 && at < extent && at % page == 0 && count == std::min(page, extent - at);
    };
    return fits(x, nx, pageSize.x, size.x) && fits(y, ny, pageSize.y, size.y) && z == 0 &&
           nz == 1 && c == 0 && nc == size.c;
}

// The number of the page with this pixel: x fastest.
std::int64_t ScanlineFile::pageAt(int x, int y) const {
    const std::int64_t columns = (size.x - 1) / pageSize.x + 1;
    return y / pageSize.y * columns + x / pageSize.x;
}

// The rows of bits lie in a page without padding.
void ScanlineFile::bandToPage(void* data, int rows) const {
    auto* const bytes = static_cast<std::uint8_t*>(data);
    const std::int64_t elements = std::int64_t{pageSize.x} * size.c;
    const std::size_t stride = bytesOf(pageSize.x);
    if (dtype != zelBit || elements % 8 == 0)
        std::memcpy(bytes, band_.data(), stride * static_cast<std::size_t>(rows));
    else
        for (int row = 0; row < rows; row++)
            moveBits(bytes, row * elements, band_.data() + stride * static_cast<std::size_t>(row),
                     0, elements);
}

void ScanlineFile::pageToBand(const void* data, int rows) {
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    const std::int64_t elements = std::int64_t{pageSize.x} * size.c;
    const std::size_t stride = bytesOf(pageSize.x);
    if (dtype != zelBit || elements % 8 == 0)
        std::memcpy(band_.data(), bytes, stride * static_cast<std::size_t>(rows));
    else
        for (int row = 0; row < rows; row++)
            moveBits(band_.data() + stride * static_cast<std::size_t>(row), 0, bytes,
                     row * elements, elements);
}

zelStatus ScanlineFile::skipRows(int count) {
    zelStatus status = zelOKAY;
    while (count > 0 && status == zelOKAY) {
        const int rows = std::min(count, pageSize.y);
        status = decodeRows(band_.data(), rows);
        count -= rows;
    }
    return status;
}

// The pages of a file in reading are bands.
zelStatus ScanlineFile::decodeBand(int band, std::uint8_t* rows) {
    zelStatus status = zelOKAY;
    if (next_ < 0 || next_ > band) {
        status = startDecoding();
        next_ = 0;
    }
    if (status == zelOKAY && next_ < band)
        status = skipRows((band - static_cast<int>(next_)) * pageSize.y);
    if (status == zelOKAY)
        status = decodeRows(rows, std::min(pageSize.y, size.y - band * pageSize.y));
    // After a failure nobody knows where the codec stands.
    next_ = status == zelOKAY ? band + 1 : -1;
    return status;
}

zelStatus ScanlineFile::readBand(int band) {
    if (band == held_)
        return zelOKAY;
    held_ = -1;
    const zelStatus status = decodeBand(band, band_.data());
    if (status == zelOKAY)
        held_ = band;
    return status;
}

zelStatus ScanlineFile::getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                                int nc) {
    if (!data || !isPage(x, y, z, c, nx, ny, nz, nc))
        return zelStatusEncode(zelBADPARAMS);
    if (use_ == Use::Reading) {
        const int band = y / pageSize.y;
        const bool again = std::exchange(wanted_, band) == band;
        if (rowsAreAtHand() && dtype != zelBit && !again && band != held_)
            return decodeBand(band, static_cast<std::uint8_t*>(data));
        const zelStatus status = readBand(band);
        if (status != zelOKAY)
            return status;
    } else if (const std::int64_t page = pageAt(x, y); page != held_) {
        if (use_ == Use::Finished || page < next_ || page < held_)
            return zelStatusEncode(zelUNSUPPORTEDBYFILE);
        std::memset(data, 0, zelDataSize(dtype, pageSize));
        return zelOKAY;
    }
    bandToPage(data, ny);
    return zelOKAY;
}

// Encodes the page in hand, unless an earlier one failed.
zelStatus ScanlineFile::emitPage() {
    zelStatus status = writeStatus_;
    if (status == zelOKAY && next_ < 0)
        status = startEncoding();
    const std::int64_t columns = (size.x - 1) / pageSize.x + 1;
    const auto x = static_cast<int>(held_ % columns) * pageSize.x;
    const auto y = static_cast<int>(held_ / columns) * pageSize.y;
    if (status == zelOKAY)
        status = encodePage(band_.data(), x, y, std::min(pageSize.x, size.x - x),
                            std::min(pageSize.y, size.y - y));
    next_ = held_ + 1;
    held_ = -1;
    writeStatus_ = status;
    return status;
}

// Encodes all pages before the given one, which is not encoded yet, and takes that in hand: with
// elements of 0, if it is not there already.
zelStatus ScanlineFile::advanceTo(std::int64_t page) {
    zelStatus status = zelOKAY;
    while (held_ != page && status == zelOKAY) {
        const std::int64_t next = held_ >= 0 ? held_ + 1 : std::max<std::int64_t>(next_, 0);
        if (held_ >= 0)
            status = emitPage();
        if (status == zelOKAY) {
            std::memset(band_.data(), 0, band_.size());
            held_ = next;
        }
    }
    return status;
}

zelStatus ScanlineFile::setPage(const void* data, int x, int y, int z, int c, int nx, int ny,
                                int nz, int nc) {
    zelStatus status = checkWritable();
    if (status == zelOKAY && (!data || !isPage(x, y, z, c, nx, ny, nz, nc)))
        status = zelStatusEncode(zelBADPARAMS);
    if (status == zelOKAY)
        status = writeStatus_;
    if (status != zelOKAY)
        return status;
    const std::int64_t page = pageAt(x, y);
    if (page < next_ || page < held_) {
        zelError(zelSevWarning, "%s: pages are written once, from the first to the last",
                 nameForMessages());
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    }
    status = advanceTo(page);
    if (status == zelOKAY)
        pageToBand(data, ny);
    return status;
}

zelStatus ScanlineFile::startEncoding() {
    return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

zelStatus ScanlineFile::encodePage(const std::uint8_t* elements, int, int, int nx, int ny) {
    return nx == size.x ? encodeRows(elements, ny) : zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

zelStatus ScanlineFile::encodeRows(const std::uint8_t*, int) {
    return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

zelStatus ScanlineFile::finishEncoding() {
    return zelOKAY;
}

zelStatus ScanlineFile::getColormap(const zelColormap*& colormap) {
    colormap = palette.get();
    return palette ? zelOKAY : zelStatusEncode(zelUNSUPPORTEDBYFILE);
}

zelStatus ScanlineFile::setColormap(const zelColormap* colormap) {
    const zelStatus status = checkHeaderOpen();
    if (status != zelOKAY)
        return status;
    if (cm != zelRGBPalette)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    auto copy = colormap ? paletteOf(*colormap) : nullptr;
    if (!copy)
        return zelStatusEncode(zelBADPARAMS);
    palette = std::move(copy);
    return zelOKAY;
}

zelStatus ScanlineFile::getItem(int tag, va_list args) {
    return getField(fields, tagsOf(format), tag, args);
}

zelStatus ScanlineFile::setItem(int tag, va_list args) {
    const zelStatus status = checkHeaderOpen();
    return status == zelOKAY ? setField(fields, tagsOf(format), tag, args) : status;
}

bool ScanlineFile::carriesIccProfile() const {
    return false;
}

zelStatus ScanlineFile::_getICCProfile(int& bytes, void*& profile) {
    if (!carriesIccProfile())
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    if (iccProfile.empty() || iccProfile.size() > INT_MAX)
        return zelStatusEncode(zelBADFIELDGET);
    void* const copy = std::malloc(iccProfile.size());
    if (!copy)
        return noMemory();
    std::memcpy(copy, iccProfile.data(), iccProfile.size());
    bytes = static_cast<int>(iccProfile.size());
    profile = copy;
    return zelOKAY;
}

zelStatus ScanlineFile::_freeICCProfile(void* profile) {
    std::free(profile);
    return zelOKAY;
}

zelStatus ScanlineFile::_setICCProfile(int bytes, const void* profile) {
    if (!carriesIccProfile())
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    zelStatus status = checkHeaderOpen();
    if (status == zelOKAY && (bytes < 0 || (bytes > 0 && !profile)))
        status = zelStatusEncode(zelBADPARAMS);
    if (status != zelOKAY)
        return status;
    const auto* const first = static_cast<const std::uint8_t*>(profile);
    iccProfile.assign(first, first + bytes);
    return zelOKAY;
}

} // namespace zelkit
