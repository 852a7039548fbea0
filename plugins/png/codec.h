#ifndef ZELPNG_CODEC_H
#define ZELPNG_CODEC_H

#include "kit/buffer.h"
#include "kit/jumpGuard.h"

#include <zel/zelError.h>

#include <cstdint>
#include <png.h>
#include <span>
#include <string>

namespace zelpng {

/// What reading and writing by libpng share: buffered bytes of the file, and libpng's errors as
/// statuses. An object stays where it is made, for libpng points to it.
class Codec {
public:
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;

    /// Where libpng's bytes come from or go to, and the file's name in reports. A quiet codec
    /// reports nothing.
    Codec(int fd, const char* name, bool quiet = false);

protected:
    ~Codec() = default;

    /// Runs calls of libpng. Fails with the status of the bytes' own failure, or zelCORRUPTED.
    template <typename Body>
    zelStatus run(Body body) {
        return guard_.run(body) ? zelOKAY : failure();
    }

    /// Has these bytes read in place of the file. False if there is no memory.
    bool setInput(std::span<const std::uint8_t> bytes);

    bool hasInput() const { return hasInput_; }

    /// Writes what is buffered.
    zelStatus writeOut();
    std::int64_t fileLength() const { return length_; }
    bool isReady() const { return buffer_.size() > 0; }
    const char* name() const { return name_.c_str(); }

    static void onError(png_structp png, png_const_charp message);
    static void onWarning(png_structp png, png_const_charp message);
    static void read(png_structp png, png_bytep data, std::size_t bytes);
    static void write(png_structp png, png_bytep data, std::size_t bytes);
    static void flush(png_structp png);

private:
    zelStatus failure();
    void report(const char* message);
    zelStatus fill();

    zelkit::JumpGuard guard_;
    zelkit::Buffer buffer_;
    std::size_t at_ = 0;   ///< the next byte of the buffer to be read or written
    std::size_t held_ = 0; ///< bytes in the buffer that are to be read
    std::int64_t position_ = 0;
    std::int64_t length_ = 0;
    zelStatus status_ = zelOKAY;
    bool hasInput_ = false; ///< in place of the file
    int fd_;
    std::string name_;
    int reportsLeft_;
};

} // namespace zelpng

#endif
