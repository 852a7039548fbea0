#include "frameDecoder.h"

#include <algorithm>

namespace zelgif {

std::int64_t mostPixels(std::int64_t dataBytes) {
    const std::int64_t codes = std::min(dataBytes, std::int64_t{1} << 40) * 4;
    return codes * std::min<std::int64_t>(codes, 4096);
}

zelStatus FrameDecoder::open(const Frame& frame) {
    if (std::int64_t{frame.width} * frame.height > mostPixels(frame.dataBytes))
        return zelStatusEncode(zelPREMATUREEOF);
    zelStatus status = zelOKAY;
    gif_ = input_.open(status);
    if (!gif_)
        return status;
    input_.setPosition(frame.offset);
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    if (DGifGetRecordType(gif_.get(), &record) == GIF_ERROR ||
        DGifGetImageDesc(gif_.get()) == GIF_ERROR)
        return input_.statusOf(gif_->Error);
    // Another program may have changed the file.
    if (gif_->Image.Width != frame.width || gif_->Image.Height != frame.height)
        return zelStatusEncode(zelCORRUPTED);
    width_ = frame.width;
    takeColors(gif_->Image.ColorMap ? gif_->Image.ColorMap : gif_->SColorMap);
    return zelOKAY;
}

void FrameDecoder::takeColors(const ColorMapObject* map) {
    colors_.clear();
    if (map)
        for (int i = 0; i < map->ColorCount; i++) {
            const GifColorType& color = map->Colors[i];
            colors_.insert(colors_.end(), {color.Red, color.Green, color.Blue});
        }
    else
        for (int i = 0; i < 256; i++)
            colors_.insert(colors_.end(), 3, static_cast<std::uint8_t>(i));
}

zelStatus FrameDecoder::nextRow(std::uint8_t* indexes) {
    return DGifGetLine(gif_.get(), indexes, width_) != GIF_ERROR ? zelOKAY
                                                                 : input_.statusOf(gif_->Error);
}

} // namespace zelgif
