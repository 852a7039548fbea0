#include "assembly.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <memory>
#include <webp/mux.h>

namespace zelwebp {

namespace {

constexpr int longestDuration = (1 << 24) - 1;
constexpr int mostLoops = 0xffff;

struct DeleteMux {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};
using Mux = std::unique_ptr<WebPMux, DeleteMux>;

bool addChunk(WebPMux* mux, const char* name, std::span<const std::uint8_t> content) {
    const WebPData data = {content.data(), content.size()};
    return content.empty() || WebPMuxSetChunk(mux, name, &data, 0) == WEBP_MUX_OK;
}

// Each image replaces all of the one before.
bool addFrame(WebPMux* mux, const EncodedImage& image) {
    WebPMuxFrameInfo frame = {};
    frame.bitstream = image.data();
    frame.duration = std::clamp(image.duration, 0, longestDuration);
    frame.id = WEBP_CHUNK_ANMF;
    frame.dispose_method = WEBP_MUX_DISPOSE_NONE;
    frame.blend_method = WEBP_MUX_NO_BLEND;
    return WebPMuxPushFrame(mux, &frame, 0) == WEBP_MUX_OK;
}

bool addImages(WebPMux* mux, const Assembly& assembly) {
    if (assembly.images.size() == 1) {
        const WebPData image = assembly.images.front().data();
        return WebPMuxSetImage(mux, &image, 0) == WEBP_MUX_OK;
    }
    const WebPMuxAnimParams parameters = {0, std::clamp(assembly.loopCount, 0, mostLoops)};
    return WebPMuxSetAnimationParams(mux, &parameters) == WEBP_MUX_OK &&
           std::ranges::all_of(assembly.images,
                               [mux](const EncodedImage& image) { return addFrame(mux, image); });
}

} // namespace

zelStatus Assembly::write(int fd) const {
    if (images.size() == 1 && iccProfile.empty() && exif.empty()) {
        const WebPData image = images.front().data();
        return zelkit::writeExact(fd, image.bytes, image.size, 0);
    }
    const Mux mux(WebPMuxNew());
    WebPData file;
    WebPDataInit(&file);
    if (!mux || !addImages(mux.get(), *this) || !addChunk(mux.get(), "ICCP", iccProfile) ||
        !addChunk(mux.get(), "EXIF", exif) || WebPMuxAssemble(mux.get(), &file) != WEBP_MUX_OK)
        return zelkit::noMemory();
    const zelStatus status = zelkit::writeExact(fd, file.bytes, file.size, 0);
    WebPDataClear(&file);
    return status;
}

} // namespace zelwebp
