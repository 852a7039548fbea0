#include "deflater.h"

#include <algorithm>
#include <cstring>
#include <new>

#include <zlib.h>

namespace zelpng {

namespace {

constexpr int blockBytes = 2 * MatchFinder::reach; // what is slid out of the window
constexpr int windowBytes = MatchFinder::reach + blockBytes;
constexpr std::size_t spareBytes = 8;    // MatchFinder reads beyond the end
constexpr std::size_t symbolBytes = 4;   // at most, by the fixed code
constexpr std::size_t otherBytes = 1024; // the head and sum of the stream, the codes of blocks

// By level: 1 to 3 take what they find first, the others look for better.
constexpr Effort efforts[] = {{0, 0, 0},       {1, 16, 0},      {6, 24, 0},     {12, 32, 0},
                              {16, 32, 16},    {24, 48, 32},    {70, 110, 110}, {130, 160, 160},
                              {500, 258, 258}, {2000, 258, 258}};

// Fewer symbols do not pay for a block's codes, unless no more come.
constexpr std::size_t enoughSymbols = 16384;

} // namespace

bool Deflater::start(int level, int shortest) {
    effort_ = efforts[std::clamp(level, 0, 9)];
    floor_ = shortest - 1;
    fresh_ = end_ = 0;
    symbolCount_ = 0;
    adler_ = 1;
    symbols_.reset(new (std::nothrow) Symbol[windowBytes + enoughSymbols]);
    if (!symbols_ || !finder_.start() || !window_.allocate(windowBytes + spareBytes) ||
        !out_.allocate(largestBlock(windowBytes) + enoughSymbols * symbolBytes + otherBytes))
        return false;
    // Deflate with a window of 32 KiB; the second byte tells the effort and makes the two a
    // multiple of 31.
    out_.putByte(0x78);
    out_.putByte(level < 2 ? 0x01 : level < 6 ? 0x5e : level == 6 ? 0x9c : 0xda);
    return true;
}

std::size_t Deflater::take(std::span<const std::uint8_t> bytes) {
    const std::size_t count = std::min(bytes.size(), static_cast<std::size_t>(windowBytes - end_));
    std::memcpy(window_.data() + end_, bytes.data(), count);
    adler_ = adler32(adler_, bytes.data(), static_cast<uInt>(count));
    end_ += static_cast<int>(count);
    if (end_ == windowBytes) {
        pack(false);
        std::memmove(window_.data(), window_.data() + blockBytes, MatchFinder::reach);
        finder_.slide(blockBytes);
        fresh_ = end_ = MatchFinder::reach;
    }
    return count;
}

void Deflater::finish() {
    pack(true);
    out_.align();
    for (int shift = 24; shift >= 0; shift -= 8)
        out_.putByte(static_cast<std::uint8_t>(adler_ >> shift));
}

void Deflater::pack(bool last) {
    const std::span<const std::uint8_t> bytes(window_.data() + fresh_,
                                              static_cast<std::size_t>(end_ - fresh_));
    if (effort_.steps == 0) {
        writeStored(out_, bytes, last);
        return;
    }
    const std::size_t earlier = symbolCount_;
    findSymbols();
    const std::span<const Symbol> all(symbols_.get(), symbolCount_);
    const bool many = symbolCount_ - earlier >= enoughSymbols;
    if (!many && !last && symbolCount_ < enoughSymbols)
        return;
    // Only bytes that are still here can be stored. The others had too few symbols to be worth it.
    if (many && earlier > 0)
        writeBlock(out_, all.first(earlier), {}, false);
    const bool whole = many || earlier == 0;
    writeBlock(out_, many ? all.subspan(earlier) : all, whole ? bytes : decltype(bytes){}, last);
    symbolCount_ = 0;
}

void Deflater::findSymbols() {
    const std::uint8_t* const window = window_.data();
    for (int at = fresh_; at < end_;) {
        Match match = finder_.find(window, at, end_, floor_, effort_);
        if (match.length == 0) {
            add(Symbol::literal(window[at++]));
            continue;
        }
        int entered = at + 1;
        while (match.length < effort_.lazy) {
            const Match next = finder_.find(window, entered, end_, match.length, effort_);
            entered++;
            if (next.length == 0)
                break;
            add(Symbol::literal(window[at++]));
            match = next;
        }
        add(Symbol::match(match.length, match.distance));
        at += match.length;
        for (; entered < at; entered++)
            finder_.enter(window, entered, end_);
    }
}

} // namespace zelpng
