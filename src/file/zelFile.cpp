#include <zel/zelFile.h>

#include <cstdlib>

#include <zel/zelFormat.h>

namespace {

constexpr zelStatus unsupported = zelStatusEncode(zelUNSUPPORTEDBYFORMAT);

/// What older plug-ins have in the slots of ICC profiles and direct I/O is not known, so these are
/// called only for a plug-in that says that it was built with them.
bool hasGuardedSlots(const zelFormat* format) {
    return format && format->haveDSOVersion(2, 1);
}

} // namespace

constinit zelClassList zelFile::classList("zelFile", nullptr);

zelFile::zelFile()
    : filename(nullptr), fd(-1), accessmode(0), format(nullptr), formatArgs(nullptr),
      size(0, 0, 0, 0), dtype(), order(), pageSize(0, 0, 0, 0), cm(), orientation(), compression(),
      channelPermutation(nullptr), attrChanged(0), beginFileIO_CB(nullptr),
      beginFileIO_arg(nullptr), endFileIO_CB(nullptr), endFileIO_arg(nullptr) {}

zelFile::~zelFile() {
    std::free(filename);
    std::free(formatArgs);
    std::free(channelPermutation);
}

char* zelFile::getClassName(int parentIdx) const {
    return classList.find(parentIdx);
}

const zelClassList* zelFile::getClassId() const {
    return &classList;
}

int zelFile::derivesFrom(const zelClassList* className) const {
    return classList.find(className);
}

char* zelFile::getDefaultDescription() const {
    static char description[] = "Base File";
    return description;
}

char* zelFile::getFileName() const {
    return filename;
}

int zelFile::getFileDesc() const {
    return fd;
}

int zelFile::getFileMode() const {
    return accessmode;
}

zelFormat* zelFile::getFormat() const {
    return format;
}

zelColorModel zelFile::getColorModel() const {
    return cm;
}

int* zelFile::getChannelPermutation() const {
    return channelPermutation;
}

zelDataType zelFile::getDataType() const {
    return dtype;
}

zelOrder zelFile::getOrder() const {
    return order;
}

zelOrientation zelFile::getOrientation() const {
    return orientation;
}

zelCompression zelFile::getCompression() const {
    return compression;
}

int zelFile::getZsize() const {
    return size.z;
}

int zelFile::getCsize() const {
    return size.c;
}

void zelFile::getDimensions(zelSize& s) const {
    getSize(s, zelLowerLeftOrigin);
}

void zelFile::getSize(zelSize& s, zelOrientation o) const {
    s = size;
    zelMapSize(orientation, s, o);
}

void zelFile::getPageDimensions(zelSize& s) const {
    getPageSize(s, zelLowerLeftOrigin);
}

void zelFile::getPageSize(zelSize& s, zelOrientation o) const {
    s = pageSize;
    zelMapSize(orientation, s, o);
}

zelStatus zelFile::getTag(int tag, ...) {
    va_list args;
    va_start(args, tag);
    const zelStatus status = getItem(tag, args);
    va_end(args);
    return status;
}

zelStatus zelFile::getItem(int tag, ...) {
    va_list args;
    va_start(args, tag);
    const zelStatus status = getItem(tag, args);
    va_end(args);
    return status;
}

zelStatus zelFile::setTag(int tag, ...) {
    va_list args;
    va_start(args, tag);
    const zelStatus status = setItem(tag, args);
    va_end(args);
    return status;
}

zelStatus zelFile::setItem(int tag, ...) {
    va_list args;
    va_start(args, tag);
    const zelStatus status = setItem(tag, args);
    va_end(args);
    return status;
}

zelStatus zelFile::getTagV(int tag, va_list args) {
    return getItem(tag, args);
}

zelStatus zelFile::setTagV(int tag, va_list args) {
    return setItem(tag, args);
}

int zelFile::haveAttributesChanged() {
    const int changed = attrChanged;
    attrChanged = 0;
    return changed;
}

void zelFile::markAttributesChanged() {
    attrChanged = 1;
}

void zelFile::setBeginFileIO_CB(zelStatus (*cb)(void*), void* arg) {
    beginFileIO_CB = cb;
    beginFileIO_arg = arg;
}

void zelFile::setEndFileIO_CB(zelStatus (*cb)(void*), void* arg) {
    endFileIO_CB = cb;
    endFileIO_arg = arg;
}

zelStatus zelFile::beginFileIO() {
    return beginFileIO_CB ? beginFileIO_CB(beginFileIO_arg) : zelOKAY;
}

zelStatus zelFile::endFileIO() {
    return endFileIO_CB ? endFileIO_CB(endFileIO_arg) : zelOKAY;
}

zelStatus zelFile::getICCProfile(int& profileSize, void*& profile) {
    return hasGuardedSlots(format) ? _getICCProfile(profileSize, profile) : unsupported;
}

zelStatus zelFile::freeICCProfile(void* profile) {
    return hasGuardedSlots(format) ? _freeICCProfile(profile) : unsupported;
}

zelStatus zelFile::setICCProfile(int profileSize, const void* profile) {
    return hasGuardedSlots(format) ? _setICCProfile(profileSize, profile) : unsupported;
}

zelStatus zelFile::enableDirectIO(int enab) {
    return hasGuardedSlots(format) ? _enableDirectIO(enab) : unsupported;
}

zelStatus zelFile::getDirectIOMemAlignment(unsigned& align) {
    return hasGuardedSlots(format) ? _getDirectIOMemAlignment(align) : unsupported;
}

zelStatus zelFile::flush() {
    return zelOKAY;
}

int zelFile::getNumImgs() {
    return 1;
}

int zelFile::getCurrentImg() {
    return 0;
}

zelStatus zelFile::setCurrentImg(int i) {
    if (i == getCurrentImg())
        return zelOKAY;
    if (i < 0 || i >= getNumImgs())
        return zelStatusEncode(zelFILEINDEXOOB);
    return zelStatusEncode(zelUNSUPPORTEDBYLIBRARY);
}

zelStatus zelFile::getPage(void*, int, int, int, int, int, int, int, int) {
    return unsupported;
}

zelStatus zelFile::setPage(const void*, int, int, int, int, int, int, int, int) {
    return unsupported;
}

zelStatus zelFile::getCompressedPage(...) {
    return unsupported;
}

zelStatus zelFile::decompressPage(...) {
    return unsupported;
}

zelStatus zelFile::compressPage(...) {
    return unsupported;
}

zelStatus zelFile::setCompressedPage(...) {
    return unsupported;
}

zelStatus zelFile::appendImg(zelFile*, zelFileConfig*) {
    return unsupported;
}

zelStatus zelFile::getColormap(const zelColormap*&) {
    return unsupported;
}

zelStatus zelFile::getStatMinMax(double&, double&) {
    return unsupported;
}

zelStatus zelFile::getScaleMinMax(double&, double&) {
    return unsupported;
}

zelStatus zelFile::setColormap(const zelColormap*) {
    return unsupported;
}

zelStatus zelFile::setStatMinMax(double, double) {
    return unsupported;
}

zelStatus zelFile::setScaleMinMax(double, double) {
    return unsupported;
}

zelStatus zelFile::getItem(int, va_list) {
    return unsupported;
}

zelStatus zelFile::setItem(int, va_list) {
    return unsupported;
}

zelStatus zelFile::createFile() {
    return unsupported;
}

zelStatus zelFile::_getICCProfile(int&, void*&) {
    return unsupported;
}

zelStatus zelFile::_freeICCProfile(void*) {
    return unsupported;
}

zelStatus zelFile::_setICCProfile(int, const void*) {
    return unsupported;
}

zelStatus zelFile::_enableDirectIO(int) {
    return unsupported;
}

zelStatus zelFile::_getDirectIOMemAlignment(unsigned&) {
    return unsupported;
}
