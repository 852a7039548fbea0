#include <zel/zelFile.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <zel/zelFileConfig.h>
#include <zel/zelFileDesc.h>
#include <zel/zelFormat.h>

namespace {

constexpr int modeRead = 0;
constexpr int modeReadWrite = 2;
static_assert(modeRead == O_RDONLY && modeReadWrite == O_RDWR);

constexpr const char* defaultFormat = "TIFF";

void store(zelStatus* out, zelStatus status) {
    if (out)
        *out = status;
}

zelStatus openFailed() {
    return zelStatusEncode(zelOPENFAILED, 1, errno);
}

zelStatus openRegularFile(const char* name, int mode, int& fd) {
    if (!name)
        return zelStatusEncode(zelBADPARAMS);
    struct stat info;
    if (::stat(name, &info) != 0)
        return openFailed();
    if (!S_ISREG(info.st_mode))
        return zelStatusEncode(zelOPENFAILED);
    do
        fd = ::open(name, mode | O_CLOEXEC);
    while (fd < 0 && errno == EINTR);
    return fd < 0 ? openFailed() : zelOKAY;
}

/// Null stays null; false if memory ran out.
bool copyText(char*& copy, const char* text) {
    copy = text ? ::strdup(text) : nullptr;
    return copy || !text;
}

zelFormat* formatToOpen(const zelFileDesc& desc) {
    if (desc.getFormat() || !desc.getFileName())
        return desc.getFormat();
    return zelFormat::findByFileName(desc.getFileName(), 1, 1);
}

zelFormat* formatToCreate(const zelFileDesc& desc) {
    zelFormat* found = desc.getFormat();
    if (!found && desc.getFileName())
        found = zelFormat::findByFileName(desc.getFileName(), 0, 1);
    return found ? found : zelFormat::findByFormatName(defaultFormat, 1);
}

/// The new file holds what the old one did, so its ranges hold too. They are a help to clients: a
/// format that cannot store them is no failure.
void copyRanges(zelFile& source, zelFile& target) {
    double min = 0;
    double max = 0;
    if (source.getScaleMinMax(min, max) == zelOKAY)
        target.setScaleMinMax(min, max);
    if (source.getStatMinMax(min, max) == zelOKAY)
        target.setStatMinMax(min, max);
}

} // namespace

zelStatus zelFile::makeObject(zelFile*& file, zelFormat& fmt, const zelFileDesc& desc, int mode) {
    file = fmt.newfileobj();
    if (!file)
        return zelStatusEncode(zelMALLOCFAILED, 1, errno);
    file->fd = desc.getFileDesc();
    file->accessmode = mode;
    file->format = &fmt;
    if (!copyText(file->filename, desc.getFileName()) ||
        !copyText(file->formatArgs, desc.getFormatSpecific()))
        return zelStatusEncode(zelMALLOCFAILED, 1, errno);
    return zelOKAY;
}

zelStatus zelFile::openInto(zelFile*& file, zelFileDesc& desc, int mode, int& openedFd) {
    if (desc.getStatus() != zelOKAY)
        return desc.getStatus();
    if (mode != modeRead && mode != modeReadWrite)
        return zelStatusEncode(zelBADPARAMS);
    if (desc.getFileDesc() < 0) {
        const zelStatus status = openRegularFile(desc.getFileName(), mode, openedFd);
        if (status != zelOKAY)
            return status;
        desc.setFileDesc(openedFd);
    }

    zelFormat* fmt = formatToOpen(desc);
    if (!fmt)
        return zelStatusEncode(zelBADMAGIC);
    if (!fmt->accessModeIsSupported(mode))
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);

    zelStatus status = makeObject(file, *fmt, desc, mode);
    if (status == zelOKAY)
        status = file->openFile();
    if (status == zelUNSUPPORTEDBYLIBRARY && openedFd >= 0) {
        ::close(openedFd);
        openedFd = -1;
        desc.setFileDesc(-1);
        file->fd = -1;
        if (file->filename)
            status = file->openFile();
    }
    if (status != zelOKAY || desc.getIndex() < 0)
        return status;
    return file->setCurrentImg(desc.getIndex());
}

zelFile* zelFile::open(zelFileDesc& fileDesc, int mode, zelStatus* status) {
    zelFile* file = nullptr;
    int openedFd = -1;
    const zelStatus result = openInto(file, fileDesc, mode, openedFd);
    if (result != zelOKAY) {
        delete file;
        file = nullptr;
        if (openedFd >= 0) {
            ::close(openedFd);
            fileDesc.setFileDesc(-1);
        }
    }
    store(status, result);
    return file;
}

zelFile* zelFile::open(int fd, const char* fullname, int mode, zelFormat* format,
                       zelStatus* status) {
    zelFileDesc desc(fullname, format);
    desc.setFileDesc(fd);
    return open(desc, mode, status);
}

zelFile* zelFile::open(const char* fullname, int mode, zelStatus* status) {
    return open(-1, fullname, mode, nullptr, status);
}

zelStatus zelFile::createInto(zelFile*& file, const zelFileDesc& desc, zelFile* source,
                              const zelFileConfig* cfg) {
    if (desc.getStatus() != zelOKAY)
        return desc.getStatus();
    zelFormat* fmt = formatToCreate(desc);
    if (!fmt)
        return zelStatusEncode(zelSYSTEM_CONFIGURATION_ERROR);
    if (!fmt->accessModeIsSupported(modeReadWrite))
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);

    zelFileConfig settled;
    if (cfg)
        settled = *cfg;
    zelStatus status = fmt->applyDefaults(source, settled);
    if (status == zelOKAY)
        status = makeObject(file, *fmt, desc, modeReadWrite);
    if (status != zelOKAY)
        return status;

    file->dtype = settled.getDataType();
    file->order = settled.getOrder();
    file->cm = settled.getColorModel();
    file->orientation = settled.getOrientation();
    file->compression = settled.getCompression();
    file->channelPermutation = nullptr;
    settled.getSize(file->size);
    settled.getPageSize(file->pageSize);
    status = file->createFile();
    if (status == zelOKAY && source)
        copyRanges(*source, *file);
    return status;
}

zelFile* zelFile::create(zelFileDesc& fileDesc, zelFile* source, const zelFileConfig* cfg,
                         zelStatus* status) {
    zelFile* file = nullptr;
    const zelStatus result = createInto(file, fileDesc, source, cfg);
    if (result != zelOKAY) {
        delete file;
        file = nullptr;
    }
    store(status, result);
    return file;
}

zelFile* zelFile::create(int fd, const char* fullname, zelFile* source, const zelFileConfig* cfg,
                         zelFormat* format, zelStatus* status) {
    zelFileDesc desc(fullname, format);
    desc.setFileDesc(fd);
    return create(desc, source, cfg, status);
}

zelFile* zelFile::create(const char* fullname, zelFile* source, const zelFileConfig* cfg,
                         zelFormat* format, zelStatus* status) {
    return create(-1, fullname, source, cfg, format, status);
}

zelStatus zelFile::close(int flags) {
    const zelStatus flushed = (flags & 1) ? zelOKAY : flush();
    const zelStatus closed = closeFile();
    delete this;
    return flushed != zelOKAY ? flushed : closed;
}
