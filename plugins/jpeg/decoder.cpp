#include "decoder.h"

#include "kit/fileIo.h"
#include "kit/sizes.h"

#include <algorithm>
#include <cerrno>

namespace zeljpeg {

namespace {

constexpr std::size_t bufferBytes = 64 * 1024;

// A byte holds the codes of 8 blocks at most, and of more by arithmetic coding, where the bound
// only limits memory.
constexpr std::int64_t blocksPerByte = 8;
constexpr std::int64_t arithmeticBlocksPerByte = 64;

// Each scan costs time in proportion to the image, however short it is itself.
constexpr int mostScans = 500;

constexpr std::size_t longestSegment = 0xffff;

void invert(std::uint8_t* samples, std::size_t count) {
    std::transform(samples, samples + count, samples,
                   [](std::uint8_t sample) { return static_cast<std::uint8_t>(255 - sample); });
}

} // namespace

Decoder::Decoder(int fd, const char* name, bool quiet) : Codec(fd, name, quiet) {
    info_.err = errorManager();
    info_.client_data = static_cast<Codec*>(this);
}

Decoder::~Decoder() {
    jpeg_destroy_decompress(&info_);
}

void Decoder::ignoreStart(j_decompress_ptr) {}

boolean Decoder::fillBuffer(j_decompress_ptr info) {
    Decoder& decoder = *static_cast<Decoder*>(static_cast<Codec*>(info->client_data));
    std::size_t got = 0;
    const zelStatus status = zelkit::readSome(decoder.fd(), decoder.buffer_.data(),
                                              decoder.buffer_.size(), decoder.position_, got);
    if (status != zelOKAY)
        decoder.fail(status, "the file cannot be read");
    if (got == 0)
        decoder.fail(zelStatusEncode(zelPREMATUREEOF), "the file ends too early");
    decoder.position_ += static_cast<std::int64_t>(got);
    info->src->next_input_byte = decoder.buffer_.data();
    info->src->bytes_in_buffer = got;
    return TRUE;
}

void Decoder::skipBytes(j_decompress_ptr info, long bytes) {
    if (bytes <= 0)
        return;
    Decoder& decoder = *static_cast<Decoder*>(static_cast<Codec*>(info->client_data));
    const auto count = static_cast<std::size_t>(bytes);
    const std::size_t here = std::min(count, info->src->bytes_in_buffer);
    info->src->next_input_byte += here;
    info->src->bytes_in_buffer -= here;
    decoder.position_ += static_cast<std::int64_t>(count - here);
}

void Decoder::watchScans(j_common_ptr info) {
    Decoder& decoder = *static_cast<Decoder*>(static_cast<Codec*>(info->client_data));
    if (decoder.info_.input_scan_number > mostScans)
        decoder.fail(zelStatusEncode(zelCORRUPTED), "too many scans");
}

void Decoder::pull(std::uint8_t* data, std::size_t bytes) {
    while (bytes > 0) {
        if (source_.bytes_in_buffer == 0)
            fillBuffer(&info_);
        const std::size_t step = std::min(bytes, source_.bytes_in_buffer);
        std::copy_n(source_.next_input_byte, step, data);
        source_.next_input_byte += step;
        source_.bytes_in_buffer -= step;
        data += step;
        bytes -= step;
    }
}

// libjpeg would keep all segments of a kind, however many there are.
boolean Decoder::takeSegment(j_decompress_ptr info) {
    Decoder& decoder = *static_cast<Decoder*>(static_cast<Codec*>(info->client_data));
    constexpr std::size_t lengthBytes = 2;
    std::uint8_t length[lengthBytes];
    decoder.pull(length, lengthBytes);
    const std::size_t whole = std::size_t{length[0]} << 8 | length[1];
    const std::size_t bytes = std::max(whole, lengthBytes) - lengthBytes;
    decoder.pull(decoder.segment_.data(), bytes);
    decoder.segments_.take(info->unread_marker, {decoder.segment_.data(), bytes});
    return TRUE;
}

zelStatus Decoder::open(Header& header) {
    if (!buffer_.allocate(bufferBytes) || !segment_.allocate(longestSegment))
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    zelStatus status = zelkit::getFileLength(fd(), length_);
    if (status == zelOKAY)
        status = run([this] {
            jpeg_create_decompress(&info_);
            source_.init_source = ignoreStart;
            source_.fill_input_buffer = fillBuffer;
            source_.skip_input_data = skipBytes;
            source_.resync_to_restart = jpeg_resync_to_restart;
            source_.term_source = ignoreStart;
            info_.src = &source_;
            progress_.progress_monitor = watchScans;
            info_.progress = &progress_;
            for (const int marker : {exifMarker, iccMarker, commentMarker})
                jpeg_set_marker_processor(&info_, marker, takeSegment);
            jpeg_read_header(&info_, TRUE);
            chooseColors();
            jpeg_calc_output_dimensions(&info_);
        });
    if (status == zelOKAY)
        status = checkLength();
    header = {static_cast<int>(info_.image_width), static_cast<int>(info_.image_height),
              info_.output_components, info_.out_color_space};
    return status;
}

void Decoder::chooseColors() {
    switch (info_.jpeg_color_space) {
    case JCS_YCbCr:
    case JCS_RGB:
        info_.out_color_space = JCS_RGB;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        info_.out_color_space = JCS_CMYK;
        inverted_ = info_.saw_Adobe_marker;
        break;
    default:
        info_.out_color_space = info_.jpeg_color_space;
    }
}

zelStatus Decoder::checkLength() {
    if (info_.arith_code && !jpeg_has_multiple_scans(&info_))
        return zelOKAY;
    std::int64_t blocks = 0;
    for (int i = 0; i < info_.num_components; i++) {
        const jpeg_component_info& component = info_.comp_info[i];
        blocks += std::int64_t{component.width_in_blocks} * component.height_in_blocks;
    }
    const std::int64_t most = info_.arith_code ? arithmeticBlocksPerByte : blocksPerByte;
    return blocks / most <= length_ ? zelOKAY : zelStatusEncode(zelCORRUPTED);
}

void Decoder::getMetadata(Metadata& metadata) {
    if (!segments_.moveTo(metadata))
        zelError(zelSevWarning, "%s: comments or an ICC profile are too long and left out", name());
    if (info_.saw_JFIF_marker)
        takeDensity({info_.density_unit, info_.X_density, info_.Y_density}, metadata.fields);
}

zelStatus Decoder::start() {
    started_ = true;
    return run([this] { jpeg_start_decompress(&info_); });
}

zelStatus Decoder::decodeRows(std::uint8_t* rows, int count) {
    const std::size_t rowBytes = static_cast<std::size_t>(info_.image_width) *
                                 static_cast<std::size_t>(info_.output_components);
    const zelStatus status = run([=, this] {
        constexpr int most = 16;
        JSAMPROW pointers[most];
        for (int done = 0; done < count;) {
            const int wanted = std::min(most, count - done);
            for (int i = 0; i < wanted; i++)
                pointers[i] = rows + static_cast<std::size_t>(done + i) * rowBytes;
            done += static_cast<int>(
                jpeg_read_scanlines(&info_, pointers, static_cast<JDIMENSION>(wanted)));
        }
        if (info_.output_scanline == info_.output_height)
            jpeg_finish_decompress(&info_);
    });
    if (inverted_)
        invert(rows, rowBytes * static_cast<std::size_t>(count));
    return status;
}

zelStatus Decoder::skipRows(int count) {
    return run([=, this] { jpeg_skip_scanlines(&info_, static_cast<JDIMENSION>(count)); });
}

} // namespace zeljpeg
