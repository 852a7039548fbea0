#include "handle.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <string_view>

namespace zeltiff {

namespace {

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

bool allZero(const char* data, std::size_t bytes) {
    return std::all_of(data, data + bytes, [](char byte) { return byte == 0; });
}

} // namespace

zelStatus Handle::open(int fd, const char* name, const char* mode, std::int64_t largestBlock) {
    fd_ = fd;
    name_ = name;
    position_ = 0;
    complaints_ = 0;
    lackedMemory_ = false;
    sparse_ = false;
    readStatus_ = writeStatus_ = zelOKAY;
    const zelStatus status = zelkit::getFileLength(fd, length_);
    if (status != zelOKAY)
        return status;

    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (!options)
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), largestBlock);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), report, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), report, this);
    tiff_ = TIFFClientOpenExt(name, mode, this, readBytes, writeBytes, seek, ignoreClose, size,
                              nullptr, nullptr, options.get());
    return check(tiff_ != nullptr, zelCORRUPTED);
}

zelStatus Handle::close() {
    if (!tiff_)
        return zelOKAY;
    if (TIFFGetMode(tiff_) == O_RDONLY) {
        drop();
        return zelOKAY;
    }
    const bool written = TIFFFlush(tiff_) == 1;
    drop();
    const zelStatus status = check(written, zelWRITEFAILED);
    if (status != zelOKAY)
        return status;
    std::int64_t onDisk = 0;
    const zelStatus known = zelkit::getFileLength(fd_, onDisk);
    if (known != zelOKAY)
        return known;
    return onDisk < length_ ? zelkit::setFileLength(fd_, length_) : zelOKAY;
}

void Handle::drop() {
    if (tiff_)
        TIFFClose(tiff_);
    tiff_ = nullptr;
}

zelStatus Handle::check(bool success, zelMainStatus otherwise) {
    const zelStatus wrote = writeStatus_;
    const zelStatus read = readStatus_;
    readStatus_ = writeStatus_ = zelOKAY;
    // A write that failed is never made up for, even if libtiff did not look at it.
    if (wrote != zelOKAY)
        return wrote;
    if (success)
        return zelOKAY;
    return read != zelOKAY ? read : zelStatusEncode(otherwise);
}

tmsize_t Handle::readBytes(thandle_t self, void* data, tmsize_t bytes) {
    Handle& handle = *static_cast<Handle*>(self);
    std::size_t got = 0;
    const zelStatus status =
        zelkit::readSome(handle.fd_, data, static_cast<std::size_t>(bytes), handle.position_, got);
    handle.position_ += static_cast<std::int64_t>(got);
    if (status != zelOKAY) {
        handle.readStatus_ = status;
        return -1;
    }
    if (static_cast<tmsize_t>(got) < bytes && handle.readStatus_ == zelOKAY)
        handle.readStatus_ = zelStatusEncode(zelPREMATUREEOF);
    return static_cast<tmsize_t>(got);
}

tmsize_t Handle::writeBytes(thandle_t self, void* data, tmsize_t bytes) {
    Handle& handle = *static_cast<Handle*>(self);
    const auto count = static_cast<std::size_t>(bytes);
    const bool hole = handle.sparse_ && handle.position_ >= handle.length_ &&
                      allZero(static_cast<const char*>(data), count);
    if (!hole) {
        const zelStatus status = zelkit::writeExact(handle.fd_, data, count, handle.position_);
        if (status != zelOKAY) {
            handle.writeStatus_ = status;
            return -1;
        }
    }
    handle.position_ += bytes;
    handle.length_ = std::max(handle.length_, handle.position_);
    return bytes;
}

toff_t Handle::seek(thandle_t self, toff_t offset, int whence) {
    Handle& handle = *static_cast<Handle*>(self);
    const std::int64_t base = whence == SEEK_SET   ? 0
                              : whence == SEEK_CUR ? handle.position_
                                                   : handle.length_;
    std::int64_t target = 0;
    if (__builtin_add_overflow(base, static_cast<std::int64_t>(offset), &target) || target < 0)
        return static_cast<toff_t>(-1);
    handle.position_ = target;
    return static_cast<toff_t>(target);
}

int Handle::ignoreClose(thandle_t) {
    return 0;
}

toff_t Handle::size(thandle_t self) {
    return static_cast<toff_t>(static_cast<Handle*>(self)->length_);
}

int Handle::report(TIFF*, void* self, const char* module, const char* format, va_list arguments) {
    Handle& handle = *static_cast<Handle*>(self);
    // Private tags are no fault of the file.
    const bool harmless = std::string_view(format).starts_with("Unknown field with tag");
    handle.complaints_ += harmless ? 0 : 1;
    if (std::string_view(format).find("Memory allocation of") != std::string_view::npos)
        handle.lackedMemory_ = true;
    char text[120];
    std::vsnprintf(text, sizeof text, format, arguments);
    zelError(harmless ? zelSevInfo : zelSevWarning, "%.100s: %.28s: %s", handle.name_.c_str(),
             module ? module : "TIFF", text);
    return 1;
}

} // namespace zeltiff
