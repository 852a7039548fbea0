#ifndef ZELKIT_PALETTE_H
#define ZELKIT_PALETTE_H

#include <zel/zelColormap.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zelkit {

/// The most entries of a palette of bytes.
constexpr int largestPalette = 256;

/// A colour map of bytes with the given colours, one behind the other, from index 0 on. Null if
/// there is no memory, no entry or more than `most`. 3 channels are red, green and blue; a fourth
/// is alpha, 255 for opaque.
std::unique_ptr<zelColormap> makePalette(std::span<const std::uint8_t> colors, int channels,
                                         int most = largestPalette);

/// The first 256 entries of any colour map as bytes, in 3 channels or 4; wider types are scaled
/// down, and one channel counts as grey. Null for a map without entries or of 2 channels.
std::unique_ptr<zelColormap> paletteOf(const zelColormap& map);

/// The grey levels 0 to 255, spread over the entries.
std::unique_ptr<zelColormap> greyPalette(int entries);

/// One byte of a palette that one of these functions made; 0 for an index that it lacks, 255 for
/// the alpha of a palette of 3 channels.
std::uint8_t paletteByte(const zelColormap& palette, int index, int channel);

/// So the bytes of the first `entries` indexes, one behind the other.
std::vector<std::uint8_t> paletteBytes(const zelColormap& palette, int entries, int channels);

} // namespace zelkit

#endif
