#include "direct.h"

#include <algorithm>
#include <csetjmp>
#include <jpeglib.h>

namespace {

struct Errors {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
};

void leave(j_common_ptr info) {
    std::longjmp(reinterpret_cast<Errors*>(info->err)->jump, 1);
}

bool decode(const bench::Coded& file, bench::Place& place) {
    const bench::Stream stream(std::fopen(file.path.c_str(), "rb"));
    jpeg_decompress_struct info = {};
    Errors errors = {};
    info.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leave;
    if (!stream || setjmp(errors.jump) != 0) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, stream.get());
    jpeg_read_header(&info, TRUE);
    jpeg_start_decompress(&info);
    constexpr JDIMENSION atOnce = 16;
    while (info.output_scanline < info.output_height) {
        const JDIMENSION count = std::min(atOnce, info.output_height - info.output_scanline);
        std::uint8_t* const memory = place.next(file.rowBytes() * count);
        JSAMPROW rows[atOnce];
        for (JDIMENSION i = 0; i < count; i++)
            rows[i] = memory + i * file.rowBytes();
        for (JDIMENSION done = 0; done < count;)
            done += jpeg_read_scanlines(&info, rows + done, count - done);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return true;
}

const bench::DirectRegistration registration("JPEG", decode);

} // namespace
