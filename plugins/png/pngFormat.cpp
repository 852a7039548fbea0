#include "pngFile.h"

#include "kit/tableFormat.h"

#include <cerrno>
#include <new>

namespace zelpng {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelRGB, 3}, {zelLuminance, 1}, {zelLuminanceAlpha, 2}, {zelRGBA, 4}, {zelRGBPalette, 1}};

// Bits go with luminance and palettes alone, and palettes not with 16 bits: createFile refuses.
constexpr zelkit::Capabilities pngCapabilities = {
    .types = zelBit | zelUChar | zelUShort,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .compressions = maskOf({zelZIP}),
    .colorModels = colorModels,
    .maxChannels = 4,
    .preferredCompression = zelZIP,
    .randomAccessWrite = false,
};

class PngFormat final : public zelkit::TableFormat {
public:
    PngFormat() : TableFormat("PNG", pngCapabilities) {}

protected:
    zelFile* newfileobj() override {
        auto* const file = new (std::nothrow) PngFile;
        if (!file)
            errno = ENOMEM;
        return file;
    }

    zelTagDescription* _getTagDescriptions(int& count) override {
        count = static_cast<int>(tagTable().size());
        return const_cast<zelTagDescription*>(tagTable().data());
    }
};

// Building it registers the format, as the plug-in is loaded.
PngFormat registration;

} // namespace

} // namespace zelpng
