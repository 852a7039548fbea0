#include "direct.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace bench {

namespace {

std::map<std::string, DirectDecoder>& decoders() {
    static std::map<std::string, DirectDecoder> all;
    return all;
}

/// The least that a format without a library costs: its bytes are read, and its elements written.
bool readAndCopy(const Coded& file, Place& place) {
    const Stream stream(std::fopen(file.path.c_str(), "rb"));
    if (!stream)
        return false;
    std::vector<std::uint8_t> piece(file.rowBytes() * static_cast<std::size_t>(file.pageRows));
    std::setvbuf(stream.get(), nullptr, _IONBF, 0);
    for (int y = 0; y < file.height; y += file.pageRows) {
        const auto rows = static_cast<std::size_t>(std::min(file.pageRows, file.height - y));
        const std::size_t bytes = file.rowBytes() * rows;
        if (std::fread(piece.data(), 1, bytes, stream.get()) == 0 && std::ferror(stream.get()))
            return false;
        std::memcpy(place.next(bytes), piece.data(), bytes);
    }
    return true;
}

} // namespace

DirectRegistration::DirectRegistration(const char* format, DirectDecoder decoder) {
    decoders()[format] = decoder;
}

bool hasCodecLibrary(const std::string& format) {
    const std::initializer_list<const char*> without = {"PNM", "BMP", "TGA", "HDR"};
    return std::find(without.begin(), without.end(), format) == without.end();
}

DirectDecoder directDecoder(const std::string& format) {
    if (!hasCodecLibrary(format))
        return readAndCopy;
    const auto found = decoders().find(format);
    return found == decoders().end() ? nullptr : found->second;
}

} // namespace bench
