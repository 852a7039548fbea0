#ifndef ZELJPEG_ENCODER_H
#define ZELJPEG_ENCODER_H

#include "codec.h"
#include "decoder.h"
#include "metadata.h"

#include "kit/buffer.h"

namespace zeljpeg {

/// What the format arguments in a file's name ask for.
struct Options {
    int quality = 90;
    int subsampling = 0x22; ///< of chroma: horizontal factor, 16 times, and vertical factor
    bool progressive = false;
    bool optimize = false;
};

/// Writes a file in one pass.
class Encoder : private Codec {
public:
    Encoder(int fd, const char* name);
    ~Encoder();

    /// Writes all that stands before the samples.
    zelStatus open(const Header& header, const Options& options, const Metadata& metadata);
    zelStatus encodeRows(const std::uint8_t* rows, int count);
    zelStatus finish();

private:
    static void startBuffer(j_compress_ptr info);
    static boolean writeBuffer(j_compress_ptr info);
    static void writeRest(j_compress_ptr info);

    void write(std::size_t bytes);
    std::vector<std::uint8_t> makeExif(const zelkit::Fields& fields, bool hasDensity) const;
    void setUp(const Header& header, const Options& options);
    void writeMarkers(const std::vector<std::uint8_t>& exif, const std::string* comment,
                      const std::vector<std::uint8_t>& profile);

    jpeg_compress_struct info_{};
    jpeg_destination_mgr destination_{};
    zelkit::Buffer buffer_;
    zelkit::Buffer row_; ///< a row of inverted samples
    std::int64_t position_ = 0;
};

} // namespace zeljpeg

#endif
