#ifndef ZELPNG_DEFLATER_H
#define ZELPNG_DEFLATER_H

#include "bitWriter.h"
#include "deflateBlock.h"
#include "matchFinder.h"

#include "kit/buffer.h"

#include <cstdint>
#include <memory>
#include <span>

namespace zelpng {

/// Packs bytes into a zlib stream: deflate between a head of two bytes and an Adler-32. Bytes go in
/// and come out piece by piece, in memory of a fixed size.
class Deflater {
public:
    /// Begins a stream. Level 0 only stores, 1 is fast, 9 packs best. Shorter matches than
    /// `shortest`, at least 4, are left alone: they save nothing where literals have short codes.
    /// False without memory.
    bool start(int level, int shortest);

    /// Takes bytes and tells how many: fewer than there are when output is to be fetched first.
    std::size_t take(std::span<const std::uint8_t> bytes);

    /// Packs what is left and ends the stream.
    void finish();

    /// What is packed; to be fetched and cleared before the next call of `take` or `finish`.
    std::span<const std::uint8_t> output() const { return out_.bytes(); }
    void clearOutput() { out_.clear(); }

private:
    void pack(bool last);
    void findSymbols();
    void add(Symbol symbol) { symbols_[symbolCount_++] = symbol; }

    Effort effort_;
    int floor_ = 0;
    zelkit::Buffer window_; ///< the bytes that matches may reach, then new ones
    int fresh_ = 0;         ///< where these begin
    int end_ = 0;           ///< of the bytes that were taken
    MatchFinder finder_;
    std::unique_ptr<Symbol[]> symbols_; ///< of the next block
    std::size_t symbolCount_ = 0;
    unsigned long adler_ = 1;
    BitWriter out_;
};

} // namespace zelpng

#endif
