#ifndef ZELTGA_PACKETS_H
#define ZELTGA_PACKETS_H

#include "kit/byteReader.h"

#include <array>
#include <cstdint>
#include <vector>

namespace zeltga {

/// Decodes run lengths of whole pixels. A packet may go on in the next row.
class PacketReader {
public:
    PacketReader(int fd, std::int64_t offset, int pixelBytes)
        : reader_(fd, offset), pixelBytes_(static_cast<std::size_t>(pixelBytes)) {}

    /// Fills the next `pixels` pixels, as they are stored.
    zelStatus decode(std::uint8_t* stored, int pixels);

private:
    zelkit::ByteReader reader_;
    std::size_t pixelBytes_;
    int left_ = 0; ///< pixels of the current packet
    bool isRun_ = false;
    std::array<std::uint8_t, 4> pixel_{}; ///< of a run
};

/// Adds the packets of one row of stored pixels.
void appendPackets(std::vector<std::uint8_t>& out, const std::uint8_t* stored, int pixels,
                   int pixelBytes);

} // namespace zeltga

#endif
