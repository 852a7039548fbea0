#include "packets.h"

#include <algorithm>
#include <cstring>

namespace zeltga {

namespace {

constexpr int runFlag = 0x80;
constexpr int longestPacket = 128;

} // namespace

zelStatus PacketReader::decode(std::uint8_t* stored, int pixels) {
    while (pixels > 0) {
        if (left_ == 0) {
            const int code = reader_.next();
            if (code < 0)
                return reader_.endStatus();
            left_ = (code & ~runFlag) + 1;
            isRun_ = (code & runFlag) != 0;
            const zelStatus status = isRun_ ? reader_.read(pixel_.data(), pixelBytes_) : zelOKAY;
            if (status != zelOKAY)
                return status;
        }
        const int count = std::min(left_, pixels);
        const std::size_t bytes = static_cast<std::size_t>(count) * pixelBytes_;
        if (isRun_)
            for (std::size_t at = 0; at < bytes; at += pixelBytes_)
                std::memcpy(stored + at, pixel_.data(), pixelBytes_);
        else if (const zelStatus status = reader_.read(stored, bytes); status != zelOKAY)
            return status;
        stored += bytes;
        pixels -= count;
        left_ -= count;
    }
    return zelOKAY;
}

void appendPackets(std::vector<std::uint8_t>& out, const std::uint8_t* stored, int pixels,
                   int pixelBytes) {
    const auto size = static_cast<std::size_t>(pixelBytes);
    const int shortestRun = pixelBytes == 1 ? 3 : 2; // a shorter one saves nothing
    const auto pixelAt = [&](int i) { return stored + static_cast<std::size_t>(i) * size; };
    const auto runAt = [&](int at) {
        const int most = std::min(pixels - at, longestPacket);
        int count = 1;
        while (count < most && std::memcmp(pixelAt(at), pixelAt(at + count), size) == 0)
            count++;
        return count;
    };
    for (int at = 0; at < pixels;) {
        int count = runAt(at);
        const bool isRun = count >= shortestRun;
        while (!isRun && at + count < pixels && count < longestPacket &&
               runAt(at + count) < shortestRun)
            count++;
        out.push_back(static_cast<std::uint8_t>((isRun ? runFlag : 0) + count - 1));
        out.insert(out.end(), pixelAt(at), pixelAt(at + (isRun ? 1 : count)));
        at += count;
    }
}

} // namespace zeltga
