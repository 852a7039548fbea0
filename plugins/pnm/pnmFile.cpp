#include "pnmFile.h"

#include "subformat.h"

#include "kit/fileIo.h"
#include "kit/sizes.h"

#include <zel/zelFormat.h>
#include <zel/zelTypeNames.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace zelpnm {

namespace {

using zelkit::checkedProduct;

// Null if there is no memory: the buffers are as long as a row, which may be anything.
template <typename T>
std::unique_ptr<T[]> allocate(std::int64_t count) {
    return std::unique_ptr<T[]>(new (std::nothrow) T[static_cast<std::size_t>(count)]);
}

// In a PFM the first row is the lowest.
zelOrientation orientationOf(const Header& header) {
    return header.kind == Kind::pfm ? zelLowerLeftOrigin : zelUpperLeftOrigin;
}

// The bytes that the samples take in the file, at least; nothing if they pass 63 bits.
std::optional<std::int64_t> rasterBytes(const Image& image) {
    const Header& header = image.header;
    if (!header.plain)
        return checkedProduct({image.rowBytes, header.height});
    // A digit and a blank for each sample; bits need no blanks, and nothing needs the last one.
    const int perSample = header.kind == Kind::pbm ? 1 : 2;
    const auto bytes = checkedProduct({header.width, header.channels, header.height, perSample});
    return bytes ? std::optional(*bytes - perSample + 1) : std::nullopt;
}

// Behind the last sample; nothing if that passes 63 bits.
std::optional<std::int64_t> imageEnd(const Image& image) {
    const auto bytes = rasterBytes(image);
    std::int64_t end = 0;
    if (!bytes || __builtin_add_overflow(image.header.rasterOffset, *bytes, &end))
        return std::nullopt;
    return end;
}

// Sets what follows from the header.
zelStatus describeRows(Image& image, bool invert) {
    image.codec = RowCodec(image.header, invert);
    const auto rowBytes = image.codec.rowBytes();
    if (!rowBytes)
        return zelStatusEncode(zelCORRUPTED);
    image.rowBytes = *rowBytes;
    return zelOKAY;
}

} // namespace

// Opening

// Those of new images. A file that is opened may get one by appendImg.
void PnmFile::readOptions() {
    const zelkit::Argument arguments[] = {{"plain", &plain_}, {"maxval", &maxval_, 1, 65535}};
    readArguments(arguments);
}

zelStatus PnmFile::openFile() {
    readOptions();
    Image image;
    const zelStatus status = readImage(0, image);
    if (status != zelOKAY)
        return status;
    imageOffsets_ = {0};
    adoptImage(std::move(image));
    return zelOKAY;
}

zelStatus PnmFile::closeFile() {
    return closeDescriptor();
}

// Reads the header at `offset` and holds its sizes against the file's length.
zelStatus PnmFile::readImage(std::int64_t offset, Image& image) const {
    ByteReader reader(fd, offset);
    zelStatus status = readHeader(reader, image.header);
    if (status == zelOKAY)
        status = describeRows(image, false);
    std::int64_t length = 0;
    if (status == zelOKAY)
        status = zelkit::getFileLength(fd, length);
    if (status != zelOKAY)
        return status;
    const auto end = imageEnd(image);
    return end && *end <= length ? zelOKAY : zelStatusEncode(zelPREMATUREEOF);
}

// Fills the attributes, which are those of the file as it is.
void PnmFile::adoptImage(Image&& image) {
    image_ = std::move(image);
    const Header& header = image_.header;
    size = zelSize(header.width, header.height, 1, header.channels);
    dtype = header.type();
    order = zelInterleaved;
    cm = header.colorModel;
    orientation = orientationOf(header);
    compression = zelNoCompression;
    pageSize = zelSize(header.width, rowsAtOnce(), 1, header.channels);
    if (header.plain)
        image_.plainRows = std::make_unique<PlainRows>(fd, header, pageSize.y);
}

// Pages

bool PnmFile::isPage(int x, int y, int z, int c, int nx, int ny, int nz, int nc) const {
    return x == 0 && z == 0 && c == 0 && nx == size.x && nz == 1 && nc == size.c && y >= 0 &&
           ny >= 1 && ny <= pageSize.y && y <= size.y - ny;
}

// A page is moved in pieces of this height, since a client may have asked for pages of any height.
int PnmFile::rowsAtOnce() const {
    return zelkit::bandRows(image_.rowBytes, image_.header.height);
}

// Where the band's rows begin in the file.
int PnmFile::fileRow(Band band) const {
    return image_.reversed ? size.y - band.row - band.count : band.row;
}

zelStatus PnmFile::readBand(Band band, void* page, int firstRow, std::uint8_t* buffer) {
    const int first = fileRow(band);
    const zelStatus status =
        image_.plainRows
            ? image_.plainRows->read(first, band.count, buffer)
            : zelkit::readExact(fd, buffer, static_cast<std::size_t>(image_.rowBytes * band.count),
                                image_.header.rasterOffset + first * image_.rowBytes);
    if (status != zelOKAY)
        return status;
    const std::int64_t rowElements = std::int64_t{size.x} * size.c;
    for (int i = 0; i < band.count; i++) {
        const int inFile = image_.reversed ? band.count - 1 - i : i;
        image_.codec.decode(buffer + inFile * image_.rowBytes, page, (firstRow + i) * rowElements);
    }
    return zelOKAY;
}

zelStatus PnmFile::getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz, int nc) {
    if (!isPage(x, y, z, c, nx, ny, nz, nc))
        return zelStatusEncode(zelBADPARAMS);
    const int step = std::min(rowsAtOnce(), ny);
    const auto buffer = allocate<std::uint8_t>(image_.rowBytes * step);
    if (!buffer)
        return zelkit::noMemory();
    zelStatus status = zelOKAY;
    for (int row = 0; status == zelOKAY && row < ny; row += step)
        status = readBand({y + row, std::min(step, ny - row)}, data, row, buffer.get());
    return status;
}

// `text` has room for one row, and is null in a raw image.
zelStatus PnmFile::writeBand(Band band, const void* page, int firstRow, std::uint8_t* buffer,
                             char* text) {
    const Header& header = image_.header;
    const int first = fileRow(band);
    const std::int64_t rowElements = std::int64_t{size.x} * size.c;
    for (int i = 0; i < band.count; i++) {
        const int inFile = image_.reversed ? band.count - 1 - i : i;
        std::uint8_t* const row = buffer + inFile * image_.rowBytes;
        image_.codec.encode(page, (firstRow + i) * rowElements, row);
        if (!text)
            continue;
        formatTextRow(header, row, text);
        const zelStatus status =
            zelkit::writeExact(fd, text, static_cast<std::size_t>(image_.textRowBytes),
                               header.rasterOffset + (first + inFile) * image_.textRowBytes);
        if (status != zelOKAY)
            return status;
    }
    if (text)
        return zelOKAY;
    return zelkit::writeExact(fd, buffer, static_cast<std::size_t>(image_.rowBytes * band.count),
                              header.rasterOffset + first * image_.rowBytes);
}

zelStatus PnmFile::setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                           int nc) {
    if (accessmode == 0)
        return zelStatusEncode(zelREADONLY);
    if (image_.header.plain && !image_.fixedFields)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    if (!isPage(x, y, z, c, nx, ny, nz, nc))
        return zelStatusEncode(zelBADPARAMS);
    const int step = std::min(rowsAtOnce(), ny);
    const auto buffer = allocate<std::uint8_t>(image_.rowBytes * step);
    const auto text = allocate<char>(image_.textRowBytes);
    if (!buffer || !text)
        return zelkit::noMemory();
    zelStatus status = zelOKAY;
    for (int row = 0; status == zelOKAY && row < ny; row += step)
        status = writeBand({y + row, std::min(step, ny - row)}, data, row, buffer.get(),
                           image_.header.plain ? text.get() : nullptr);
    return status;
}

// Several images

// Walks from header to header. Raw images follow each other, with white space between at most.
void PnmFile::findImages() {
    allFound_ = true;
    Image image;
    zelStatus status = readImage(imageOffsets_.back(), image);
    while (status == zelOKAY && !image.header.plain && image.header.kind != Kind::pfm) {
        ByteReader reader(fd, *imageEnd(image));
        while (isSpace(reader.peek()))
            reader.next();
        endsCleanly_ = reader.peek() < 0;
        if (endsCleanly_)
            return;
        const std::int64_t offset = reader.position();
        status = readImage(offset, image);
        // A header whose samples are cut off counts: setCurrentImg then tells what is wrong.
        if (status == zelOKAY || status == zelPREMATUREEOF)
            imageOffsets_.push_back(offset);
        else
            zelError(zelSevWarning, "%s: what follows image %zu is no image", nameForMessages(),
                     imageOffsets_.size() - 1);
    }
}

int PnmFile::getNumImgs() {
    if (!allFound_)
        findImages();
    return static_cast<int>(imageOffsets_.size());
}

int PnmFile::getCurrentImg() {
    return currentImage_;
}

zelStatus PnmFile::showImage(int i) {
    Image image;
    const zelStatus status = readImage(imageOffsets_[static_cast<std::size_t>(i)], image);
    if (status != zelOKAY)
        return status;
    adoptImage(std::move(image));
    currentImage_ = i;
    return zelOKAY;
}

// The numbers that stand for black and white: those of a page, not of the file, where the two
// differ.
zelStatus PnmFile::getScaleMinMax(double& min, double& max) {
    const Header& header = image_.header;
    min = 0;
    max = dtype == zelFloat ? header.scale : dtype == zelUChar ? 255 : header.maxval;
    return zelOKAY;
}

// Creating

std::optional<Header> PnmFile::headerFor(const zelFileConfig& wanted) const {
    Wish wish;
    wish.fileName = filename;
    wish.nameForMessages = nameForMessages();
    zelSize dimensions;
    wanted.getSize(dimensions);
    wish.width = dimensions.x;
    wish.height = dimensions.y;
    wish.channels = dimensions.c;
    wish.type = wanted.getDataType();
    wish.colorModel = wanted.getColorModel();
    wish.plain = plain_;
    wish.maxval = maxval_;
    const auto header = chooseHeader(wish);
    if (!header)
        zelError(zelSevWarning, "%s: a file of this name cannot hold %s pixels of type %s%s",
                 nameForMessages(), zelColorModelName(wish.colorModel), zelDataTypeName(wish.type),
                 plain_ ? " as plain text" : "");
    return header;
}

// Writes the header, gives the file the length of the whole image with all elements 0, and shows
// the image in the model and orientation that the client wants.
zelStatus PnmFile::writeImage(const Header& header, std::int64_t offset,
                              const zelFileConfig& wanted) {
    const std::string text = formatHeader(header);
    Image image;
    image.header = header;
    image.header.rasterOffset = offset + static_cast<std::int64_t>(text.size());
    image.reversed = orientationOf(header) != wanted.getOrientation();
    image.fixedFields = header.plain;
    image.textRowBytes = header.plain ? textRowBytes(header).value_or(0) : 0;
    if (describeRows(image, wanted.getColorModel() != header.colorModel) != zelOKAY)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    zelStatus status = zelkit::writeExact(fd, text.data(), text.size(), offset);
    if (status == zelOKAY)
        status = fillWithZeros(image);
    if (status != zelOKAY)
        return status;
    adoptImage(std::move(image));
    cm = wanted.getColorModel();
    orientation = wanted.getOrientation();
    wanted.getPageSize(pageSize);
    imageOffsets_.push_back(offset);
    currentImage_ = static_cast<int>(imageOffsets_.size()) - 1;
    return zelOKAY;
}

// Where 0 is stored as a byte of 0 the file's length is enough.
zelStatus PnmFile::fillWithZeros(const Image& image) const {
    const Header& header = image.header;
    const std::int64_t stride = header.plain ? image.textRowBytes : image.rowBytes;
    const auto bytes = checkedProduct({stride, header.height});
    std::int64_t end = 0;
    if (!bytes || stride == 0 || __builtin_add_overflow(header.rasterOffset, *bytes, &end))
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    const zelStatus extended = zelkit::setFileLength(fd, end);
    if (extended != zelOKAY)
        return extended;

    const auto elements = allocate<std::uint8_t>(image.rowBytes);
    const auto row = allocate<std::uint8_t>(stride);
    if (!elements || !row)
        return zelkit::noMemory();
    std::fill_n(elements.get(), image.rowBytes, std::uint8_t{0});
    std::uint8_t* const raw = header.plain ? elements.get() : row.get();
    image.codec.encode(elements.get(), 0, raw);
    if (header.plain)
        formatTextRow(header, raw, reinterpret_cast<char*>(row.get()));
    if (std::all_of(row.get(), row.get() + stride, [](std::uint8_t byte) { return byte == 0; }))
        return zelOKAY;
    zelStatus status = zelOKAY;
    for (int i = 0; status == zelOKAY && i < header.height; i++)
        status = zelkit::writeExact(fd, row.get(), static_cast<std::size_t>(stride),
                                    header.rasterOffset + i * stride);
    return status;
}

zelStatus PnmFile::createFile() {
    readOptions();
    const zelFileConfig wanted(this);
    const auto header = headerFor(wanted);
    if (!header)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    const zelStatus status = makeFile();
    return status == zelOKAY ? writeImage(*header, 0, wanted) : status;
}

zelStatus PnmFile::appendImg(zelFile* source, zelFileConfig* config) {
    if (accessmode == 0)
        return zelStatusEncode(zelREADONLY);
    if (image_.header.plain || image_.header.kind == Kind::pfm)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    zelFileConfig wanted = config ? *config : zelFileConfig();
    zelStatus status = format->applyDefaults(source, wanted);
    if (status != zelOKAY)
        return status;
    const auto header = headerFor(wanted);
    if (!header || header->plain || header->kind == Kind::pfm)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);

    getNumImgs();
    std::int64_t end = 0;
    status = zelkit::getFileLength(fd, end);
    if (status != zelOKAY)
        return status;
    if (!endsCleanly_)
        return zelStatusEncode(zelCORRUPTED);
    status = writeImage(*header, end, wanted);
    if (status != zelOKAY)
        zelkit::setFileLength(fd, end); // the images that were there stay as they were
    else
        markAttributesChanged();
    return status;
}

} // namespace zelpnm
