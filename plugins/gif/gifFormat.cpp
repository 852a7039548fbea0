#include "gifFile.h"

#include "kit/tableFormat.h"

#include <cerrno>
#include <new>

namespace zelgif {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGBPalette, 1}};

constexpr zelkit::Capabilities gifCapabilities = {
    .types = zelUChar,
    .orders = zelInterleaved,
    .orientations = maskOf({zelUpperLeftOrigin}),
    .compressions = maskOf({zelLZW}),
    .colorModels = colorModels,
    .maxWidth = 65535,
    .maxHeight = 65535,
    .maxChannels = 1,
    .preferredCompression = zelLZW,
    .randomAccessWrite = false,
};

class GifFormat final : public zelkit::TableFormat {
public:
    GifFormat() : TableFormat("GIF", gifCapabilities) {}

protected:
    zelFile* newfileobj() override {
        auto* const file = new (std::nothrow) GifFile;
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
GifFormat registration;

} // namespace

} // namespace zelgif
