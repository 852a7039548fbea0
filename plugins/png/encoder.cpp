#include "encoder.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>

namespace zelpng {

Encoder::~Encoder() {
    png_destroy_write_struct(&png_, &info_);
}

zelStatus Encoder::open(const Header& header, const Options& options, const Metadata& metadata) {
    if (isReady())
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    if (!png_)
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    rowBytes_ = header.rowBytes;
    if (header.bits == 8)
        colors_ = metadata.colors.size() / static_cast<std::size_t>(metadata.colorChannels);
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
        png_set_compression_level(png_, options.level);
        // Filters make palettes and bits no smaller.
        const bool plain = header.colorType == PNG_COLOR_TYPE_PALETTE || header.bits == 1;
        png_set_filter(png_, PNG_FILTER_TYPE_BASE,
                       plain && options.filter == PNG_ALL_FILTERS ? PNG_FILTER_NONE
                                                                  : options.filter);
        chunks.store(png_, info_);
        png_write_info(png_, info_);
        if (header.bits == 16 && std::endian::native == std::endian::little)
            png_set_swap(png_);
    });
}

zelStatus Encoder::encodeRows(const std::uint8_t* rows, int count) {
    const std::uint8_t* const end = rows + static_cast<std::size_t>(count) * rowBytes_;
    if (colors_ > 0 && *std::max_element(rows, end) >= colors_) {
        zelError(zelSevWarning, "%s: an index is beyond the colour map", name());
        return zelStatusEncode(zelBADPARAMS);
    }
    return run([=, this] {
        for (int i = 0; i < count; i++)
            png_write_row(png_, rows + static_cast<std::size_t>(i) * rowBytes_);
    });
}

zelStatus Encoder::finish() {
    const zelStatus status = run([this] { png_write_end(png_, nullptr); });
    return status == zelOKAY ? writeOut() : status;
}

} // namespace zelpng
