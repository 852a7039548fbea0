#include "direct.h"

#include <webp/decode.h>

namespace {

bool decode(const bench::Coded& file, bench::Place& place) {
    const bench::Stream stream(std::fopen(file.path.c_str(), "rb"));
    if (!stream || std::fseek(stream.get(), 0, SEEK_END) != 0)
        return false;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::ftell(stream.get())));
    std::rewind(stream.get());
    if (std::fread(bytes.data(), 1, bytes.size(), stream.get()) != bytes.size())
        return false;
    const std::size_t size = file.rowBytes() * static_cast<std::size_t>(file.height);
    return WebPDecodeRGBInto(bytes.data(), bytes.size(), place.next(size), size,
                             static_cast<int>(file.rowBytes())) != nullptr;
}

const bench::DirectRegistration registration("WEBP", decode);

} // namespace
