#include "hdrFile.h"

#include "kit/tableFormat.h"

#include <cerrno>
#include <new>

namespace zelhdr {

namespace {

constexpr zelkit::ColorModelChannels colorModels[] = {{zelRGB, 3}, {zelMultiSpectral, 3}};

constexpr zelkit::Capabilities hdrCapabilities = {
    .types = zelFloat,
    .orders = zelInterleaved,
    .orientations = zelkit::allOrientations,
    .colorModels = colorModels,
    .maxChannels = 3,
    .preferredType = zelFloat,
    .preferredCompression = zelUnknownCompression,
    .randomAccessWrite = false,
};

class HdrFormat final : public zelkit::TableFormat {
public:
    HdrFormat() : TableFormat("HDR", hdrCapabilities) {}

    // Run lengths of the format's own, which have no name.
    int compressionIsSupported(zelCompression compression) override {
        return compression == zelUnknownCompression;
    }

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
