#include "jp2File.h"

#include "kit/bits.h"
#include "kit/exif.h"
#include "kit/palette.h"
#include "kit/resolution.h"
#include "kit/sizes.h"

#include <zel/zelBitArray.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace zeljp2 {

namespace {

// Bands of an image without tiles are decoded so many bytes of samples at a time.
constexpr std::int64_t areaBytes = 16 << 20;

bool isBareCodestreamName(const char* name) {
    const std::string_view text = name ? name : "";
    for (const std::string_view suffix : {".j2k", ".J2K", ".j2c", ".jpc"})
        if (text.ends_with(suffix))
            return true;
    return false;
}

int bitsOf(zelDataType type) {
    if (type == zelBit)
        return 1;
    return type & (zelUChar | zelChar) ? 8 : type & (zelUShort | zelShort) ? 16 : 32;
}

constexpr std::int64_t fewTiles = 256;

} // namespace

bool Jp2File::carriesIccProfile() const {
    return !bare_;
}

zelStatus Jp2File::setItem(int tag, va_list args) {
    return isNew_ && bare_ ? zelStatusEncode(zelUNSUPPORTEDBYFILE)
                           : ScanlineFile::setItem(tag, args);
}

// Opening

void Jp2File::readOptions() {
    const zelkit::Argument arguments[] = {
        {"quality", &quality_, 1, 200}, {"rate", &rate_, 1, 10000}, {"bits", &bits_, 1, 16}};
    readArguments(arguments);
}

zelStatus Jp2File::openFile() {
    readOptions();
    zelStatus status = readBoxes(fd, boxes_);
    if (status == zelOKAY && boxes_.shortened)
        status = zelStatusEncode(zelPREMATUREEOF);
    if (status == zelOKAY)
        status = readShape(fd, boxes_, shape_);
    if (status != zelOKAY)
        return status;
    bare_ = boxes_.codestream == 0;
    decoder_ = std::make_unique<Decoder>(fd, boxes_, shape_, nameForMessages());
    // OpenJPEG takes memory for every tile at once, which is not due to a file that is only asked
    // what it is.
    if (shape_.tilesAcross() * shape_.tilesDown() <= fewTiles)
        status = decoder_->open();
    return status == zelOKAY ? show() : status;
}

// Of a palette the first 256 colours.
void Jp2File::showPalette() {
    const int channels = boxes_.paletteChannels;
    if (channels == 0)
        return;
    if (channels == 3 || channels == 4) {
        const std::size_t most =
            static_cast<std::size_t>(zelkit::largestPalette) * static_cast<std::size_t>(channels);
        const std::size_t bytes = std::min(boxes_.palette.size(), most);
        palette = zelkit::makePalette(std::span(boxes_.palette).first(bytes), channels);
    }
    if (!palette) {
        zelError(zelSevWarning,
                 "%s: the palette has no 3 or 4 channels of bytes; its indexes are shown",
                 nameForMessages());
        boxes_.palette.clear();
    }
}

// In whole pixels per metre it is told as other formats tell it; of low ones and of fractions the
// rest counts too.
void Jp2File::showResolution() {
    const double x = boxes_.xPerMeter, y = boxes_.yPerMeter;
    if (x <= 0 || y <= 0)
        return;
    if (x < INT_MAX && y < INT_MAX)
        zelkit::setResolution(fields,
                              {static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))});
    const auto isWholePerInch = [](double perMeter) {
        const double perInch = perMeter * 0.0254;
        return std::fabs(perInch - std::round(perInch)) < perInch / 1000;
    };
    const double* const unit = fields.number(zelkit::exifResolutionUnit);
    if (unit && std::lround(*unit) == zelkit::resolutionPerInch && isWholePerInch(x) &&
        isWholePerInch(y)) {
        return;
    }
    fields.set(zelkit::exifXResolution, x / 100);
    fields.set(zelkit::exifYResolution, y / 100);
    fields.set(zelkit::exifResolutionUnit, double{zelkit::resolutionPerCentimeter});
}

zelStatus Jp2File::show() {
    iccProfile = boxes_.iccProfile;
    showPalette();
    showResolution();
    view_ = viewOf(shape_, boxes_);
    size = zelSize(static_cast<int>(shape_.width()), static_cast<int>(shape_.height()), 1,
                   static_cast<int>(view_.components.size()));
    dtype = view_.type;
    order = zelInterleaved;
    cm = view_.colorModel;
    orientation = zelUpperLeftOrigin;
    compression = zelUnknownCompression;

    const bool tiled =
        !shape_.singleTile() && shape_.tileX == shape_.x0 && shape_.tileY == shape_.y0;
    const std::int64_t rowBytesWide = std::int64_t{size.x} * size.c * bitsOf(dtype) / 8;
    pageSize = zelSize(size.x, zelkit::bandRows(rowBytesWide, size.y), 1, size.c);
    if (tiled)
        pageSize =
            zelSize(static_cast<int>(std::min(shape_.tileWidth, shape_.width())),
                    static_cast<int>(std::min(shape_.tileHeight, shape_.height())), 1, size.c);
    const std::int64_t pageBytes = std::int64_t{4} * size.x * size.c * pageSize.y;
    const std::int64_t pages = tiled ? 1 : std::max<std::int64_t>(areaBytes / pageBytes, 1);
    areaRows_ = static_cast<int>(std::min<std::int64_t>(pages * pageSize.y, INT_MAX));
    const auto elements = zelkit::checkedProduct({pageSize.x, pageSize.y, pageSize.c});
    row_.assign(static_cast<std::size_t>(size.c),
                std::vector<std::int32_t>(static_cast<std::size_t>(pageSize.x)));
    return elements && *elements <= INT_MAX ? zelOKAY : zelStatusEncode(zelUNSUPPORTEDBYFILE);
}

// Pages

// What is decoded for a page, on the reference grid. Of bands, twice the rows of the last time if
// the page lies beside these, since a client that goes on wants the next ones too, and decoding
// a band alone costs a little more for each of its rows.
Area Jp2File::areaOf(const Box& page) {
    const auto onGrid = [this](const Box& box) {
        return Area{shape_.x0 + box.x, shape_.y0 + box.y, shape_.x0 + box.x + box.nx,
                    shape_.y0 + box.y + box.ny};
    };
    const Box last = decodedRows_;
    if (page.nx != size.x || decoder_->holds(onGrid(page)))
        return onGrid(page);
    Box& rows = decodedRows_ = page;
    const int more = static_cast<int>(std::min<std::int64_t>(areaRows_, std::int64_t{2} * last.ny));
    if (page.y == last.y + last.ny) {
        rows.ny = std::min(std::max(more, page.ny), size.y - page.y);
    } else if (page.y + page.ny == last.y) {
        rows.y = std::max(0, std::min(page.y, last.y - more));
        rows.ny = last.y - rows.y;
    }
    return onGrid(rows);
}

zelStatus Jp2File::getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz, int nc) {
    if (isNew_)
        return ScanlineFile::getPage(data, x, y, z, c, nx, ny, nz, nc);
    if (!data || !isPage(x, y, z, c, nx, ny, nz, nc))
        return zelStatusEncode(zelBADPARAMS);
    if (const auto* const kept = cache_.find(x, y)) {
        std::memcpy(data, kept->data(), kept->size());
        return zelOKAY;
    }
    const Box page{x, y, nx, ny};
    const zelStatus status = decoder_->decode(areaOf(page));
    if (status != zelOKAY)
        return status;
    copyPage(data, page);
    if (!shape_.singleTile()) // of bands of one tile, the decoder keeps several
        cache_.keep(x, y, data, zelDataSize(dtype, pageSize));
    return zelOKAY;
}

void Jp2File::copyPage(void* data, const Box& page) {
    const auto columns = static_cast<std::size_t>(page.nx);
    for (int line = 0; line < page.ny; line++) {
        for (std::size_t channel = 0; channel < row_.size(); channel++)
            decoder_->fetchRow(view_.components[channel], shape_.x0 + page.x,
                               shape_.y0 + page.y + line, std::span(row_[channel]).first(columns));
        if (view_.ycc)
            turnToRgb(columns);
        if (cm != zelRGBPalette)
            for (std::size_t channel = 0; channel < row_.size(); channel++)
                spread(channel, columns);
        storeRow(data, std::int64_t{line} * pageSize.x * size.c, columns);
    }
}

void Jp2File::turnToRgb(std::size_t columns) {
    const auto first = static_cast<std::size_t>(view_.components.front());
    const double top = std::ldexp(1.0, shape_.components[first].bits) - 1;
    const double middle = (top + 1) / 2;
    const auto whole = [top](double value) {
        return static_cast<std::int32_t>(std::lround(std::clamp(value, 0.0, top)));
    };
    for (std::size_t i = 0; i < columns; i++) {
        const double luma = row_[0][i], blue = row_[1][i] - middle, red = row_[2][i] - middle;
        row_[0][i] = whole(luma + 1.402 * red);
        row_[1][i] = whole(luma - 0.344136 * blue - 0.714136 * red);
        row_[2][i] = whole(luma + 1.772 * blue);
    }
}

// Unsigned samples of fewer bits than the type has take its full range.
void Jp2File::spread(std::size_t channel, std::size_t columns) {
    const Component& from = shape_.components[static_cast<std::size_t>(view_.components[channel])];
    const int bits = bitsOf(dtype);
    if (dtype == zelBit || !(dtype & (zelUChar | zelUShort | zelUInt)) || from.bits >= bits)
        return;
    const std::uint64_t most = (std::uint64_t{1} << from.bits) - 1;
    const std::uint64_t range = (std::uint64_t{1} << bits) - 1;
    for (std::size_t i = 0; i < columns; i++) {
        const auto number = static_cast<std::uint64_t>(std::max(row_[channel][i], 0));
        row_[channel][i] = static_cast<std::int32_t>(
            static_cast<std::uint32_t>((number * range + most / 2) / most));
    }
}

void Jp2File::storeRow(void* data, std::int64_t firstElement, std::size_t columns) const {
    const std::size_t channels = row_.size();
    const auto storeAs = [&](auto* elements) {
        elements += firstElement;
        for (std::size_t channel = 0; channel < channels; channel++)
            for (std::size_t i = 0; i < columns; i++)
                elements[i * channels + channel] =
                    static_cast<std::remove_pointer_t<decltype(elements)>>(row_[channel][i]);
    };
    if (dtype == zelBit) {
        zelBitArray bits(data);
        for (std::size_t i = 0; i < columns; i++)
            bits[static_cast<int>(firstElement) + static_cast<int>(i)] = row_[0][i];
    } else if (bitsOf(dtype) == 8) {
        storeAs(static_cast<std::uint8_t*>(data));
    } else if (bitsOf(dtype) == 16) {
        storeAs(static_cast<std::uint16_t*>(data));
    } else {
        storeAs(static_cast<std::uint32_t*>(data));
    }
}

// Rows of an existing file never come by the road for new ones.
zelStatus Jp2File::startDecoding() {
    return zelStatusEncode(zelUNSUPPORTEDBYFILE);
}

zelStatus Jp2File::decodeRows(std::uint8_t*, int) {
    return zelStatusEncode(zelUNSUPPORTEDBYFILE);
}

// Writing

// False if no file holds such an image.
bool Jp2File::describeNewFile() {
    constexpr int mostTiles = 65535;
    const int channels = zelColorModelChans(cm);
    storedBits_ = bitsOf(dtype);
    if (bits_ > 0 && (dtype & (zelUChar | zelUShort)))
        storedBits_ = std::min(bits_, storedBits_);
    const auto tileBytes = zelkit::checkedProduct({pageSize.x, pageSize.y, size.c, 2});
    const std::int64_t tiles = (std::int64_t{size.x} + pageSize.x - 1) / pageSize.x *
                               ((std::int64_t{size.y} + pageSize.y - 1) / pageSize.y);
    return (channels == 0 || channels == size.c) && (dtype != zelBit || size.c == 1) && tileBytes &&
           *tileBytes <= INT_MAX && tiles <= mostTiles;
}

zelStatus Jp2File::createFile() {
    readOptions();
    if (!describeNewFile())
        return refuseAttributes();
    isNew_ = true;
    bare_ = isBareCodestreamName(filename);
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

NewBoxes Jp2File::newBoxes() const {
    const bool rgb = cm == zelRGB || cm == zelRGBA;
    NewBoxes wanted;
    wanted.width = size.x;
    wanted.height = size.y;
    wanted.channels = size.c;
    wanted.bits = storedBits_;
    wanted.isSigned = (dtype & (zelChar | zelShort)) != 0;
    wanted.colorSpace = rgb                                             ? rgbSpace
                        : cm == zelCMYK                                 ? cmykSpace
                        : cm == zelLuminance || cm == zelLuminanceAlpha ? greySpace
                                                                        : noColorSpace;
    wanted.alpha = cm == zelRGBA || cm == zelLuminanceAlpha;
    wanted.iccProfile = iccProfile;
    const auto unit =
        std::lround(fields.numberOr(zelkit::exifResolutionUnit, zelkit::resolutionPerInch));
    const double x = fields.numberOr(zelkit::exifXResolution, 0);
    const double y = fields.numberOr(zelkit::exifYResolution, x);
    // An inch is 254 / 10^4 metres, a centimetre 1 / 10^2.
    const bool inches = unit == zelkit::resolutionPerInch;
    if (inches || unit == zelkit::resolutionPerCentimeter) {
        wanted.x = resolutionOf(x, inches ? 254 : 1, inches ? 4 : 2);
        wanted.y = resolutionOf(y, inches ? 254 : 1, inches ? 4 : 2);
    }
    return wanted;
}

zelStatus Jp2File::startEncoding() {
    const NewBoxes wanted = newBoxes();
    const std::vector<std::uint8_t> header =
        bare_ ? std::vector<std::uint8_t>() : formatBoxes(wanted);
    headerBytes_ = static_cast<std::int64_t>(header.size());
    const zelStatus status = zelkit::writeExact(fd, header.data(), header.size(), 0);
    if (status != zelOKAY)
        return status;
    encoder_ = std::make_unique<Encoder>(fd, headerBytes_, nameForMessages());
    EncoderSettings settings;
    settings.width = size.x;
    settings.height = size.y;
    settings.channels = size.c;
    settings.tileWidth = pageSize.x;
    settings.tileHeight = pageSize.y;
    settings.bits = storedBits_;
    settings.isSigned = wanted.isSigned;
    settings.colorTransform = wanted.colorSpace == rgbSpace;
    settings.quality = quality_;
    settings.rate = rate_;
    return encoder_->start(settings);
}

// Interleaved elements to one channel behind the other. The full range of unsigned elements is
// mapped to that of fewer bits, rounded to nearest.
template <typename Element, typename Sample>
void Jp2File::gatherPlanes(const std::uint8_t* elements, int nx, int ny) {
    constexpr std::uint32_t range = std::numeric_limits<Element>::max();
    const std::uint32_t most = (std::uint32_t{1} << storedBits_) - 1;
    const auto channels = static_cast<std::size_t>(size.c);
    const std::size_t row = static_cast<std::size_t>(pageSize.x) * channels * sizeof(Element);
    std::uint8_t* planes = planes_.data();
    for (std::size_t channel = 0; channel < channels; channel++)
        for (int y = 0; y < ny; y++) {
            const std::uint8_t* from =
                elements + static_cast<std::size_t>(y) * row + channel * sizeof(Element);
            for (int x = 0; x < nx; x++, from += channels * sizeof(Element)) {
                Element element;
                std::memcpy(&element, from, sizeof element);
                const auto sample = static_cast<Sample>(
                    most < range ? (element * most + range / 2) / range : element);
                std::memcpy(planes, &sample, sizeof sample);
                planes += sizeof sample;
            }
        }
}

// A page is a tile.
zelStatus Jp2File::encodePage(const std::uint8_t* elements, int, int, int nx, int ny) {
    const std::size_t bytes = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny) *
                              static_cast<std::size_t>(size.c) * (storedBits_ > 8 ? 2 : 1);
    if (planes_.size() < bytes && !planes_.allocate(bytes))
        return zelkit::noMemory();
    if (dtype == zelBit) {
        const std::int64_t row = (std::int64_t{pageSize.x} + 7) / 8 * 8;
        for (std::int64_t i = 0; i < std::int64_t{nx} * ny; i++)
            planes_.data()[i] =
                static_cast<std::uint8_t>(zelkit::getBit(elements, i / nx * row + i % nx));
    } else if (bitsOf(dtype) == 8) {
        gatherPlanes<std::uint8_t, std::uint8_t>(elements, nx, ny);
    } else if (storedBits_ > 8) {
        gatherPlanes<std::uint16_t, std::uint16_t>(elements, nx, ny);
    } else {
        gatherPlanes<std::uint16_t, std::uint8_t>(elements, nx, ny);
    }
    return encoder_->writeTile({planes_.data(), bytes});
}

zelStatus Jp2File::finishEncoding() {
    const zelStatus status = encoder_->finish();
    if (status != zelOKAY || bare_)
        return status;
    const std::vector<std::uint8_t> box = codestreamHeader(encoder_->bytes());
    return zelkit::writeExact(fd, box.data(), box.size(), headerBytes_ - codestreamHeaderBytes);
}

} // namespace zeljp2
