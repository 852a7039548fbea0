#include "hdrFile.h"

#include "kit/tableFormat.h"

#include <cerrno>
#include <new>

namespace zelhdr {

namespace {

using zelkit::maskOf;

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3}, {zelMultiSpectral, 3}};

constexpr zelkit::Capabilities hdrCapabilities = {
    .types = zelFloat,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .compressions = maskOf({zelNoCompression}),
    .colorModels = colorModels,
    .maxChannels = 3,
    .preferredType = zelFloat,
    .randomAccessWrite = false,
};

class HdrFormat final : public zelkit::TableFormat {
public:
    HdrFormat() : TableFormat("HDR", hdrCapabilities) {}

protected:
    zelFile* newfileobj() override {
        auto* const file = new (std::nothrow) HdrFile;
        if (!file)
            errno = ENOMEM;
        return file;
    }
    zelTagDescription* _getTagDescriptions(int& count) override {
        count = static_cast<int>(tagDescriptions().size());
        return tagDescriptions().data();
    }
};

// Building it registers the format, as the plug-in is loaded.
HdrFormat registration;

} // namespace

} // namespace zelhdr
