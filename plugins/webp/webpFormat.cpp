#include "webpFile.h"

#include "kit/tableFormat.h"

#include <cerrno>
#include <new>
#include <webp/encode.h>

namespace zelwebp {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3}, {zelRGBA, 4}};

// The two compressions of WebP go by the names of their nearest relations: zelZIP loses nothing,
// zelJPEG does.
constexpr zelkit::Capabilities webpCapabilities = {
    .types = zelUChar,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .compressions = maskOf({zelZIP, zelJPEG}),
    .colorModels = colorModels,
    .maxWidth = WEBP_MAX_DIMENSION,
    .maxHeight = WEBP_MAX_DIMENSION,
    .maxChannels = 4,
    .preferredCompression = zelZIP,
    .randomAccessWrite = false,
};

class WebpFormat final : public zelkit::TableFormat {
public:
    WebpFormat() : TableFormat("WEBP", webpCapabilities) {}

protected:
    zelFile* newfileobj() override {
        auto* const file = new (std::nothrow) WebpFile;
        if (!file)
            errno = ENOMEM;
        return file;
    }
    zelTagDescription* _getTagDescriptions(int& count) override {
        count = static_cast<int>(tagTable().size());
        return tagTable().data();
    }
};

// Building it registers the format, as the plug-in is loaded.
WebpFormat registration;

} // namespace

} // namespace zelwebp
