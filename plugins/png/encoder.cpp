#include "encoder.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <climits>

namespace zelpng {

namespace {

constexpr png_byte pixelChunk[] = "IDAT";
constexpr png_byte lastChunk[] = "IEND";

// In bytes. After a filter, single bytes are small numbers with short codes.
constexpr int shortestMatch = 4;
constexpr int shortestFilteredMatch = 6;

} // namespace

Encoder::~Encoder() {
    png_destroy_write_struct(&png_, &info_);
}

zelStatus Encoder::open(const Header& header, const Options& options, const Metadata& metadata) {
    if (isReady())
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    if (!png_)
        return zelkit::noMemory();
    rowBytes_ = header.rowBytes;
    if (header.bits == 8)
        colors_ = metadata.colors.size() / static_cast<std::size_t>(metadata.colorChannels);
    if (!startPacking(header, options))
        return zelkit::noMemory();
    ChunkSet chunks(metadata);
    return run([&] {
        info_ = png_create_info_struct(png_);
        png_set_write_fn(png_, this, write, flush);
        png_set_user_limits(png_, INT_MAX, INT_MAX);
        png_set_benign_errors(png_, 1);
        png_set_option(png_, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(header.width),
                     static_cast<png_uint_32>(header.height), header.bits, header.colorType,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        chunks.store(png_, info_);
        png_write_info(png_, info_);
    });
}

bool Encoder::startPacking(const Header& header, const Options& options) {
    // Filters make palettes and bits no smaller.
    const bool plain = header.colorType == PNG_COLOR_TYPE_PALETTE || header.bits == 1;
    const int filters =
        plain && options.filter == PNG_ALL_FILTERS ? PNG_FILTER_NONE : options.filter;
    const int step = std::max(header.channels * header.bits / 8, 1);
    const int shortest = filters == PNG_FILTER_NONE ? shortestMatch : shortestFilteredMatch;
    return filter_.start(rowBytes_, static_cast<std::size_t>(step), filters, header.bits == 16) &&
           deflater_.start(options.level, shortest);
}

zelStatus Encoder::writePacked() {
    const std::span<const std::uint8_t> packed = deflater_.output();
    if (packed.empty())
        return zelOKAY;
    const zelStatus status =
        run([&] { png_write_chunk(png_, pixelChunk, packed.data(), packed.size()); });
    deflater_.clearOutput();
    return status;
}

zelStatus Encoder::encodeRows(const std::uint8_t* rows, int count) {
    const std::uint8_t* const end = rows + static_cast<std::size_t>(count) * rowBytes_;
    if (colors_ > 0 && *std::max_element(rows, end) >= colors_) {
        zelError(zelSevWarning, "%s: an index is beyond the colour map", name());
        return zelStatusEncode(zelBADPARAMS);
    }
    for (int i = 0; i < count; i++) {
        auto bytes = filter_.apply(rows + static_cast<std::size_t>(i) * rowBytes_);
        while (!bytes.empty()) {
            bytes = bytes.subspan(deflater_.take(bytes));
            const zelStatus status = writePacked();
            if (status != zelOKAY)
                return status;
        }
    }
    return zelOKAY;
}

zelStatus Encoder::finish() {
    deflater_.finish();
    zelStatus status = writePacked();
    if (status == zelOKAY)
        status = run([this] { png_write_chunk(png_, lastChunk, nullptr, 0); });
    return status == zelOKAY ? writeOut() : status;
}

} // namespace zelpng
