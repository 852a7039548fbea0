#include "container.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <webp/demux.h>

namespace zelwebp {

namespace {

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

std::vector<std::uint8_t> chunkOf(const WebPDemuxer* demuxer, const char* name) {
    std::vector<std::uint8_t> content;
    WebPChunkIterator chunk;
    if (WebPDemuxGetChunk(demuxer, name, 1, &chunk) != 0) {
        content.assign(chunk.chunk.bytes, chunk.chunk.bytes + chunk.chunk.size);
        WebPDemuxReleaseChunkIterator(&chunk);
    }
    return content;
}

} // namespace

zelStatus Container::load(int fd) {
    const zelStatus status = readBytes(fd);
    return status == zelOKAY ? describe() : status;
}

zelStatus Container::readBytes(int fd) {
    std::array<std::uint8_t, 12> head{};
    std::int64_t length = 0;
    zelStatus status = zelkit::readExact(fd, head.data(), head.size(), 0);
    if (status == zelOKAY)
        status = zelkit::getFileLength(fd, length);
    if (status != zelOKAY)
        return status;
    if (std::memcmp(head.data(), "RIFF", 4) != 0 || std::memcmp(head.data() + 8, "WEBP", 4) != 0)
        return zelStatusEncode(zelCORRUPTED);
    std::int64_t bytes = 8;
    for (std::size_t i = 0; i < 4; i++)
        bytes += std::int64_t{head[4 + i]} << 8 * i;
    if (bytes > length)
        return zelStatusEncode(zelPREMATUREEOF);
    if (!bytes_.allocate(static_cast<std::size_t>(bytes)))
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    return zelkit::readExact(fd, bytes_.data(), bytes_.size(), 0);
}

zelStatus Container::describe() {
    const WebPData whole = data();
    const Demuxer demuxer(WebPDemux(&whole));
    if (!demuxer)
        return zelStatusEncode(zelCORRUPTED);
    const auto get = [&](WebPFormatFeature feature) {
        return WebPDemuxGetI(demuxer.get(), feature);
    };
    width = static_cast<int>(get(WEBP_FF_CANVAS_WIDTH));
    height = static_cast<int>(get(WEBP_FF_CANVAS_HEIGHT));
    const std::uint32_t flags = get(WEBP_FF_FORMAT_FLAGS);
    isAnimation = (flags & ANIMATION_FLAG) != 0;
    hasAlpha = (flags & ALPHA_FLAG) != 0;
    loopCount = static_cast<int>(get(WEBP_FF_LOOP_COUNT));
    WebPIterator frame;
    for (int more = WebPDemuxGetFrame(demuxer.get(), 1, &frame); more != 0;
         more = WebPDemuxNextFrame(&frame)) {
        WebPBitstreamFeatures features;
        if (WebPGetFeatures(frame.fragment.bytes, frame.fragment.size, &features) !=
            VP8_STATUS_OK) {
            frames.clear();
            break;
        }
        frames.push_back({frame.duration, features.format == 2});
    }
    WebPDemuxReleaseIterator(&frame);
    if (frames.empty() || width < 1 || height < 1)
        return zelStatusEncode(zelCORRUPTED);
    iccProfile = chunkOf(demuxer.get(), "ICCP");
    exif = chunkOf(demuxer.get(), "EXIF");
    return zelOKAY;
}

} // namespace zelwebp
