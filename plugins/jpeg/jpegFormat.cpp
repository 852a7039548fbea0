#include "jpegFile.h"

#include "kit/tableFormat.h"

#include <cerrno>
#include <new>

namespace zeljpeg {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3}, {zelLuminance, 1}, {zelCMYK, 4}};

constexpr zelkit::Capabilities jpegCapabilities = {
    .types = zelUChar,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .compressions = maskOf({zelJPEG}),
    .colorModels = colorModels,
    .maxWidth = JPEG_MAX_DIMENSION,
    .maxHeight = JPEG_MAX_DIMENSION,
    .maxChannels = 4,
    .preferredCompression = zelJPEG,
    .randomAccessWrite = false,
};

class JpegFormat final : public zelkit::TableFormat {
public:
    JpegFormat() : TableFormat("JPEG", jpegCapabilities) {}

protected:
    zelFile* newfileobj() override {
        auto* const file = new (std::nothrow) JpegFile;
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
JpegFormat registration;

} // namespace

} // namespace zeljpeg
