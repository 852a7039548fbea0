#include "bmpFile.h"

#include "kit/exif.h"
#include "kit/tableFormat.h"

#include <cerrno>
#include <new>

namespace zelbmp {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {
    {zelLuminance, 1}, {zelNegative, 1}, {zelRGBPalette, 1}, {zelRGB, 3}, {zelRGBA, 4}};

// Not every combination has a form: createFile refuses the others.
constexpr zelkit::Capabilities bmpCapabilities = {
    .types = zelBit | zelUChar,
    .orders = zelInterleaved,
    .orientations = maskOf({zelUpperLeftOrigin, zelLowerLeftOrigin}),
    .compressions = maskOf({zelNoCompression}),
    .colorModels = colorModels,
    .maxChannels = 4,
    .preferredOrientation = zelLowerLeftOrigin,
    .randomAccessWrite = false,
};

class BmpFormat final : public zelkit::TableFormat {
public:
    BmpFormat() : TableFormat("BMP", bmpCapabilities) {}

protected:
    zelFile* newfileobj() override {
        auto* const file = new (std::nothrow) BmpFile;
        if (!file)
            errno = ENOMEM;
        return file;
    }
    zelTagDescription* _getTagDescriptions(int& count) override {
        static auto tags = zelkit::joinTags({zelkit::resolutionTagDescriptions()});
        count = static_cast<int>(tags.size());
        return tags.data();
    }
};

// Building it registers the format, as the plug-in is loaded.
BmpFormat registration;

} // namespace

} // namespace zelbmp
