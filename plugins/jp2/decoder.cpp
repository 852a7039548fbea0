#include "decoder.h"

#include <algorithm>

namespace zeljp2 {

namespace {

std::int64_t divideUp(std::int64_t number, std::int64_t by) {
    return (number + by - 1) / by;
}

} // namespace

void Decoder::drop() {
    decoded_.reset();
    image_.reset();
    codec_.reset();
    handle_.reset();
    used_ = false;
}

zelStatus Decoder::open() {
    if (codec_)
        return zelOKAY;
    handle_.reset(stream_.make(true));
    codec_.reset(opj_create_decompress(OPJ_CODEC_J2K));
    if (!handle_ || !codec_) {
        drop();
        return zelStatusEncode(zelMALLOCFAILED);
    }
    stream_.listenTo(codec_.get());
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* image = nullptr;
    const bool good = opj_setup_decoder(codec_.get(), &parameters) &&
                      opj_decoder_set_strict_mode(codec_.get(), OPJ_TRUE) &&
                      opj_read_header(handle_.get(), codec_.get(), &image);
    image_.reset(image);
    const bool whole = good && image->numcomps == shape_.components.size();
    if (!whole)
        drop();
    return stream_.check(whole, zelCORRUPTED);
}

// The tile that is just the area.
std::optional<std::int64_t> Decoder::tileAt(const Area& area) const {
    const std::int64_t column = (area.x0 - shape_.tileX) / shape_.tileWidth;
    const std::int64_t row = (area.y0 - shape_.tileY) / shape_.tileHeight;
    const std::int64_t x = shape_.tileX + column * shape_.tileWidth;
    const std::int64_t y = shape_.tileY + row * shape_.tileHeight;
    const bool same = area.x0 == std::max(x, shape_.x0) && area.y0 == std::max(y, shape_.y0) &&
                      area.x1 == std::min(x + shape_.tileWidth, shape_.x1) &&
                      area.y1 == std::min(y + shape_.tileHeight, shape_.y1);
    return same ? std::optional(row * shape_.tilesAcross() + column) : std::nullopt;
}

zelStatus Decoder::decode(const Area& area) {
    if (holds(area))
        return zelOKAY;
    decoded_.reset();
    const auto tile = shape_.singleTile() ? std::nullopt : tileAt(area);
    // A codec of several tiles is good for one area.
    if (used_ && !shape_.singleTile() && !tile)
        drop();
    const zelStatus opened = open();
    if (opened != zelOKAY)
        return opened;
    used_ = true;
    const zelStatus status = tile ? decodeTile(area, *tile) : decodeArea(area);
    if (status == zelOKAY)
        decoded_ = area;
    else
        drop();
    return status;
}

zelStatus Decoder::decodeTile(const Area& area, std::int64_t tile) {
    const bool good = opj_get_decoded_tile(codec_.get(), handle_.get(), image_.get(),
                                           static_cast<OPJ_UINT32>(tile));
    return stream_.check(good && isComplete(area), zelCORRUPTED);
}

zelStatus Decoder::decodeArea(const Area& area) {
    const bool good =
        opj_set_decode_area(codec_.get(), image_.get(), static_cast<OPJ_INT32>(area.x0),
                            static_cast<OPJ_INT32>(area.y0), static_cast<OPJ_INT32>(area.x1),
                            static_cast<OPJ_INT32>(area.y1)) &&
        opj_decode(codec_.get(), handle_.get(), image_.get());
    return stream_.check(good && isComplete(area), zelCORRUPTED);
}

// Whether every component has the samples that the area asks for.
bool Decoder::isComplete(const Area& area) const {
    if (image_->numcomps != shape_.components.size())
        return false;
    for (std::size_t i = 0; i < shape_.components.size(); i++) {
        const opj_image_comp_t& component = image_->comps[i];
        const Component& known = shape_.components[i];
        const std::int64_t x0 = divideUp(area.x0, known.dx), x1 = divideUp(area.x1, known.dx);
        const std::int64_t y0 = divideUp(area.y0, known.dy), y1 = divideUp(area.y1, known.dy);
        if (!component.data || component.x0 != x0 || component.y0 != y0 || component.w != x1 - x0 ||
            component.h != y1 - y0 || x0 >= x1 || y0 >= y1)
            return false;
    }
    return true;
}

void Decoder::fetchRow(int component, std::int64_t x, std::int64_t y,
                       std::span<std::int32_t> row) const {
    const opj_image_comp_t& samples = image_->comps[component];
    const Component& known = shape_.components[static_cast<std::size_t>(component)];
    const std::int64_t left = samples.x0, top = samples.y0;
    const std::int64_t line =
        std::clamp<std::int64_t>(y / known.dy - top, 0, std::int64_t{samples.h} - 1);
    const OPJ_INT32* const from = samples.data + line * samples.w;
    if (known.dx == 1) {
        std::copy_n(from + (x - left), row.size(), row.data());
        return;
    }
    for (std::size_t i = 0; i < row.size(); i++) {
        const std::int64_t column = (x + static_cast<std::int64_t>(i)) / known.dx - left;
        row[i] = from[std::clamp<std::int64_t>(column, 0, std::int64_t{samples.w} - 1)];
    }
}

} // namespace zeljp2
