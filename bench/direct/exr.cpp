#include "direct.h"

#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfInputFile.h>
#include <algorithm>
#include <exception>

namespace {

void decodeRows(Imf::InputFile& input, const bench::Coded& file, bench::Place& place) {
    const char* const names[] = {"R", "G", "B"};
    const std::size_t pixel = 3 * sizeof(float);
    for (int y = 0; y < file.height; y += file.pageRows) {
        const int rows = std::min(file.pageRows, file.height - y);
        std::uint8_t* const memory = place.next(file.rowBytes() * static_cast<std::size_t>(rows));
        Imf::FrameBuffer frame;
        for (std::size_t c = 0; c < 3; c++)
            frame.insert(names[c], Imf::Slice::Make(Imf::FLOAT, memory + c * sizeof(float), {0, y},
                                                    file.width, rows, pixel, file.rowBytes()));
        input.setFrameBuffer(frame);
        input.readPixels(y, y + rows - 1);
    }
}

bool decode(const bench::Coded& file, bench::Place& place) {
    try {
        Imf::InputFile input(file.path.c_str(), 0);
        decodeRows(input, file, place);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

const bench::DirectRegistration registration("EXR", decode);

} // namespace
