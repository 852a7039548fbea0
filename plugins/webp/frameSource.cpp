#include "frameSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <webp/decode.h>
#include <webp/demux.h>

namespace zelwebp {

namespace {

zelStatus noMemory() {
    return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
}

zelStatus statusOf(VP8StatusCode code) {
    switch (code) {
    case VP8_STATUS_OK:
        return zelOKAY;
    case VP8_STATUS_OUT_OF_MEMORY:
        return noMemory();
    case VP8_STATUS_NOT_ENOUGH_DATA:
    case VP8_STATUS_SUSPENDED:
        return zelStatusEncode(zelPREMATUREEOF);
    case VP8_STATUS_UNSUPPORTED_FEATURE:
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    default:
        return zelStatusEncode(zelCORRUPTED);
    }
}

// The pixels of an image are decoded at once up to this many bytes, larger images in slabs of full
// rows, for each of which libwebp goes through the image again. The rows beside a slab are decoded
// with it, since the colours of its first and last row are interpolated with theirs.
constexpr std::size_t slabBytes = std::size_t{64} << 20;
constexpr int marginRows = 2;

class StillSource final : public FrameSource {
public:
    explicit StillSource(const Container& container)
        : container_(container),
          rowBytes_(static_cast<std::size_t>(container.width) * (container.hasAlpha ? 4U : 3U)) {
        // A slab begins at an even row.
        const auto most = static_cast<int>(slabBytes / rowBytes_) & ~1;
        slabRows_ = std::min(std::max(most, 2), container.height);
    }

    zelStatus show(int /*index*/) override { return zelOKAY; }

    zelStatus copyRow(int y, std::uint8_t* row) override {
        const int slab = y / slabRows_;
        const zelStatus status = slab == held_ ? zelOKAY : decode(slab);
        if (status == zelOKAY)
            std::memcpy(row, slab_.get() + rowBytes_ * static_cast<std::size_t>(y - firstRow_),
                        rowBytes_);
        return status;
    }

private:
    zelStatus decode(int slab) {
        held_ = -1;
        firstRow_ = std::max(slab * slabRows_ - marginRows, 0);
        const int rows =
            std::min((slab + 1) * slabRows_ + marginRows, container_.height) - firstRow_;
        const std::size_t bytes = rowBytes_ * static_cast<std::size_t>(rows);
        if (bytes > slabCapacity_) {
            // libwebp fills it, so that clearing it first would be time lost.
            slab_.reset(new (std::nothrow) std::uint8_t[bytes]);
            slabCapacity_ = slab_ ? bytes : 0;
            if (!slab_)
                return noMemory();
        }
        WebPDecoderConfig config;
        if (WebPInitDecoderConfig(&config) == 0)
            return zelStatusEncode(zelSYSTEM_CONFIGURATION_ERROR);
        config.output.colorspace = container_.hasAlpha ? MODE_RGBA : MODE_RGB;
        config.output.is_external_memory = 1;
        config.output.u.RGBA = {slab_.get(), static_cast<int>(rowBytes_), slabCapacity_};
        if (rows < container_.height) {
            config.options.use_cropping = 1;
            config.options.crop_top = firstRow_;
            config.options.crop_width = container_.width;
            config.options.crop_height = rows;
        }
        const WebPData data = container_.data();
        const zelStatus status = statusOf(WebPDecode(data.bytes, data.size, &config));
        WebPFreeDecBuffer(&config.output);
        if (status == zelOKAY)
            held_ = slab;
        return status;
    }

    const Container& container_;
    std::size_t rowBytes_;
    int slabRows_;
    std::unique_ptr<std::uint8_t[]> slab_;
    std::size_t slabCapacity_ = 0;
    int firstRow_ = 0; ///< of the image, in `slab_`
    int held_ = -1;    ///< the slab in `slab_`; -1: none
};

struct DeleteAnimation {
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};

// libwebp holds the canvas twice, of 4 bytes a pixel: 512 MiB for 64 Mi pixels.
constexpr std::int64_t mostCanvasPixels = std::int64_t{64} << 20;

class AnimationSource final : public FrameSource {
public:
    explicit AnimationSource(const Container& container) : container_(container) {}

    zelStatus show(int index) override {
        zelStatus status = decoder_ ? zelOKAY : open();
        if (status == zelOKAY && shown_ > index) {
            WebPAnimDecoderReset(decoder_.get());
            shown_ = -1;
        }
        for (; status == zelOKAY && shown_ < index; shown_++) {
            int time = 0;
            if (WebPAnimDecoderGetNext(decoder_.get(), &canvas_, &time) == 0)
                status = zelStatusEncode(zelCORRUPTED);
        }
        if (status != zelOKAY)
            decoder_.reset();
        return status;
    }

    zelStatus copyRow(int y, std::uint8_t* row) override {
        const auto width = static_cast<std::size_t>(container_.width);
        const std::uint8_t* pixel = canvas_ + width * 4 * static_cast<std::size_t>(y);
        if (container_.hasAlpha)
            std::memcpy(row, pixel, width * 4);
        else
            for (std::size_t x = 0; x < width; x++, pixel += 4, row += 3)
                std::copy_n(pixel, 3, row);
        return zelOKAY;
    }

private:
    zelStatus open() {
        if (std::int64_t{container_.width} * container_.height > mostCanvasPixels)
            return zelStatusEncode(zelUNSUPPORTEDBYFILE);
        WebPAnimDecoderOptions options;
        if (WebPAnimDecoderOptionsInit(&options) == 0)
            return zelStatusEncode(zelSYSTEM_CONFIGURATION_ERROR);
        options.color_mode = MODE_RGBA;
        const WebPData data = container_.data();
        decoder_.reset(WebPAnimDecoderNew(&data, &options));
        shown_ = -1;
        return decoder_ ? zelOKAY : noMemory();
    }

    const Container& container_;
    std::unique_ptr<WebPAnimDecoder, DeleteAnimation> decoder_;
    int shown_ = -1;                 ///< the image on the canvas; -1: none
    std::uint8_t* canvas_ = nullptr; ///< libwebp's
};

} // namespace

std::unique_ptr<FrameSource> makeFrameSource(const Container& container) {
    FrameSource* source = nullptr;
    if (container.isAnimation)
        source = new (std::nothrow) AnimationSource(container);
    else
        source = new (std::nothrow) StillSource(container);
    return std::unique_ptr<FrameSource>(source);
}

} // namespace zelwebp
