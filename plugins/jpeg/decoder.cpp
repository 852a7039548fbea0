#include "decoder.h"

#include "kit/exif.h"
#include "kit/fileIo.h"
#include "kit/sizes.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace zeljpeg {

namespace {

constexpr std::size_t bufferBytes = 64 * 1024;

// A byte holds the codes of 8 blocks at most, and of more by arithmetic coding, where the bound
// only limits memory.
constexpr std::int64_t blocksPerByte = 8;
constexpr std::int64_t arithmeticBlocksPerByte = 64;

// Each scan costs time in proportion to the image, however short it is itself.
constexpr int mostScans = 500;

constexpr int exifMarker = JPEG_APP0 + 1;
constexpr int iccMarker = JPEG_APP0 + 2;
constexpr int keptMarkers[] = {exifMarker, iccMarker, JPEG_COM};
constexpr unsigned wholeMarker = 0xffff;

// The largest profile, and room for the rest. Of what comes behind, no markers are kept.
constexpr std::int64_t mostHeaderBytes = 20 << 20;
constexpr std::size_t longestComment = 1 << 20;

void keepMarkers(j_decompress_ptr info, unsigned bytes) {
    for (const int marker : keptMarkers)
        jpeg_save_markers(info, marker, bytes);
}

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
    if (decoder.position_ > mostHeaderBytes)
        keepMarkers(info, 0);
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

zelStatus Decoder::open(Header& header) {
    if (!buffer_.allocate(bufferBytes))
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
            keepMarkers(&info_, wholeMarker);
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
    std::string comment;
    for (const jpeg_marker_struct* marker = info_.marker_list; marker; marker = marker->next) {
        const std::span<const std::uint8_t> bytes(marker->data, marker->data_length);
        if (marker->marker == exifMarker)
            zelkit::readExif(bytes, metadata.fields);
        if (marker->marker == JPEG_COM && comment.size() < longestComment)
            comment += (comment.empty() ? "" : "\n") + std::string(bytes.begin(), bytes.end());
    }
    if (!comment.empty())
        metadata.fields.set(commentTag, comment.c_str());
    if (info_.saw_JFIF_marker)
        takeDensity({info_.density_unit, info_.X_density, info_.Y_density}, metadata.fields);

    JOCTET* profile = nullptr;
    unsigned bytes = 0;
    boolean found = FALSE;
    const zelStatus status = run([&] { found = jpeg_read_icc_profile(&info_, &profile, &bytes); });
    if (status == zelOKAY && found)
        metadata.iccProfile.assign(profile, profile + bytes);
    std::free(profile);
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
