#include "input.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace zelgif {

void CloseDecoder::operator()(GifFileType* gif) const {
    DGifCloseFile(gif, nullptr);
}

int Input::readBytes(GifFileType* gif, GifByteType* data, int bytes) {
    return static_cast<Input*>(gif->UserData)->read(data, bytes);
}

int Input::read(std::uint8_t* data, int bytes) {
    int done = 0;
    while (done < bytes) {
        const std::int64_t at = position_ - bufferStart_;
        if (at < 0 || at >= static_cast<std::int64_t>(buffered_)) {
            bufferStart_ = position_;
            readStatus_ =
                zelkit::readSome(fd_, buffer_.data(), buffer_.size(), position_, buffered_);
            if (readStatus_ != zelOKAY)
                buffered_ = 0;
            if (buffered_ == 0)
                break;
            continue;
        }
        const int now = static_cast<int>(
            std::min<std::int64_t>(bytes - done, static_cast<std::int64_t>(buffered_) - at));
        std::memcpy(data + done, buffer_.data() + at, static_cast<std::size_t>(now));
        done += now;
        position_ += now;
    }
    return done;
}

DecoderHandle Input::open(zelStatus& status) {
    position_ = 0;
    int error = D_GIF_SUCCEEDED;
    DecoderHandle gif(DGifOpen(this, readBytes, &error));
    status = gif ? zelOKAY : statusOf(error);
    return gif;
}

zelStatus Input::statusOf(int error) const {
    if (readStatus_ != zelOKAY)
        return readStatus_;
    switch (error) {
    case D_GIF_ERR_READ_FAILED:
    case D_GIF_ERR_EOF_TOO_SOON:
    case D_GIF_ERR_NO_SCRN_DSCR:
        return zelStatusEncode(zelPREMATUREEOF);
    case D_GIF_ERR_NOT_ENOUGH_MEM:
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    default:
        return zelStatusEncode(zelCORRUPTED);
    }
}

} // namespace zelgif
