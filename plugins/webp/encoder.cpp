#include "encoder.h"

#include "kit/fileIo.h"

namespace zelwebp {

using zelkit::noMemory;

zelStatus Encoder::begin(int width, int height, int channels) {
    if (WebPPictureInit(&picture_) == 0)
        return zelStatusEncode(zelSYSTEM_CONFIGURATION_ERROR);
    picture_.use_argb = 1;
    picture_.width = width;
    picture_.height = height;
    channels_ = channels;
    return WebPPictureAlloc(&picture_) != 0 ? zelOKAY : noMemory();
}

void Encoder::addRow(const std::uint8_t* row) {
    std::uint32_t* const pixels = picture_.argb + std::int64_t{row_} * picture_.argb_stride;
    for (int x = 0; x < picture_.width; x++, row += channels_) {
        const std::uint32_t alpha = channels_ == 4 ? row[3] : 255U;
        pixels[x] = alpha << 24 | std::uint32_t{row[0]} << 16 | std::uint32_t{row[1]} << 8 | row[2];
    }
    row_++;
}

zelStatus Encoder::encode(const char* name, const Options& options, EncodedImage& image) {
    WebPConfig config;
    if (WebPConfigInit(&config) == 0)
        return zelStatusEncode(zelSYSTEM_CONFIGURATION_ERROR);
    config.lossless = options.lossless;
    config.exact = options.lossless;
    config.quality = static_cast<float>(options.lossless ? 75 : options.quality);
    config.method = options.effort;
    picture_.writer = WebPMemoryWrite;
    picture_.custom_ptr = &image.output;
    if (WebPEncode(&config, &picture_) != 0)
        return zelOKAY;
    const bool outOfMemory = picture_.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
                             picture_.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY ||
                             picture_.error_code == VP8_ENC_ERROR_BAD_WRITE;
    if (outOfMemory)
        return noMemory();
    const bool tooDetailed = picture_.error_code == VP8_ENC_ERROR_PARTITION0_OVERFLOW ||
                             picture_.error_code == VP8_ENC_ERROR_PARTITION_OVERFLOW ||
                             picture_.error_code == VP8_ENC_ERROR_FILE_TOO_BIG;
    zelError(zelSevWarning, "%s: the image cannot be encoded (libwebp's error %d)%s", name,
             static_cast<int>(picture_.error_code),
             tooDetailed ? ": it has too much detail for its size; a lower quality may help" : "");
    return zelStatusEncode(zelWRITEFAILED);
}

} // namespace zelwebp
