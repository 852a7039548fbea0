#ifndef ZELGIF_INPUT_H
#define ZELGIF_INPUT_H

#include <zel/zelError.h>

#include <array>
#include <cstdint>
#include <gif_lib.h>
#include <memory>

namespace zelgif {

/// Ends a giflib decoder.
struct CloseDecoder {
    void operator()(GifFileType* gif) const;
};
using DecoderHandle = std::unique_ptr<GifFileType, CloseDecoder>;

/// The bytes of a file for giflib, which may be sent to any place between two of its calls.
class Input {
public:
    explicit Input(int fd) : fd_(fd) {}
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    /// A decoder over this input, which outlives it, behind the screen's description.
    DecoderHandle open(zelStatus& status);

    std::int64_t position() const { return position_; }
    void setPosition(std::int64_t position) { position_ = position; }

    /// What giflib's error number, or a failed read behind it, means.
    zelStatus statusOf(int error) const;

private:
    static int readBytes(GifFileType* gif, GifByteType* data, int bytes);
    int read(std::uint8_t* data, int bytes);

    int fd_;
    std::int64_t position_ = 0;
    std::array<std::uint8_t, 16 * 1024> buffer_{};
    std::int64_t bufferStart_ = 0;
    std::size_t buffered_ = 0;
    zelStatus readStatus_ = zelOKAY;
};

} // namespace zelgif

#endif
