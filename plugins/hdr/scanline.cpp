#include "scanline.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zelhdr {

namespace {

using zelkit::ByteReader;
using Pixel = std::array<std::uint8_t, 4>;

constexpr std::size_t pixelBytes = 4;

// The lengths of lines that new run lengths can have.
constexpr int shortestCoded = 8;
constexpr int longestCoded = 32767;

constexpr int longestLiteral = 128; // a code above it is a run of the rest
constexpr int longestRun = 127;
constexpr int shortestRun = 3;

zelStatus corrupted() {
    return zelStatusEncode(zelCORRUPTED);
}

zelStatus readChannel(ByteReader& reader, std::uint8_t* stored, int pixels) {
    for (int at = 0; at < pixels;) {
        const int code = reader.next();
        if (code < 0)
            return reader.endStatus();
        const bool isRun = code > longestLiteral;
        const int count = isRun ? code - longestLiteral : code;
        if (count == 0 || count > pixels - at)
            return corrupted();
        int value = isRun ? reader.next() : 0;
        for (int i = 0; i < count; i++, at++, stored += pixelBytes) {
            if (!isRun)
                value = reader.next();
            if (value < 0)
                return reader.endStatus();
            *stored = static_cast<std::uint8_t>(value);
        }
    }
    return zelOKAY;
}

// A pixel of three 1 repeats the one before it; several of them in a row are the digits of one
// count, to the base 256, the lowest first.
zelStatus readPixels(ByteReader& reader, Pixel pixel, std::uint8_t* stored, int pixels) {
    constexpr int highestShift = 24;
    int shift = 0;
    for (int at = 0;;) {
        if (pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1) {
            if (at == 0 || shift > highestShift)
                return corrupted();
            const std::int64_t count = std::int64_t{pixel[3]} << shift;
            if (count > pixels - at)
                return corrupted();
            shift += 8;
            const std::uint8_t* const last = stored - pixelBytes;
            for (std::int64_t i = 0; i < count; i++, stored += pixelBytes)
                std::memcpy(stored, last, pixelBytes);
            at += static_cast<int>(count);
        } else {
            shift = 0;
            std::memcpy(stored, pixel.data(), pixelBytes);
            stored += pixelBytes;
            at++;
        }
        if (at == pixels)
            return zelOKAY;
        const zelStatus status = reader.read(pixel.data(), pixelBytes);
        if (status != zelOKAY)
            return status;
    }
}

void appendChannel(std::vector<std::uint8_t>& out, const std::uint8_t* stored, int pixels) {
    const auto byteAt = [&](int i) { return stored[static_cast<std::size_t>(i) * pixelBytes]; };
    const auto runAt = [&](int at) {
        const int most = std::min(pixels - at, longestRun);
        int count = 1;
        while (count < most && byteAt(at + count) == byteAt(at))
            count++;
        return count;
    };
    for (int at = 0; at < pixels;) {
        int count = runAt(at);
        const bool isRun = count >= shortestRun;
        while (!isRun && at + count < pixels && count < longestLiteral &&
               runAt(at + count) < shortestRun)
            count++;
        out.push_back(static_cast<std::uint8_t>((isRun ? longestLiteral : 0) + count));
        for (int i = 0; i < (isRun ? 1 : count); i++)
            out.push_back(byteAt(at + i));
        at += count;
    }
}

bool canBeCoded(int pixels) {
    return pixels >= shortestCoded && pixels <= longestCoded;
}

} // namespace

zelStatus readScanline(ByteReader& reader, std::uint8_t* stored, int pixels) {
    Pixel first{};
    zelStatus status = reader.read(first.data(), first.size());
    if (status != zelOKAY)
        return status;
    if (!canBeCoded(pixels) || first[0] != 2 || first[1] != 2 || first[2] >= 128)
        return readPixels(reader, first, stored, pixels);
    if ((first[2] << 8 | first[3]) != pixels)
        return corrupted();
    for (std::size_t c = 0; c < pixelBytes && status == zelOKAY; c++)
        status = readChannel(reader, stored + c, pixels);
    return status;
}

void appendScanline(std::vector<std::uint8_t>& out, const std::uint8_t* stored, int pixels) {
    if (!canBeCoded(pixels)) {
        out.insert(out.end(), stored, stored + static_cast<std::size_t>(pixels) * pixelBytes);
        return;
    }
    out.insert(out.end(), {2, 2, static_cast<std::uint8_t>(pixels >> 8),
                           static_cast<std::uint8_t>(pixels & 0xff)});
    for (std::size_t c = 0; c < pixelBytes; c++)
        appendChannel(out, stored + c, pixels);
}

} // namespace zelhdr
