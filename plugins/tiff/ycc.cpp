#include "ycc.h"

#include <algorithm>
#include <cmath>

namespace zeltiff {

namespace {

// What TIFFYCbCrToRGBInit asks for behind the structure: six tables.
constexpr std::size_t tableBytes =
    4 * 256 * sizeof(TIFFRGBValue) + 2 * 256 * sizeof(int) + 3 * 256 * sizeof(std::int32_t);

bool usable(const float* coefficients, const float* reference) {
    const auto finite = [](float value) { return std::isfinite(value); };
    return std::all_of(coefficients, coefficients + 3, finite) &&
           std::all_of(reference, reference + 6, finite) && coefficients[1] != 0;
}

} // namespace

TIFFYCbCrToRGB* YccToRgb::tables() const {
    return reinterpret_cast<TIFFYCbCrToRGB*>(memory_.data());
}

zelStatus YccToRgb::init(TIFF* tiff) {
    float* coefficients = nullptr;
    float* reference = nullptr;
    if (!TIFFGetFieldDefaulted(tiff, TIFFTAG_YCBCRCOEFFICIENTS, &coefficients) ||
        !TIFFGetFieldDefaulted(tiff, TIFFTAG_REFERENCEBLACKWHITE, &reference) ||
        !usable(coefficients, reference))
        return zelStatusEncode(zelCORRUPTED);
    const std::size_t bytes = sizeof(TIFFYCbCrToRGB) + sizeof(long) + tableBytes;
    memory_.assign(bytes / sizeof(std::max_align_t) + 1, std::max_align_t());
    return TIFFYCbCrToRGBInit(tables(), coefficients, reference) == 0
               ? zelOKAY
               : zelStatusEncode(zelCORRUPTED);
}

void YccToRgb::convert(const Layout& layout, const std::uint8_t* stored, int rows,
                       std::uint8_t* rgb, std::size_t rowBytes) const {
    const int width = static_cast<int>(layout.blockWidth);
    const int clumpBytes = layout.groupColumns * layout.groupRows + 2;
    for (int row = 0; row < rows; row += layout.groupRows) {
        const std::uint8_t* clump = stored + layout.bytesOf(row);
        std::uint8_t* const line = rgb + static_cast<std::size_t>(row) * rowBytes;
        for (int x = 0; x < width; x += layout.groupColumns, clump += clumpBytes)
            convertClump(layout, clump, std::min(layout.groupColumns, width - x),
                         std::min(layout.groupRows, rows - row), line + std::ptrdiff_t(x) * 3,
                         rowBytes);
    }
}

void YccToRgb::convertClump(const Layout& layout, const std::uint8_t* clump, int columns, int rows,
                            std::uint8_t* rgb, std::size_t rowBytes) const {
    const std::uint8_t* const chroma = clump + layout.groupColumns * layout.groupRows;
    for (int y = 0; y < rows; y++)
        for (int x = 0; x < columns; x++) {
            std::uint32_t r = 0, g = 0, b = 0;
            TIFFYCbCrtoRGB(tables(), clump[y * layout.groupColumns + x], chroma[0], chroma[1], &r,
                           &g, &b);
            std::uint8_t* const pixel = rgb + static_cast<std::size_t>(y) * rowBytes + x * 3;
            pixel[0] = static_cast<std::uint8_t>(r);
            pixel[1] = static_cast<std::uint8_t>(g);
            pixel[2] = static_cast<std::uint8_t>(b);
        }
}

} // namespace zeltiff
