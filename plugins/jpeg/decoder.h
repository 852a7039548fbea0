#ifndef ZELJPEG_DECODER_H
#define ZELJPEG_DECODER_H

#include "codec.h"
#include "segments.h"

#include "kit/buffer.h"

#include <cstdint>

namespace zeljpeg {

/// What the header says, with the samples as `decodeRows` gives them.
struct Header {
    int width = 0;
    int height = 0;
    int channels = 0;
    J_COLOR_SPACE colors = JCS_UNKNOWN; ///< grey, RGB, CMYK or unknown
};

/// Reads a file from its start, once.
class Decoder : private Codec {
public:
    Decoder(int fd, const char* name, bool quiet);
    ~Decoder();

    /// Reads all that stands before the samples. Fails with zelCORRUPTED if the file is too short
    /// for an image of its size.
    zelStatus open(Header& header);
    /// Of what `open` has read.
    void getMetadata(Metadata& metadata);

    /// Whether `start` may be called: once.
    bool canStart() const { return !started_; }
    /// Gets ready for the first row; a file of several scans is read whole.
    zelStatus start();
    /// Decodes the next rows.
    zelStatus decodeRows(std::uint8_t* rows, int count);
    /// Passes over rows before the last one.
    zelStatus skipRows(int count);

private:
    static void ignoreStart(j_decompress_ptr info);
    static boolean fillBuffer(j_decompress_ptr info);
    static void skipBytes(j_decompress_ptr info, long bytes);
    static void watchScans(j_common_ptr info);
    static boolean takeSegment(j_decompress_ptr info);

    void pull(std::uint8_t* data, std::size_t bytes);
    void chooseColors();
    zelStatus checkLength();

    jpeg_decompress_struct info_{};
    jpeg_source_mgr source_{};
    jpeg_progress_mgr progress_{};
    zelkit::Buffer buffer_;
    zelkit::Buffer segment_; ///< the one in hand
    Segments segments_;
    std::int64_t position_ = 0; ///< behind what the buffer holds
    std::int64_t length_ = 0;
    bool started_ = false;
    bool inverted_ = false; ///< 0 stands for full ink
};

} // namespace zeljpeg

#endif
