#include "encoder.h"

#include "kit/fileIo.h"

#include <cerrno>
#include <memory>
#include <webp/mux.h>

namespace zelwebp {

namespace {

zelStatus noMemory() {
    return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
}

struct DeleteMux {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};
using Mux = std::unique_ptr<WebPMux, DeleteMux>;

class Output {
public:
    Output() { WebPMemoryWriterInit(&writer); }
    ~Output() { WebPMemoryWriterClear(&writer); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    WebPMemoryWriter writer;
};

bool addChunk(WebPMux* mux, const char* name, std::span<const std::uint8_t> content) {
    const WebPData data = {content.data(), content.size()};
    return content.empty() || WebPMuxSetChunk(mux, name, &data, 0) == WEBP_MUX_OK;
}

zelStatus writeWithChunks(int fd, const WebPData& image, std::span<const std::uint8_t> iccProfile,
                          std::span<const std::uint8_t> exif) {
    const Mux mux(WebPMuxNew());
    if (!mux || WebPMuxSetImage(mux.get(), &image, 0) != WEBP_MUX_OK ||
        !addChunk(mux.get(), "ICCP", iccProfile) || !addChunk(mux.get(), "EXIF", exif))
        return noMemory();
    WebPData file;
    WebPDataInit(&file);
    if (WebPMuxAssemble(mux.get(), &file) != WEBP_MUX_OK)
        return noMemory();
    const zelStatus status = zelkit::writeExact(fd, file.bytes, file.size, 0);
    WebPDataClear(&file);
    return status;
}

} // namespace

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

zelStatus Encoder::encode(const char* name, const Options& options, WebPMemoryWriter& output) {
    WebPConfig config;
    if (WebPConfigInit(&config) == 0)
        return zelStatusEncode(zelSYSTEM_CONFIGURATION_ERROR);
    config.lossless = options.lossless;
    config.exact = options.lossless;
    config.quality = static_cast<float>(options.lossless ? 75 : options.quality);
    config.method = options.effort;
    picture_.writer = WebPMemoryWrite;
    picture_.custom_ptr = &output;
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

zelStatus Encoder::write(int fd, const char* name, const Options& options,
                         std::span<const std::uint8_t> iccProfile,
                         std::span<const std::uint8_t> exif) {
    Output output;
    const zelStatus status = encode(name, options, output.writer);
    WebPPictureFree(&picture_);
    if (status != zelOKAY)
        return status;
    const WebPData image = {output.writer.mem, output.writer.size};
    return iccProfile.empty() && exif.empty() ? zelkit::writeExact(fd, image.bytes, image.size, 0)
                                              : writeWithChunks(fd, image, iccProfile, exif);
}

} // namespace zelwebp
