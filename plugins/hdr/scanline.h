#ifndef ZELHDR_SCANLINE_H
#define ZELHDR_SCANLINE_H

#include "kit/byteReader.h"

#include <cstdint>
#include <vector>

namespace zelhdr {

/// Reads one scanline of pixels of 4 bytes: without run lengths, with old ones that repeat pixels,
/// or with new ones that repeat bytes of one channel; each line tells.
/// zelCORRUPTED if a run passes the line's end or repeats nothing.
zelStatus readScanline(zelkit::ByteReader& reader, std::uint8_t* stored, int pixels);

/// Adds one scanline: with new run lengths where its length allows them, else without any.
void appendScanline(std::vector<std::uint8_t>& out, const std::uint8_t* stored, int pixels);

} // namespace zelhdr

#endif
