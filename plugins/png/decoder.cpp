#include "decoder.h"

#include "kit/fileIo.h"
#include "kit/sizes.h"

#include <bit>
#include <climits>
#include <cstring>

namespace zelpng {

namespace {

// Deflate makes at most this many bytes of one.
constexpr std::int64_t largestInflation = 1032;

// What libpng would keep of a file, however much of it there is, and nobody asks for; and what is
// read elsewhere, chunk by chunk.
constexpr png_byte passedOver[] = "sPLT\0pCAL\0sCAL\0tEXt\0zTXt\0iTXt\0tIME\0eXIf";
constexpr int passedOverCount = sizeof passedOver / 5;

// A chunk of a few KB may stand for gigabytes.
void setLimits(png_structp png, png_alloc_size_t largestChunk) {
    png_set_user_limits(png, INT_MAX, INT_MAX);
    png_set_chunk_malloc_max(png, largestChunk);
    png_set_benign_errors(png, 1);
    png_set_option(png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
}

// Has libpng give elements of 1, 8 and 16 bits; palette indexes keep their numbers.
void setTransformations(png_structp png, png_infop info) {
    const int bits = png_get_bit_depth(png, info);
    const bool palette = png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE;
    if (bits == 2 || bits == 4) {
        if (palette)
            png_set_packing(png);
        else
            png_set_expand_gray_1_2_4_to_8(png);
    }
    if (bits == 16 && std::endian::native == std::endian::little)
        png_set_swap(png);
    if (png_get_interlace_type(png, info) != PNG_INTERLACE_NONE)
        png_set_interlace_handling(png);
}

Header headerOf(png_structp png, png_infop info) {
    Header header;
    header.width = static_cast<int>(png_get_image_width(png, info));
    header.height = static_cast<int>(png_get_image_height(png, info));
    header.bits = png_get_bit_depth(png, info);
    header.colorType = png_get_color_type(png, info);
    header.channels = png_get_channels(png, info);
    header.interlaced = png_get_interlace_type(png, info) != PNG_INTERLACE_NONE;
    header.rowBytes = png_get_rowbytes(png, info);
    return header;
}

} // namespace

Decoder::~Decoder() {
    png_destroy_read_struct(&png_, &info_, nullptr);
}

zelStatus Decoder::checkLength(const Header& header) const {
    const auto needed =
        zelkit::checkedProduct({static_cast<std::int64_t>(header.rowBytes), header.height});
    return needed && *needed / largestInflation <= fileLength() ? zelOKAY
                                                                : zelStatusEncode(zelCORRUPTED);
}

zelStatus Decoder::open(Header& header) {
    if (isReady())
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    if (!png_)
        return zelkit::noMemory();
    zelStatus status = run([this] {
        info_ = png_create_info_struct(png_);
        png_set_read_fn(png_, this, read);
        setLimits(png_, hasInput() ? longestLooseChunk : zelkit::largestProfile);
        if (!hasInput())
            png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, passedOver, passedOverCount);
        png_read_info(png_, info_);
        header_ = headerOf(png_, info_);
    });
    if (status == zelOKAY)
        status = checkLength(header_);
    if (status == zelOKAY)
        status = run([this] {
            setTransformations(png_, info_);
            png_read_update_info(png_, info_);
            header_ = headerOf(png_, info_);
        });
    header = header_;
    return status;
}

void Decoder::getMetadata(Metadata& metadata) {
    readMetadata(png_, info_, metadata);
}

zelStatus Decoder::readEnd() {
    return run([this] { png_read_end(png_, nullptr); });
}

zelStatus Decoder::start() {
    started_ = true;
    row_ = 0;
    return header_.interlaced && image_.size() == 0 ? decodeImage() : zelOKAY;
}

zelStatus Decoder::decodeRows(std::uint8_t* rows, int count) {
    if (!header_.interlaced)
        return readRows(rows, count);
    std::memcpy(rows, image_.data() + header_.rowBytes * static_cast<std::size_t>(row_),
                header_.rowBytes * static_cast<std::size_t>(count));
    row_ += count;
    return zelOKAY;
}

zelStatus Decoder::readRows(std::uint8_t* rows, int count) {
    const std::size_t step = rows ? header_.rowBytes : 0;
    const zelStatus status = run([=, this] {
        for (int i = 0; i < count; i++)
            png_read_row(png_, rows ? rows + static_cast<std::size_t>(i) * step : nullptr, nullptr);
    });
    row_ += count;
    return status == zelOKAY && row_ == header_.height ? readEnd() : status;
}

zelStatus Decoder::skipRows(int count) {
    if (!header_.interlaced)
        return readRows(nullptr, count);
    row_ += count;
    return zelOKAY;
}

zelStatus Decoder::decodeImage() {
    constexpr int passes = 7;
    const auto bytes =
        zelkit::checkedProduct({static_cast<std::int64_t>(header_.rowBytes), header_.height});
    zelkit::Buffer image;
    if (!bytes || !image.allocate(static_cast<std::size_t>(*bytes)))
        return zelkit::noMemory();
    zelStatus status = run([&, this] {
        for (int pass = 0; pass < passes; pass++)
            for (int i = 0; i < header_.height; i++)
                png_read_row(png_, image.data() + static_cast<std::size_t>(i) * header_.rowBytes,
                             nullptr);
    });
    if (status == zelOKAY)
        status = readEnd();
    if (status == zelOKAY)
        image_ = std::move(image);
    png_destroy_read_struct(&png_, &info_, nullptr);
    return status;
}

} // namespace zelpng
