#ifndef ZELJP2_ENCODER_H
#define ZELJP2_ENCODER_H

#include "stream.h"

#include <cstdint>
#include <span>

namespace zeljp2 {

/// What a new codestream holds.
struct EncoderSettings {
    int width = 0;
    int height = 0;
    int channels = 1;
    int tileWidth = 0;
    int tileHeight = 0;
    int bits = 8; ///< of a sample, up to 16
    bool isSigned = false;
    bool colorTransform = false; ///< the first three channels are red, green and blue
    int quality = 0;             ///< signal to noise in decibels; 0: lossless, unless there is
    int rate = 0;                ///< a ratio of compression
};

/// Writes a codestream tile by tile.
class Encoder {
public:
    Encoder(int fd, std::int64_t offset, const char* name) : stream_(fd, offset, 0, name) {}

    zelStatus start(const EncoderSettings& settings);
    /// The next tile: its samples in the machine's byte order, of one byte up to 8 bits and else
    /// two, one channel behind the other.
    zelStatus writeTile(std::span<std::uint8_t> planes);
    zelStatus finish();

    std::int64_t bytes() const { return stream_.bytes(); }

private:
    Stream stream_;
    StreamHandle handle_;
    CodecHandle codec_;
    ImageHandle image_;
    OPJ_UINT32 nextTile_ = 0;
};

} // namespace zeljp2

#endif
