#include "direct.h"

#include <algorithm>
#include <fitsio.h>

namespace {

bool decode(const bench::Coded& file, bench::Place& place) {
    int status = 0;
    fitsfile* fits = nullptr;
    fits_open_diskfile(&fits, file.path.c_str(), READONLY, &status);
    int bitpix = 0;
    fits_get_img_type(fits, &bitpix, &status);
    const int type = bitpix == FLOAT_IMG ? TFLOAT : TSHORT;
    const LONGLONG elements = LONGLONG{file.width} * file.height * file.channels;
    const LONGLONG atOnce = LONGLONG{file.width} * file.pageRows;
    for (LONGLONG done = 0; status == 0 && done < elements; done += atOnce) {
        const LONGLONG now = std::min(atOnce, elements - done);
        const auto bytes = static_cast<std::size_t>(now * file.elementBytes);
        fits_read_img(fits, type, done + 1, now, nullptr, place.next(bytes), nullptr, &status);
    }
    if (fits)
        fits_close_file(fits, &status);
    return status == 0;
}

const bench::DirectRegistration registration("FITS", decode);

} // namespace
