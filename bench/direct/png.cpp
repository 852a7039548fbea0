#include "direct.h"

#include <bit>
#include <csetjmp>
#include <png.h>

namespace {

bool decode(const bench::Coded& file, bench::Place& place) {
    const bench::Stream stream(std::fopen(file.path.c_str(), "rb"));
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!stream || !info || setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    png_init_io(png, stream.get());
    png_read_info(png, info);
    if (png_get_bit_depth(png, info) == 16 && std::endian::native == std::endian::little)
        png_set_swap(png);
    png_read_update_info(png, info);
    for (int y = 0; y < file.height; y++)
        png_read_row(png, place.next(file.rowBytes()), nullptr);
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    return true;
}

const bench::DirectRegistration registration("PNG", decode);

} // namespace
