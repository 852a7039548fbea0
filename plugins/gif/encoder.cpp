#include "encoder.h"

#include "kit/fileIo.h"
#include "kit/palette.h"

#include <algorithm>
#include <bit>
#include <cerrno>

namespace zelgif {

namespace {

constexpr std::size_t bufferBytes = 64 * 1024;

struct FreeMap {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};
using MapHandle = std::unique_ptr<ColorMapObject, FreeMap>;

// Less alpha than this counts as transparent.
constexpr int opaque = 128;

// Of the palette's entries those that an index can reach.
int entriesOf(const Encoder::Image& image) {
    return std::min(image.palette.getLength(), image.isBits ? 2 : zelkit::largestPalette);
}

// The entry that is most transparent, if one is more so than not.
int transparentIndexOf(const Encoder::Image& image) {
    int found = -1;
    int least = opaque;
    for (int i = 0; i < entriesOf(image); i++)
        if (const int alpha = zelkit::paletteByte(image.palette, i, 3); alpha < least) {
            found = i;
            least = alpha;
        }
    return found;
}

std::uint8_t byteOf(int number, int shift) {
    return static_cast<std::uint8_t>(std::clamp(number, 0, 0xffff) >> shift);
}

} // namespace

Encoder::~Encoder() {
    finish();
}

// giflib is told that all went well, since it leaks its memory at a failure; `status_` remembers.
int Encoder::writeBytes(GifFileType* gif, const GifByteType* data, int bytes) {
    return static_cast<Encoder*>(gif->UserData)->write(data, bytes);
}

int Encoder::write(const std::uint8_t* data, int bytes) {
    buffer_.insert(buffer_.end(), data, data + bytes);
    if (buffer_.size() >= bufferBytes) {
        if (status_ == zelOKAY)
            status_ = zelkit::writeExact(fd_, buffer_.data(), buffer_.size(), position_);
        position_ += static_cast<std::int64_t>(buffer_.size());
        buffer_.clear();
    }
    return bytes;
}

zelStatus Encoder::statusOf(int result) {
    if (status_ == zelOKAY && result == GIF_ERROR)
        status_ = gif_ && gif_->Error == E_GIF_ERR_NOT_ENOUGH_MEM
                      ? zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM)
                      : zelStatusEncode(zelWRITEFAILED);
    return status_;
}

// As many colours as a table of the format can have: a power of 2. Two are for bits alone, so that
// the type of the indexes can be told.
Encoder::Colors Encoder::colorsOf(const Image& image) {
    const auto entries = static_cast<unsigned>(std::max(entriesOf(image), image.isBits ? 2 : 4));
    Colors colors(std::bit_ceil(entries));
    for (std::size_t i = 0; i < colors.size(); i++) {
        const auto byte = [&](int channel) {
            return zelkit::paletteByte(image.palette, static_cast<int>(i), channel);
        };
        colors[i] = {byte(0), byte(1), byte(2)};
    }
    return colors;
}

// One entry stands for all that are transparent.
void Encoder::mapTransparent(const Image& image, int transparent) {
    for (int i = 0; i < zelkit::largestPalette; i++) {
        const bool isSeen =
            i >= entriesOf(image) || zelkit::paletteByte(image.palette, i, 3) >= opaque;
        stored_[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(isSeen ? i : transparent);
    }
}

zelStatus Encoder::begin(const Image& first, const std::string* comment, int loopCount) {
    int error = 0;
    gif_ = EGifOpen(this, writeBytes, &error);
    if (!gif_)
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    EGifSetGifVersion(gif_, true);
    screenColors_ = colorsOf(first);
    const auto count = static_cast<int>(screenColors_.size());
    const MapHandle map(GifMakeMapObject(count, screenColors_.data()));
    if (!map)
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    int result = EGifPutScreenDesc(gif_, first.width, first.height, 8, 0, map.get());
    if (result != GIF_ERROR && loopCount >= 0) {
        const std::array<std::uint8_t, 3> loop = {1, byteOf(loopCount, 0), byteOf(loopCount, 8)};
        result = EGifPutExtensionLeader(gif_, APPLICATION_EXT_FUNC_CODE);
        if (result != GIF_ERROR)
            result = EGifPutExtensionBlock(gif_, 11, "NETSCAPE2.0");
        if (result != GIF_ERROR)
            result = EGifPutExtensionBlock(gif_, static_cast<int>(loop.size()), loop.data());
        if (result != GIF_ERROR)
            result = EGifPutExtensionTrailer(gif_);
    }
    if (result != GIF_ERROR && comment && !comment->empty())
        result = EGifPutComment(gif_, comment->c_str());
    return statusOf(result);
}

zelStatus Encoder::beginImage(const Image& image) {
    const Colors colors = colorsOf(image);
    MapHandle map;
    const bool ownColors = !std::ranges::equal(
        colors, screenColors_, [](const GifColorType& a, const GifColorType& b) {
            return a.Red == b.Red && a.Green == b.Green && a.Blue == b.Blue;
        });
    if (ownColors) {
        map.reset(GifMakeMapObject(static_cast<int>(colors.size()), colors.data()));
        if (!map)
            return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    }
    // The screen is cleared behind each image, so that the next one is seen alone.
    GraphicsControlBlock control;
    control.DisposalMode = DISPOSE_BACKGROUND;
    control.UserInputFlag = false;
    control.DelayTime = std::clamp(image.delay, 0, 0xffff);
    control.TransparentColor = transparentIndexOf(image);
    mapTransparent(image, control.TransparentColor);
    std::array<GifByteType, 4> bytes{};
    const auto count = static_cast<int>(EGifGCBToExtension(&control, bytes.data()));
    int result = EGifPutExtension(gif_, GRAPHICS_EXT_FUNC_CODE, count, bytes.data());
    if (result != GIF_ERROR)
        result = EGifPutImageDesc(gif_, 0, 0, image.width, image.height, false, map.get());
    entries_ = static_cast<int>(colors.size());
    row_.resize(static_cast<std::size_t>(image.width));
    return statusOf(result);
}

zelStatus Encoder::writeRow(const std::uint8_t* indexes) {
    if (*std::max_element(indexes, indexes + row_.size()) >= entries_)
        return zelStatusEncode(zelBADPARAMS);
    // giflib changes the row in its place.
    std::transform(indexes, indexes + row_.size(), row_.data(),
                   [this](std::uint8_t index) { return stored_[index]; });
    return statusOf(EGifPutLine(gif_, row_.data(), static_cast<int>(row_.size())));
}

zelStatus Encoder::finish() {
    if (!gif_)
        return status_;
    EGifCloseFile(gif_, nullptr);
    gif_ = nullptr;
    if (status_ == zelOKAY)
        status_ = zelkit::writeExact(fd_, buffer_.data(), buffer_.size(), position_);
    buffer_.clear();
    return status_;
}

} // namespace zelgif
