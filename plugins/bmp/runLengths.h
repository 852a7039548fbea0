#ifndef ZELBMP_RUNLENGTHS_H
#define ZELBMP_RUNLENGTHS_H

#include "kit/byteReader.h"

#include <cstdint>
#include <vector>

namespace zelbmp {

/// Decodes RLE4 and RLE8, row by row. Pixels that the file passes over are index 0. Some encoders
/// fill rows up to a multiple of 4 bytes, as they would lie without run lengths: what is right of
/// the row's end in this is dropped.
class RunLengths {
public:
    RunLengths(int fd, std::int64_t offset, int bits, int width)
        : reader_(fd, offset), bits_(bits), width_(width),
          room_((std::int64_t{width} * bits + 31) / 32 * 32 / bits) {}

    /// Fills one row with indexes, one a byte. zelCORRUPTED if pixels lie further right.
    zelStatus decodeRow(std::uint8_t* row);

private:
    void put(std::uint8_t* row, int index);
    zelStatus putRun(std::uint8_t* row, int count, int value);
    zelStatus putLiteral(std::uint8_t* row, int count);
    zelStatus move();

    zelkit::ByteReader reader_;
    int bits_;
    int width_;
    std::int64_t room_; ///< pixels of a row with its filling
    std::int64_t column_ = 0;
    int emptyRows_ = 0; ///< before the row that the next code belongs to
    bool ended_ = false;
};

/// Adds the run lengths of one row of indexes, one a byte, with the row's end.
void appendRunLengths(std::vector<std::uint8_t>& out, const std::uint8_t* row, int width, int bits);

/// Adds the end of the image.
void appendEnd(std::vector<std::uint8_t>& out);

} // namespace zelbmp

#endif
