#ifndef ZELPNG_METADATA_H
#define ZELPNG_METADATA_H

#include "kit/fields.h"
#include "kit/resolution.h"

#include <cstdint>
#include <png.h>
#include <string>
#include <vector>

namespace zelpng {

/// What a file says of its image, apart from its pixels.
struct Metadata {
    zelkit::Fields fields;
    std::vector<std::uint8_t> iccProfile;
    /// The colours of the palette, one behind the other: of 4 channels if entries are transparent.
    std::vector<std::uint8_t> colors;
    int colorChannels = 3;
};

/// The tags: those of EXIF, gamma, and the texts by PNG's own keywords.
std::span<const zelTagDescription> tagTable();

/// Whether texts of this keyword are tags.
bool isKeyword(const char* word);

/// Takes what libpng has read into `info`.
void readMetadata(png_structp png, png_infop info, Metadata& metadata);

/// Metadata in libpng's form, prepared so that `store` makes nothing that a jump would leak.
class ChunkSet {
public:
    explicit ChunkSet(const Metadata& metadata);

    /// Hands the chunks to libpng, which copies them.
    void store(png_structp png, png_infop info);

private:
    void addText(const char* keyword, const std::string& text);
    void addPalette();
    void setResolution();

    const Metadata& from_;
    std::vector<png_text> texts_;
    std::vector<png_color> colors_;
    std::vector<png_byte> alphas_;
    std::vector<png_byte> exif_;
    double gamma_ = 0; ///< 0: none
    zelkit::PerMeter resolution_;
    int resolutionUnit_ = PNG_RESOLUTION_METER;
};

} // namespace zelpng

#endif
