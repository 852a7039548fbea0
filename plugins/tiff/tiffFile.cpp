#include "tiffFile.h"

#include "colormap.h"
#include "pageWriter.h"
#include "tags.h"

#include "kit/sizes.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace zeltiff {

namespace {

// Larger pages of files opened to be read are not kept.
constexpr std::size_t largestKeptPage = 32 << 20;
// Until pages are wanted that need more, libtiff gets as much at a time: it passes over longer
// tags, of which programs keep hundreds of megabytes in a file.
constexpr std::int64_t narrowAllowance{zelkit::largestProfile};
constexpr std::int64_t readingAllowance = 16 << 20;
constexpr std::int64_t updateAllowance = 256 << 20;
constexpr std::int64_t allowancePerByte = 8;

zelStatus firstFailure(zelStatus first, zelStatus second) {
    return first != zelOKAY ? first : second;
}

} // namespace

void TiffFile::readOptions() {
    const zelkit::Argument known[] = {{"bigtiff", &options_.bigTiff},
                                      {"predictor", &options_.predictor, 1, 3},
                                      {"quality", &options_.quality, 1, 100},
                                      {"level", &options_.level, 1, 9},
                                      {"rowsperstrip", &options_.rowsPerStrip, 1, INT_MAX}};
    readArguments(known);
}

Attributes TiffFile::attributes() const {
    return {size, pageSize, dtype, order, cm, orientation, compression};
}

zelStatus TiffFile::openHandle(const char* mode, std::int64_t largestBlock) {
    return handle_.open(fd, nameForMessages(), mode, largestBlock);
}

// For each allocation of libtiff; none for what was made here.
std::int64_t TiffFile::memoryLimit() const {
    std::int64_t length = 0;
    if (firstOurs_ != INT_MAX || zelkit::getFileLength(fd, length) != zelOKAY)
        return 0;
    const std::int64_t allowance = accessmode == 2 ? updateAllowance : readingAllowance;
    return allowance + std::min(length, INT64_MAX / 2 / allowancePerByte) * allowancePerByte;
}

zelStatus TiffFile::openFile() {
    readOptions();
    narrow_ = accessmode == 0;
    zelStatus status =
        narrow_ ? openHandle("rmC", narrowAllowance) : openHandle("r+mC", memoryLimit());
    if (status == zelOKAY)
        status = showDirectory(0);
    return status != zelOKAY && narrow_ && handle_.lackedMemory() ? reopenWide(0) : status;
}

zelStatus TiffFile::reopenWide(int image) {
    narrow_ = false;
    handle_.close();
    current_ = 0; // where a handle that was just opened stands
    const zelStatus status = openHandle("rmC", memoryLimit());
    return status == zelOKAY ? goToImage(image) : status;
}

// What a codec takes is a few times a block.
bool TiffFile::needsMoreMemory() const {
    constexpr std::int64_t copies = 4;
    return narrow_ && !forBlocks_ && !layout_.raw &&
           layout_.bytesOf(layout_.blockHeight) > narrowAllowance / copies;
}

// Beside the handle, which clients may have texts of.
zelStatus TiffFile::openForBlocks() {
    auto wide = std::make_unique<Handle>();
    zelStatus status = wide->open(fd, nameForMessages(), "rmC", memoryLimit());
    if (status == zelOKAY) {
        const auto directory = static_cast<tdir_t>(current_);
        status = wide->check(TIFFSetDirectory(wide->get(), directory) == 1, zelCORRUPTED);
    }
    if (status == zelOKAY)
        status = reader_.start(*wide, layout_);
    if (status != zelOKAY)
        return status;
    setUpCodec(wide->get(), options_);
    forBlocks_ = std::move(wide);
    return zelOKAY;
}

zelStatus TiffFile::createFile() {
    readOptions();
    Attributes image = attributes();
    zelStatus status = settleAttributes(image, options_, nameForMessages());
    if (status == zelOKAY)
        status = makeFile();
    const bool big = options_.bigTiff || needsBigTiff(image);
    if (status == zelOKAY)
        status = openHandle(big ? "w8m" : "wm", 0);
    if (status == zelOKAY)
        status = writeDirectory(handle_, image, options_);
    if (status == zelOKAY)
        status = handle_.close();
    if (status == zelOKAY)
        status = openHandle("r+mC", 0);
    if (status != zelOKAY)
        return status;
    firstOurs_ = 0;
    images_ = 1;
    holed_ = {0};
    return showDirectory(0);
}

zelStatus TiffFile::closeFile() {
    zelStatus status = flushPage();
    status = firstFailure(status, fillHoles());
    status = firstFailure(status, handle_.close());
    return firstFailure(status, closeDescriptor());
}

zelStatus TiffFile::flush() {
    return accessmode == 2 ? writeOut() : zelOKAY;
}

// Takes the current directory of libtiff as image `image`.
zelStatus TiffFile::showDirectory(int image) {
    const Use use = isOurs(image) ? Use::Create : accessmode == 2 ? Use::Update : Use::Read;
    Layout layout;
    zelStatus status = readLayout(handle_, use, layout);
    if (status == zelOKAY)
        status = reader_.start(handle_, layout);
    if (status != zelOKAY)
        return status;
    setUpCodec(handle_.get(), options_);
    forBlocks_.reset();
    layout_ = layout;
    current_ = image;
    cache_ = PageCache();
    colormap_.reset();
    const Attributes& shown = layout_.attributes;
    size = shown.size;
    pageSize = shown.pageSize;
    dtype = shown.type;
    order = shown.order;
    cm = shown.model;
    orientation = shown.orientation;
    compression = shown.compression;
    return zelOKAY;
}

zelStatus TiffFile::selectImage(int image) {
    const zelStatus status = goToImage(image);
    return status != zelOKAY && narrow_ && handle_.lackedMemory() ? reopenWide(image) : status;
}

zelStatus TiffFile::goToImage(int image) {
    if (checkOpen() != zelOKAY)
        return checkOpen();
    TIFF* const tiff = handle_.get();
    // A step forward needs no walk along the chain of directories.
    const bool next = accessmode == 0 && image == current_ + 1;
    const bool read =
        (next ? TIFFReadDirectory(tiff) : TIFFSetDirectory(tiff, static_cast<tdir_t>(image))) == 1;
    const zelStatus status = handle_.check(read, zelCORRUPTED);
    return status == zelOKAY ? showDirectory(image) : status;
}

// Writes the page in hand and the directory. libtiff forgets a directory that it writes anew.
zelStatus TiffFile::writeOut() {
    zelStatus status = checkOpen();
    if (status != zelOKAY)
        return status;
    status = flushPage();
    status = firstFailure(status, handle_.check(TIFFFlush(handle_.get()) == 1, zelWRITEFAILED));
    if (TIFFCurrentDirOffset(handle_.get()) == 0)
        status = firstFailure(status, selectImage(current_));
    return status;
}

int TiffFile::getNumImgs() {
    if (images_ < 0 && checkOpen() == zelOKAY) {
        const int complaints = handle_.complaints();
        const tdir_t count = TIFFNumberOfDirectories(handle_.get());
        // The first one is open, even if the link behind it is cut off.
        images_ = static_cast<int>(std::clamp<tdir_t>(count, 1, INT_MAX));
        chainIsSound_ =
            handle_.check(true, zelCORRUPTED) == zelOKAY && handle_.complaints() == complaints;
    }
    return std::max(images_, 1);
}

zelStatus TiffFile::setCurrentImg(int i) {
    if (i == current_)
        return zelOKAY;
    if (i < 0 || i >= getNumImgs())
        return zelStatusEncode(zelFILEINDEXOOB);
    const int before = current_;
    zelStatus status = flush();
    if (status != zelOKAY)
        return status;
    noteHoles();
    status = selectImage(i);
    if (status != zelOKAY) {
        if (checkOpen() != zelOKAY)
            return status;
        if (TIFFSetDirectory(handle_.get(), static_cast<tdir_t>(before)) == 1)
            showDirectory(before);
        handle_.check(true, zelCORRUPTED);
        return status;
    }
    markAttributesChanged();
    return zelOKAY;
}

zelStatus TiffFile::appendImg(zelFile* source, zelFileConfig* config) {
    const zelStatus writable = checkWritable();
    if (writable != zelOKAY)
        return writable;
    zelFileConfig wish;
    if (config)
        wish = *config;
    zelStatus status = format->applyDefaults(source, wish);
    if (status != zelOKAY)
        return status;
    Attributes image{zelSize(),
                     zelSize(),
                     wish.getDataType(),
                     wish.getOrder(),
                     wish.getColorModel(),
                     wish.getOrientation(),
                     wish.getCompression()};
    wish.getSize(image.size);
    wish.getPageSize(image.pageSize);
    status = settleAttributes(image, options_, nameForMessages());
    // libtiff follows the chain of directories to its end, which a damaged one may not have.
    if (status == zelOKAY && (getNumImgs() == INT_MAX || !chainIsSound_))
        status = zelStatusEncode(zelCORRUPTED);
    if (status == zelOKAY)
        status = writeOut();
    if (status == zelOKAY)
        status = addImage(image);
    double min = 0, max = 0;
    if (status == zelOKAY && source && source->getScaleMinMax(min, max) == zelOKAY)
        setScaleMinMax(min, max);
    if (status == zelOKAY && source && source->getStatMinMax(min, max) == zelOKAY)
        setStatMinMax(min, max);
    return status;
}

// A handle that appends starts with an empty directory; taking one away from a handle that has read
// it would leave its codec's memory behind.
zelStatus TiffFile::addImage(const Attributes& image) {
    const int before = current_;
    noteHoles();
    zelStatus status = handle_.close();
    if (status == zelOKAY)
        status = openHandle("amC", 0);
    if (status == zelOKAY)
        status = writeDirectory(handle_, image, options_);
    status = firstFailure(status, handle_.close());
    const bool added = status == zelOKAY;
    if (added) {
        firstOurs_ = std::min(firstOurs_, images_);
        holed_.push_back(images_);
        images_++;
        markAttributesChanged();
    }
    const zelStatus reopened = openHandle("r+mC", memoryLimit());
    if (reopened != zelOKAY)
        return firstFailure(status, reopened);
    return firstFailure(status, selectImage(added ? images_ - 1 : before));
}

// Drops the current image from the list of those that may have unwritten blocks, if it has none.
void TiffFile::noteHoles() {
    if (isOurs(current_) && !hasUnwrittenBlocks(handle_.get(), layout_))
        std::erase(holed_, current_);
}

zelStatus TiffFile::fillHoles() {
    zelStatus status = checkOpen();
    if (status != zelOKAY)
        return status;
    noteHoles();
    for (const int image : holed_) {
        if (status == zelOKAY && image != current_)
            status = firstFailure(writeOut(), selectImage(image));
        if (status == zelOKAY)
            status = writeMissingBlocks(handle_, layout_);
    }
    holed_.clear();
    return status;
}

// The handle is lost if it could not be opened again after an image was added.
zelStatus TiffFile::checkOpen() const {
    return handle_.get() ? zelOKAY : zelStatusEncode(zelREADFAILED);
}

zelStatus TiffFile::checkWritable() const {
    return accessmode == 2 ? checkOpen() : zelStatusEncode(zelREADONLY);
}

std::size_t TiffFile::pageBytes() const {
    return zelDataSize(dtype, pageSize);
}

bool TiffFile::isPage(const PageArea& area) const {
    const auto fits = [](int at, int count, int page, int extent) {
        return at >= 0 && at < extent && at % page == 0 && count == std::min(page, extent - at);
    };
    return fits(area.x, area.nx, pageSize.x, size.x) && fits(area.y, area.ny, pageSize.y, size.y) &&
           fits(area.z, area.nz, pageSize.z, size.z) && fits(area.c, area.nc, pageSize.c, size.c);
}

zelStatus TiffFile::getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                            int nc) {
    const PageArea area{x, y, z, c, nx, ny, nz, nc};
    if (!data || !isPage(area))
        return zelStatusEncode(zelBADPARAMS);
    if (checkOpen() != zelOKAY)
        return checkOpen();
    if (cache_.holds(area)) {
        std::memcpy(data, cache_.bytes.data(), cache_.bytes.size());
        return zelOKAY;
    }
    if (needsMoreMemory()) {
        const zelStatus opened = openForBlocks();
        if (opened != zelOKAY)
            return opened;
    }
    Handle& blocks = forBlocks_ ? *forBlocks_ : handle_;
    const zelStatus status = reader_.read(blocks, layout_, area, static_cast<std::uint8_t*>(data));
    if (status == zelOKAY && !layout_.raw && !cache_.dirty && pageBytes() <= largestKeptPage)
        cachePage(area, data, false);
    return status;
}

zelStatus TiffFile::setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                            int nc) {
    const zelStatus writable = checkWritable();
    if (writable != zelOKAY)
        return writable;
    const PageArea area{x, y, z, c, nx, ny, nz, nc};
    if (!data || !isPage(area))
        return zelStatusEncode(zelBADPARAMS);
    if (!canWritePages(layout_))
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    if (layout_.raw)
        return writePage(handle_, layout_, area, static_cast<const std::uint8_t*>(data));
    const zelStatus status = cache_.holds(area) ? zelOKAY : flushPage();
    if (status == zelOKAY)
        cachePage(area, data, true);
    return status;
}

void TiffFile::cachePage(const PageArea& area, const void* data, bool dirty) {
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    cache_.bytes.assign(bytes, bytes + pageBytes());
    cache_.area = area;
    cache_.valid = true;
    cache_.dirty = dirty;
}

zelStatus TiffFile::flushPage() {
    if (!cache_.dirty)
        return zelOKAY;
    cache_.dirty = false;
    reader_.forgetPosition();
    const zelStatus status = writePage(handle_, layout_, cache_.area, cache_.bytes.data());
    // What a lossy codec made of the page is only known by reading it.
    cache_.valid = status == zelOKAY && compression != zelJPEG;
    return status;
}

zelStatus TiffFile::getColormap(const zelColormap*& colormap) {
    if (!colormap_ && checkOpen() == zelOKAY)
        colormap_ = readColormap(handle_.get(), layout_);
    colormap = colormap_.get();
    return colormap_ ? zelOKAY : zelStatusEncode(zelUNSUPPORTEDBYFILE);
}

zelStatus TiffFile::setColormap(const zelColormap* colormap) {
    const zelStatus writable = checkWritable();
    if (writable != zelOKAY)
        return writable;
    if (!colormap)
        return zelStatusEncode(zelBADPARAMS);
    if (!layout_.palette || layout_.storedBits > 16)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    const zelStatus status = writeColormap(handle_, layout_, *colormap);
    colormap_.reset();
    return status;
}

zelStatus TiffFile::getStatMinMax(double& min, double& max) {
    double low = 0, high = 0;
    if (checkOpen() != zelOKAY)
        return checkOpen();
    if (TIFFGetField(handle_.get(), TIFFTAG_SMINSAMPLEVALUE, &low) != 1 ||
        TIFFGetField(handle_.get(), TIFFTAG_SMAXSAMPLEVALUE, &high) != 1)
        return zelStatusEncode(zelBADFIELDGET);
    min = low * layout_.samples.factor();
    max = high * layout_.samples.factor();
    return zelOKAY;
}

zelStatus TiffFile::setStatMinMax(double min, double max) {
    const zelStatus writable = checkWritable();
    if (writable != zelOKAY)
        return writable;
    const double factor = layout_.samples.factor();
    if (!std::isfinite(min) || !std::isfinite(max))
        return zelStatusEncode(zelBADPARAMS);
    const bool set = TIFFSetField(handle_.get(), TIFFTAG_SMINSAMPLEVALUE, min / factor) == 1 &&
                     TIFFSetField(handle_.get(), TIFFTAG_SMAXSAMPLEVALUE, max / factor) == 1;
    return handle_.check(set, zelBADFIELDSET);
}

zelStatus TiffFile::getScaleMinMax(double& min, double& max) {
    std::uint16_t low = 0, high = 0;
    if (checkOpen() != zelOKAY)
        return checkOpen();
    if (TIFFGetField(handle_.get(), TIFFTAG_MINSAMPLEVALUE, &low) != 1 ||
        TIFFGetField(handle_.get(), TIFFTAG_MAXSAMPLEVALUE, &high) != 1)
        return zelStatusEncode(zelBADFIELDGET);
    min = low * layout_.samples.factor();
    max = high * layout_.samples.factor();
    return zelOKAY;
}

zelStatus TiffFile::setScaleMinMax(double min, double max) {
    const zelStatus writable = checkWritable();
    if (writable != zelOKAY)
        return writable;
    const double low = std::round(min / layout_.samples.factor());
    const double high = std::round(max / layout_.samples.factor());
    // The two tags hold whole numbers of 16 bits.
    const auto fits = [](double value) { return value >= 0 && value <= 65535; };
    if (!fits(low) || !fits(high) || layout_.samples.factor() * low != min ||
        layout_.samples.factor() * high != max)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    const bool set =
        TIFFSetField(handle_.get(), TIFFTAG_MINSAMPLEVALUE, static_cast<int>(low)) == 1 &&
        TIFFSetField(handle_.get(), TIFFTAG_MAXSAMPLEVALUE, static_cast<int>(high)) == 1;
    return handle_.check(set, zelBADFIELDSET);
}

zelStatus TiffFile::getItem(int tag, va_list args) {
    const zelStatus opened = checkOpen();
    return opened == zelOKAY ? zeltiff::getTag(handle_.get(), tag, args) : opened;
}

zelStatus TiffFile::setItem(int tag, va_list args) {
    const zelStatus writable = checkWritable();
    return writable == zelOKAY ? zeltiff::setTag(handle_, tag, args) : writable;
}

zelStatus TiffFile::_getICCProfile(int& bytes, void*& profile) {
    std::uint32_t stored = 0;
    void* data = nullptr;
    if (checkOpen() != zelOKAY)
        return checkOpen();
    if (TIFFGetField(handle_.get(), TIFFTAG_ICCPROFILE, &stored, &data) != 1 || stored == 0 ||
        stored > INT_MAX)
        return zelStatusEncode(zelBADFIELDGET);
    void* const copy = std::malloc(stored);
    if (!copy)
        return zelStatusEncode(zelMALLOCFAILED, 1, errno);
    std::memcpy(copy, data, stored);
    bytes = static_cast<int>(stored);
    profile = copy;
    return zelOKAY;
}

zelStatus TiffFile::_freeICCProfile(void* profile) {
    std::free(profile);
    return zelOKAY;
}

zelStatus TiffFile::_setICCProfile(int bytes, const void* profile) {
    zelStatus status = checkWritable();
    if (status == zelOKAY && (bytes < 0 || (bytes > 0 && !profile)))
        status = zelStatusEncode(zelBADPARAMS);
    // libtiff takes this tag only before pages are written to a directory that it has read.
    if (status == zelOKAY)
        status = writeOut();
    if (status == zelOKAY)
        status = selectImage(current_);
    if (status != zelOKAY)
        return status;
    const int set = bytes == 0 ? TIFFUnsetField(handle_.get(), TIFFTAG_ICCPROFILE)
                               : TIFFSetField(handle_.get(), TIFFTAG_ICCPROFILE, bytes, profile);
    return handle_.check(set == 1, zelBADFIELDSET);
}

} // namespace zeltiff
