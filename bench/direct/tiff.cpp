#include "direct.h"

#include <tiffio.h>

namespace {

struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

bool decode(const bench::Coded& file, bench::Place& place) {
    const std::unique_ptr<TIFF, Close> tiff(TIFFOpen(file.path.c_str(), "r"));
    if (!tiff)
        return false;
    std::uint16_t compression = 0;
    if (TIFFGetField(tiff.get(), TIFFTAG_COMPRESSION, &compression) == 1 &&
        compression == COMPRESSION_JPEG)
        TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    const bool tiled = TIFFIsTiled(tiff.get()) != 0;
    const std::uint32_t blocks =
        tiled ? TIFFNumberOfTiles(tiff.get()) : TIFFNumberOfStrips(tiff.get());
    const tmsize_t bytes = tiled ? TIFFTileSize(tiff.get()) : TIFFStripSize(tiff.get());
    for (std::uint32_t block = 0; block < blocks; block++) {
        std::uint8_t* const memory = place.next(0, static_cast<std::size_t>(bytes));
        const tmsize_t got = tiled ? TIFFReadEncodedTile(tiff.get(), block, memory, bytes)
                                   : TIFFReadEncodedStrip(tiff.get(), block, memory, bytes);
        if (got <= 0)
            return false;
        place.next(static_cast<std::size_t>(got));
    }
    return true;
}

const bench::DirectRegistration registration("TIFF", decode);

} // namespace
