#ifndef ZELEXR_LAYOUT_H
#define ZELEXR_LAYOUT_H

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelError.h>

#include <OpenEXR/ImfCompression.h>
#include <OpenEXR/ImfHeader.h>
#include <cstdint>
#include <string>
#include <vector>

namespace zelexr {

/// How a part of a file is shown.
struct Layout {
    Imath::Box2i window; ///< the data window, which is the image
    int width = 0;
    int height = 0;
    std::vector<std::string> channels; ///< in the order of the image
    zelDataType type = zelFloat;
    zelColorModel colorModel = zelLuminance;
    zelCompression compression = zelNoCompression;
    bool chroma = false; ///< luminance and subsampled chroma, shown as RGB
    bool deep = false;   ///< any number of samples in a pixel, shown as they cover one another
    int tileWidth = 0;   ///< of the pages; 0: bands
    int tileHeight = 0;
};

/// Settles how a part is shown. Fails with zelUNSUPPORTEDBYFILE for deep tiles and channels of
/// different density, and zelCORRUPTED if a block of the part is larger than a file of `fileBytes`
/// bytes can be to unpack.
zelStatus describe(const Imf::Header& header, std::int64_t fileBytes, Layout& layout);

/// The names of a new image's channels.
std::vector<std::string> channelNames(zelColorModel model, int channels);

} // namespace zelexr

#endif
