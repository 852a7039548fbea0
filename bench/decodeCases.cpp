#include "decodeCases.h"

#include <zel/zelConfig.h>
#include <zel/zelDatabase.h>
#include <zel/zelFileConfig.h>

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

struct CloseFile {
    void operator()(zelFile* file) const { file->close(0); }
};
using File = std::unique_ptr<zelFile, CloseFile>;

std::uint32_t hashOf(int x, int y, int seed) {
    std::uint32_t hash = static_cast<std::uint32_t>(x) * 0x9e3779b1u ^
                         static_cast<std::uint32_t>(y) * 0x85ebca6bu ^
                         static_cast<std::uint32_t>(seed) * 0xc2b2ae35u;
    hash = (hash ^ hash >> 15) * 0x2c1b3c6du;
    return hash ^ hash >> 13;
}

float lattice(int x, int y, int seed) {
    return static_cast<float>(hashOf(x, y, seed) & 0xffff) / 65536.0f;
}

/// Smooth noise between 0 and 1 with waves of about `wave` pixels.
float waves(int x, int y, int wave, int seed) {
    const int left = x / wave, top = y / wave;
    const float right = static_cast<float>(x % wave) / static_cast<float>(wave);
    const float down = static_cast<float>(y % wave) / static_cast<float>(wave);
    const float above = std::lerp(lattice(left, top, seed), lattice(left + 1, top, seed), right);
    const float below =
        std::lerp(lattice(left, top + 1, seed), lattice(left + 1, top + 1, seed), right);
    return std::lerp(above, below, down);
}

/// Shades, hills with edges where they meet, texture and the noise of a sensor: 0 to 1.
float shade(int x, int y, int channel) {
    const float hills = waves(x, y, 331, 1) > waves(x, y, 173, 2) ? 0.3f : 0.05f;
    const float value = hills + 0.3f * waves(x, y, 401, 3 + channel) + 0.15f * waves(x, y, 37, 6) +
                        0.1f * waves(x, y, 7, 7 + channel);
    return value + 0.02f * lattice(x, y, 10 + channel);
}

/// The rows of a picture from `first` on, interleaved, with the values that the type has.
std::vector<double> pictureRows(int width, int first, int rows, int channels, double white) {
    std::vector<double> elements;
    elements.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(rows) *
                     static_cast<std::size_t>(channels));
    for (int y = first; y < first + rows; y++)
        for (int x = 0; x < width; x++)
            for (int c = 0; c < channels; c++)
                elements.push_back(double{shade(x, y, c)} * white);
    return elements;
}

double whiteOf(zelDataType type) {
    return type == zelFloat ? 1.0 : zelDataMax(type);
}

bool fill(zelFile& file) {
    zelSize size, page;
    file.getSize(size, file.getOrientation());
    file.getPageSize(page, file.getOrientation());
    const zelConfig config(zelDouble, zelInterleaved, size.c, nullptr, 0, file.getOrientation());
    for (int y = 0; y < size.y; y += page.y) {
        const int rows = std::min(page.y, size.y - y);
        const std::vector<double> elements =
            pictureRows(size.x, y, rows, size.c, whiteOf(file.getDataType()));
        if (file.setTile(0, y, 0, size.x, rows, 1, elements.data(), &config) != zelOKAY)
            return false;
    }
    return true;
}

} // namespace

std::vector<DecodeCase> decodeCases() {
    constexpr zelCompression none = zelNoCompression;
    const DecodeCase all[] = {
        {"tiff/stored", "TIFF", ".tif", "", zelUChar, zelRGB, none, 0, 1},
        {"tiff/tiles", "TIFF", ".tif", "", zelUChar, zelRGB, none, 256, 1},
        {"tiff/lzw", "TIFF", ".tif", "", zelUChar, zelRGB, zelLZW, 256, 1},
        {"tiff/zip16", "TIFF", ".tif", "", zelUShort, zelRGB, zelZIP, 256, 2},
        {"tiff/jpeg", "TIFF", ".tif", "", zelUChar, zelRGB, zelJPEG, 256, 1},
        {"png/rgb", "PNG", ".png", "", zelUChar, zelRGB, zelZIP, 0, 2},
        {"png/rgb16", "PNG", ".png", "", zelUShort, zelRGB, zelZIP, 0, 2},
        {"jpeg/rgb", "JPEG", ".jpg", "%quality=90", zelUChar, zelRGB, zelJPEG, 0, 1},
        {"jpeg/grey", "JPEG", ".jpg", "%quality=90", zelUChar, zelLuminance, zelJPEG, 0, 1},
        {"gif/grey", "GIF", ".gif", "", zelUChar, zelRGBPalette, zelLZW, 0, 1},
        {"webp/lossy", "WEBP", ".webp", "%quality=90%effort=0", zelUChar, zelRGB, zelJPEG, 0, 2},
        {"webp/lossless", "WEBP", ".webp", "%effort=0", zelUChar, zelRGB, zelZIP, 0, 2},
        {"jp2/tiles", "JP2", ".jp2", "", zelUChar, zelRGB, zelUnknownCompression, 0, 4},
        {"exr/float", "EXR", ".exr", "", zelFloat, zelRGB, none, 0, 2},
        {"exr/half", "EXR", ".exr", "%half", zelFloat, zelRGB, none, 0, 2},
        {"exr/zip", "EXR", ".exr", "%half", zelFloat, zelRGB, zelZIP, 0, 2},
        {"fits/short", "FITS", ".fits", "", zelShort, zelLuminance, none, 0, 1},
        {"fits/float", "FITS", ".fits", "", zelFloat, zelRGB, none, 0, 2},
        {"pnm/rgb", "PNM", ".ppm", "", zelUChar, zelRGB, none, 0, 1},
        {"pnm/rgb16", "PNM", ".ppm", "", zelUShort, zelRGB, none, 0, 1},
        {"bmp/rgb", "BMP", ".bmp", "", zelUChar, zelRGB, none, 0, 1},
        {"tga/rgb", "TGA", ".tga", "", zelUChar, zelRGB, none, 0, 1},
        {"hdr/rgb", "HDR", ".hdr", "", zelFloat, zelRGB, zelUnknownCompression, 0, 2},
    };
    std::vector<DecodeCase> cases;
    for (const DecodeCase& what : all)
        if (zelDatabase::findByFormatName(what.format))
            cases.push_back(what);
    return cases;
}

DecodeRun::DecodeRun(const DecodeCase& what, const std::string& folder, int side)
    : decoder_(directDecoder(what.format)), hasLibrary_(hasCodecLibrary(what.format)) {
    std::string name = what.name;
    std::replace(name.begin(), name.end(), '/', '-');
    coded_.path = folder + "/" + name + what.suffix;
    fullName_ = coded_.path + "#" + what.format;
    if (!decoder_)
        failure_ = "the library was not found at configure time";
    else if (!make(what, side / what.share))
        failure_ = "the file cannot be made";
    else
        compare();
}

bool DecodeRun::make(const DecodeCase& what, int side) {
    const int channels = zelColorModelChans(what.model);
    const zelSize size(side, side, 1, channels);
    const zelSize page(what.page, what.page, 1, channels);
    const zelFileConfig config(&size, what.type, static_cast<zelOrder>(0), what.model,
                               static_cast<zelOrientation>(0), what.compression,
                               what.page ? &page : nullptr);
    const File made(
        zelFile::create((fullName_ + what.arguments).c_str(), nullptr, &config, nullptr));
    if (!made || !fill(*made))
        return false;
    zelSize pages;
    made->getPageSize(pages, made->getOrientation());
    coded_.width = side;
    coded_.height = side;
    coded_.channels = channels;
    coded_.elementBytes = static_cast<int>(zelDataSize(what.type, 1));
    coded_.pageRows = pages.y;
    return true;
}

bool DecodeRun::throughZel(Place& place, bool tiles) const {
    const File file(zelFile::open(fullName_.c_str(), 0));
    if (!file)
        return false;
    zelSize size, page;
    file->getSize(size, file->getOrientation());
    file->getPageSize(page, file->getOrientation());
    const bool separate = page.c < size.c;
    for (int c = 0; c < size.c; c += page.c)
        for (int y = 0; y < size.y; y += page.y)
            for (int x = 0; x < size.x; x += page.x) {
                const int nx = std::min(page.x, size.x - x), ny = std::min(page.y, size.y - y);
                const auto bytesOf = [&](int pixels) {
                    return zelDataSize(file->getDataType(), pixels * page.c);
                };
                std::uint8_t* const memory = place.next(bytesOf(nx * ny), bytesOf(page.x * page.y));
                const zelConfig config(file->getDataType(), file->getOrder(), page.c, nullptr,
                                       separate ? c : 0, file->getOrientation());
                const zelStatus status = tiles
                                             ? file->getTile(x, y, 0, nx, ny, 1, memory, &config)
                                             : file->getPage(memory, x, y, 0, c, nx, ny, 1, page.c);
                if (status != zelOKAY)
                    return false;
            }
    return true;
}

/// A decoder that makes something else would be no measure.
void DecodeRun::compare() {
    Place pages(true), tiles(true), direct(true);
    if (!byPages(pages) || !byTiles(tiles))
        failure_ = "the file cannot be read";
    else if (!directly(direct))
        failure_ = "the library cannot read the file";
    else if (!std::ranges::equal(pages.kept(), tiles.kept()) ||
             (hasLibrary_ && !std::ranges::equal(pages.kept(), direct.kept())))
        failure_ = "the pixels differ";
}

} // namespace bench
