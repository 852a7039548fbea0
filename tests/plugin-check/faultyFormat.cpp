#include "plugin-check/faultyFormat.h"

#include "kit/fileClass.h"
#include "kit/fileIo.h"
#include "kit/pluginFile.h"
#include "kit/sizes.h"
#include "kit/tableFormat.h"

#include <zel/zelFileConfig.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace zel::test {

Fault fault = Fault::none;

namespace {

char* volatile lost = nullptr; ///< what only this remembers, and only the last of it

bool has(Fault one) {
    return fault == one;
}

struct Header {
    char magic[4];
    std::int32_t width, height, channels, type, orientation;
};

struct Image {
    Header header;
    std::int64_t offset; ///< of the pixels

    std::int64_t rowBytes() const {
        return std::int64_t{header.width} * header.channels *
               static_cast<std::int64_t>(zelDataSize(zelDataType(header.type), 1));
    }
    std::int64_t end() const { return offset + rowBytes() * header.height; }
};

class FaultyFile final : public zelkit::FileClass<FaultyFile, zelkit::PluginFile> {
public:
    static constexpr char className[] = "FaultyFile";
    static constexpr char description[] = "file of the tests";

    const zelClassList* getClassId() const override {
        return has(Fault::hasNoIdentity) ? &zelFile::classList : FileClass::getClassId();
    }

    int getNumImgs() override { return static_cast<int>(images_.size()); }
    int getCurrentImg() override { return has(Fault::staysAtFirstImage) ? 0 : current_; }
    zelStatus setCurrentImg(int i) override;
    zelStatus appendImg(zelFile* source, zelFileConfig* config) override;

    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus closeFile() override;
    zelStatus showImage(int i) override;

private:
    zelStatus readHeader(std::int64_t offset, std::int64_t length, Image& image);
    zelStatus findImages();
    zelStatus addImage();
    std::int64_t offsetOf(int y, int ny);

    std::vector<Image> images_;
    int current_ = 0;
    int nextRow_ = 0;
    bool written_ = false;
};

zelStatus FaultyFile::readHeader(std::int64_t offset, std::int64_t length, Image& image) {
    Header& header = image.header;
    zelStatus status = zelOKAY;
    if (has(Fault::readsFromPosition) && offset == 0)
        status = read(fd, &header, sizeof header) == ssize_t{sizeof header}
                     ? zelOKAY
                     : zelStatusEncode(zelPREMATUREEOF);
    else
        status = zelkit::readExact(fd, &header, sizeof header, offset);
    if (status != zelOKAY)
        return status;
    image.offset = offset + static_cast<std::int64_t>(sizeof header);
    const bool known =
        (header.type == zelUChar || header.type == zelUShort) &&
        (header.channels == 1 || header.channels == 3) &&
        (header.orientation == zelUpperLeftOrigin || header.orientation == zelLowerLeftOrigin);
    if (std::memcmp(header.magic, "FLTY", 4) != 0)
        return zelStatusEncode(zelBADMAGIC);
    if (!known)
        while (has(Fault::loopsOnDamage))
            usleep(1000);
    if (!known || header.width < 1 || header.height < 1 || header.width > 1 << 20 ||
        header.height > 1 << 20) {
        if (has(Fault::throwsOnDamage))
            std::vector<char>().at(1);
        return zelStatusEncode(zelCORRUPTED);
    }
    if (image.end() <= length || has(Fault::fillsShortFiles))
        return zelOKAY;
    if (has(Fault::abortsOnShortFiles))
        std::abort();
    if (has(Fault::exitsOnShortFiles))
        std::exit(3);
    return zelStatusEncode(zelPREMATUREEOF);
}

zelStatus FaultyFile::findImages() {
    std::int64_t length = 0;
    zelStatus status = zelkit::getFileLength(fd, length);
    std::int64_t offset = 0;
    do {
        Image image{};
        if (status == zelOKAY)
            status = readHeader(offset, length, image);
        if (status != zelOKAY)
            return status;
        images_.push_back(image);
        offset = image.end();
    } while (offset < length);
    return zelOKAY;
}

zelStatus FaultyFile::openFile() {
    readArguments({});
    if (has(Fault::losesMemory))
        lost = new char[1000];
    if (has(Fault::keepsDescriptor))
        (void)dup(fd);
    if (has(Fault::talks))
        std::puts("hello");
    zelStatus status = findImages();
    if (status != zelOKAY && has(Fault::opensEmptyFiles)) {
        images_ = {{{"", 1, 1, 1, zelUChar, zelUpperLeftOrigin}, 0}};
        status = zelOKAY;
    }
    if (status == zelOKAY)
        return showImage(0);
    if (has(Fault::losesMemoryOnFailure))
        lost = new char[1000];
    if (has(Fault::keepsDescriptorOnFailure))
        (void)dup(fd);
    if (has(Fault::closesOnFailure))
        ::close(fd);
    return status;
}

zelStatus FaultyFile::showImage(int i) {
    const Header& header = images_[static_cast<std::size_t>(i)].header;
    if (!has(Fault::keepsLaterOffset) || i > current_)
        current_ = i;
    size = zelSize(header.width, header.height, 1, header.channels);
    dtype = zelDataType(header.type);
    order = zelInterleaved;
    cm = header.channels == 1            ? zelLuminance
         : has(Fault::forgetsColorModel) ? zelMultiSpectral
                                         : zelRGB;
    orientation =
        has(Fault::forgetsOrientation) ? zelUpperLeftOrigin : zelOrientation(header.orientation);
    compression = has(Fault::hasNoCompression) ? zelCompression(0) : zelNoCompression;
    pageSize = zelSize(size.x, zelkit::bandRows(images_.front().rowBytes(), size.y), 1, size.c);
    return zelOKAY;
}

zelStatus FaultyFile::setCurrentImg(int i) {
    if (has(Fault::takesAnyImage) && (i < 0 || i >= getNumImgs()))
        return zelOKAY;
    return has(Fault::hidesNewSize) && i >= 0 && i < getNumImgs() ? showImage(i)
                                                                  : PluginFile::setCurrentImg(i);
}

// Puts an image of the attributes behind the last one and makes it the current one.
zelStatus FaultyFile::addImage() {
    const std::int64_t start = images_.empty() ? 0 : images_.back().end();
    if (has(Fault::makesOtherType))
        dtype = zelUChar;
    const Image image{{{'F', 'L', 'T', 'Y'}, size.x, size.y, size.c, dtype, orientation},
                      start + static_cast<std::int64_t>(sizeof(Header))};
    current_ = static_cast<int>(images_.size());
    images_.push_back(image);
    const zelStatus status = zelkit::writeExact(fd, &image.header, sizeof image.header, start);
    if (status != zelOKAY || !has(Fault::leavesNoise))
        return status == zelOKAY ? zelkit::setFileLength(fd, image.end()) : status;
    const std::vector<char> noise(static_cast<std::size_t>(image.end() - image.offset), 'x');
    return zelkit::writeExact(fd, noise.data(), noise.size(), image.offset);
}

zelStatus FaultyFile::createFile() {
    readArguments({});
    if (dtype == zelFloat || (size.c == 3) != (cm == zelRGB))
        return refuseAttributes();
    if (has(Fault::opensByName))
        fd = ::open(filename, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    else if (const zelStatus status = makeFile(); status != zelOKAY)
        return status;
    return addImage();
}

zelStatus FaultyFile::appendImg(zelFile* source, zelFileConfig* config) {
    if (accessmode == 0)
        return has(Fault::appendsToAnyFile) ? zelOKAY : zelStatusEncode(zelREADONLY);
    zelFileConfig wanted = config ? *config : zelFileConfig();
    const zelStatus status = format->applyDefaults(source, wanted);
    if (status != zelOKAY)
        return status;
    wanted.getSize(size);
    wanted.getPageSize(pageSize);
    markAttributesChanged();
    return addImage();
}

zelStatus FaultyFile::closeFile() {
    if (has(Fault::changesFiles) && accessmode == 0)
        if (FILE* const again = std::fopen(filename, "ab")) {
            std::fputc(0, again);
            std::fclose(again);
        }
    return closeDescriptor();
}

std::int64_t FaultyFile::offsetOf(int y, int ny) {
    const Image& image = images_[static_cast<std::size_t>(current_)];
    const int row = has(Fault::readsInTurn) && accessmode == 0 ? nextRow_ : y;
    nextRow_ = row + ny < size.y ? row + ny : 0;
    return image.offset + image.rowBytes() * row;
}

zelStatus FaultyFile::getPage(void* data, int, int y, int, int, int, int ny, int, int) {
    if (has(Fault::reportsErrors))
        zelError(zelSevError, "nothing went wrong");
    const std::size_t bytes = zelDataSize(dtype, zelSize(size.x, ny, 1, size.c));
    std::memset(data, 0, bytes);
    if (has(Fault::forgetsPartialPages) && written_)
        return zelOKAY;
    const bool short1 = has(Fault::losesLastOddRow) && ny > 1 && ny % 2 == 1 && y + ny == size.y;
    const int shift = has(Fault::shiftsLaterPages) && y > 0 ? 1 : 0;
    std::size_t got = 0;
    const std::size_t wanted = short1 ? bytes - bytes / static_cast<std::size_t>(ny) : bytes;
    const zelStatus status = zelkit::readSome(fd, data, wanted, offsetOf(y - shift, ny), got);
    const bool whole = got == wanted || has(Fault::fillsShortFiles);
    return status == zelOKAY && !whole ? zelStatusEncode(zelPREMATUREEOF) : status;
}

zelStatus FaultyFile::setPage(const void* data, int, int y, int, int, int, int ny, int, int) {
    if (accessmode == 0)
        return has(Fault::ignoresWrites)   ? zelOKAY
               : has(Fault::excusesWrites) ? zelStatusEncode(zelUNSUPPORTEDBYFILE)
                                           : zelStatusEncode(zelREADONLY);
    written_ = true;
    return zelkit::writeExact(fd, data, zelDataSize(dtype, zelSize(size.x, ny, 1, size.c)),
                              offsetOf(y, ny));
}

constexpr zelkit::ColorModelChannels colorModels[] = {{zelLuminance, 1}, {zelRGB, 3}};

constexpr zelkit::Capabilities capabilities = {
    .types = zelUChar | zelUShort,
    .orders = zelInterleaved,
    .orientations = zelkit::maskOf({zelUpperLeftOrigin, zelLowerLeftOrigin}),
    .compressions = zelkit::maskOf({zelNoCompression}),
    .colorModels = colorModels,
    .maxWidth = 1 << 20,
    .maxHeight = 1 << 20,
    .maxChannels = 3,
};

class FaultyFormat : public zelkit::TableFormat {
public:
    using TableFormat::TableFormat;

    int typeIsSupported(zelDataType type) override {
        return (has(Fault::claimsFloats) && type == zelFloat) || TableFormat::typeIsSupported(type);
    }
    zelDataType getPreferredType() override {
        return has(Fault::prefersDoubles) ? zelDouble : TableFormat::getPreferredType();
    }
    int pagingIsSupported() override { return !has(Fault::deniesPaging); }
    int sizeIsSupported(int x, int y, int z, int c, zelOrientation at) override {
        return (has(Fault::takesSizesBelowZero) && x < 0) ||
               TableFormat::sizeIsSupported(x, y, z, c, at);
    }
    void getPreferredPageSize(int x, int y, int z, int c, int& pageX, int& pageY, int& pageZ,
                              int& pageC, zelOrientation at) override {
        TableFormat::getPreferredPageSize(x, y, z, c, pageX, pageY, pageZ, pageC, at);
        pageX += has(Fault::prefersWiderPages);
    }
};

} // namespace

void registerFaultyFormat() {
    static zelkit::FormatOf<FaultyFile, FaultyFormat> format("FAULTY", capabilities);
}

} // namespace zel::test
