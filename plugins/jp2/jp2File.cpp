#include "jp2File.h"

#include "kit/palette.h"
#include "kit/sizes.h"

#include <zel/zelBitArray.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
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
    return type & (zelUChar | zelChar) ? 8 : type & (zelUShort | zelShort) ? 16 : 32;
}

} // namespace

bool Jp2File::carriesIccProfile() const {
    return !bare_;
}

// Opening

void Jp2File::readOptions() {
    const zelkit::Argument arguments[] = {{"quality", &quality_, 1, 200},
                                          {"rate", &rate_, 1, 10000}};
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
    status = decoder_->open();
    return status == zelOKAY ? show() : status;
}

zelStatus Jp2File::show() {
    iccProfile = boxes_.iccProfile;
    if (!boxes_.palette.empty())
        palette = zelkit::makePalette(
            std::span(boxes_.palette)
                .first(std::min<std::size_t>(boxes_.palette.size(),
                                             static_cast<std::size_t>(zelkit::largestPalette) *
                                                 static_cast<std::size_t>(boxes_.paletteChannels))),
            boxes_.paletteChannels);
    if (!palette && boxes_.paletteChannels > 0) {
        zelError(zelSevWarning, "%s: the palette has no colours of bytes; its indexes are shown",
                 nameForMessages());
        boxes_.palette.clear();
    }
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

// What is decoded for a page, on the reference grid.
Area Jp2File::areaOf(const Box& page) const {
    const int first = page.y / areaRows_ * areaRows_;
    const int last =
        static_cast<int>(std::min<std::int64_t>(std::int64_t{first} + areaRows_, size.y));
    return {shape_.x0 + page.x, shape_.y0 + first, shape_.x0 + page.x + page.nx, shape_.y0 + last};
}

zelStatus Jp2File::getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz, int nc) {
    if (isNew_)
        return ScanlineFile::getPage(data, x, y, z, c, nx, ny, nz, nc);
    const auto fits = [](int at, int count, int page, int extent) {
        return at >= 0 && at < extent && at % page == 0 && count == std::min(page, extent - at);
    };
    if (!data || z != 0 || nz != 1 || c != 0 || nc != size.c || !fits(x, nx, pageSize.x, size.x) ||
        !fits(y, ny, pageSize.y, size.y))
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

zelStatus Jp2File::createFile() {
    readOptions();
    const int channels = zelColorModelChans(cm);
    const auto tileBytes = zelkit::checkedProduct({size.x, pageSize.y, size.c, bitsOf(dtype) / 8});
    const auto tiles = (std::int64_t{size.y} + pageSize.y - 1) / pageSize.y;
    if ((channels != 0 && channels != size.c) || !tileBytes || *tileBytes > INT_MAX ||
        tiles > 65535)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    isNew_ = true;
    bare_ = isBareCodestreamName(filename);
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

zelStatus Jp2File::startEncoding() {
    const bool rgb = cm == zelRGB || cm == zelRGBA;
    NewBoxes wanted;
    wanted.width = size.x;
    wanted.height = size.y;
    wanted.channels = size.c;
    wanted.bits = bitsOf(dtype);
    wanted.isSigned = (dtype & (zelChar | zelShort)) != 0;
    wanted.colorSpace = rgb                                             ? rgbSpace
                        : cm == zelCMYK                                 ? cmykSpace
                        : cm == zelLuminance || cm == zelLuminanceAlpha ? greySpace
                                                                        : noColorSpace;
    wanted.alpha = cm == zelRGBA || cm == zelLuminanceAlpha;
    wanted.iccProfile = iccProfile;
    const std::vector<std::uint8_t> header =
        bare_ ? std::vector<std::uint8_t>() : formatBoxes(wanted);
    headerBytes_ = static_cast<std::int64_t>(header.size());
    const zelStatus status = zelkit::writeExact(fd, header.data(), header.size(), 0);
    if (status != zelOKAY)
        return status;
    encoder_ = std::make_unique<Encoder>(fd, headerBytes_, nameForMessages());
    return encoder_->start({size.x, size.y, size.c, pageSize.y, dtype, rgb, quality_, rate_});
}

// A band is a tile.
zelStatus Jp2File::encodeRows(const std::uint8_t* rows, int count) {
    const auto element = static_cast<std::size_t>(bitsOf(dtype) / 8);
    const auto channels = static_cast<std::size_t>(size.c);
    const std::size_t pixels = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(count);
    planes_.resize(pixels * channels * element);
    for (std::size_t channel = 0; channel < channels; channel++)
        for (std::size_t i = 0; i < pixels; i++)
            std::memcpy(planes_.data() + (channel * pixels + i) * element,
                        rows + (i * channels + channel) * element, element);
    return encoder_->writeTile(planes_);
}

zelStatus Jp2File::finishEncoding() {
    const zelStatus status = encoder_->finish();
    if (status != zelOKAY || bare_)
        return status;
    const std::vector<std::uint8_t> box = codestreamHeader(encoder_->bytes());
    return zelkit::writeExact(fd, box.data(), box.size(), headerBytes_ - codestreamHeaderBytes);
}

} // namespace zeljp2
