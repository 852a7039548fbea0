#include "encoder.h"

#include "kit/exif.h"
#include "kit/fileIo.h"

#include <algorithm>
#include <cerrno>

namespace zeljpeg {

namespace {

constexpr std::size_t bufferBytes = 64 * 1024;
constexpr std::size_t largestMarker = 65533;

// What jpeg_write_icc_profile can number.
constexpr std::size_t largestProfile = std::size_t{255} * 65519;

// Ten of them fit in a marker with all else.
constexpr std::size_t shortText = 4096;

zelkit::Fields withoutLongTexts(const zelkit::Fields& fields) {
    zelkit::Fields rest;
    for (const auto& [tag, value] : fields.all()) {
        const auto* const text = std::get_if<std::string>(&value);
        if (!text || text->size() <= shortText)
            rest.set(tag, value);
    }
    return rest;
}

// The EXIF block, as a marker holds it; empty if there is nothing to say.
std::vector<std::uint8_t> exifMarkerOf(const zelkit::Fields& fields) {
    std::vector<std::uint8_t> marker = {'E', 'x', 'i', 'f', 0, 0};
    const std::vector<std::uint8_t> block = zelkit::writeExif(fields);
    marker.insert(marker.end(), block.begin(), block.end());
    return block.empty() ? std::vector<std::uint8_t>() : marker;
}

} // namespace

Encoder::Encoder(int fd, const char* name) : Codec(fd, name) {
    info_.err = errorManager();
    info_.client_data = static_cast<Codec*>(this);
}

Encoder::~Encoder() {
    jpeg_destroy_compress(&info_);
}

void Encoder::write(std::size_t bytes) {
    const zelStatus status = zelkit::writeExact(fd(), buffer_.data(), bytes, position_);
    if (status != zelOKAY)
        fail(status, "the file cannot be written");
    position_ += static_cast<std::int64_t>(bytes);
}

void Encoder::startBuffer(j_compress_ptr info) {
    Encoder& encoder = *static_cast<Encoder*>(static_cast<Codec*>(info->client_data));
    info->dest->next_output_byte = encoder.buffer_.data();
    info->dest->free_in_buffer = encoder.buffer_.size();
}

boolean Encoder::writeBuffer(j_compress_ptr info) {
    Encoder& encoder = *static_cast<Encoder*>(static_cast<Codec*>(info->client_data));
    encoder.write(encoder.buffer_.size());
    startBuffer(info);
    return TRUE;
}

void Encoder::writeRest(j_compress_ptr info) {
    Encoder& encoder = *static_cast<Encoder*>(static_cast<Codec*>(info->client_data));
    encoder.write(encoder.buffer_.size() - info->dest->free_in_buffer);
}

void Encoder::setUp(const Header& header, const Options& options) {
    destination_.init_destination = startBuffer;
    destination_.empty_output_buffer = writeBuffer;
    destination_.term_destination = writeRest;
    info_.dest = &destination_;
    info_.image_width = static_cast<JDIMENSION>(header.width);
    info_.image_height = static_cast<JDIMENSION>(header.height);
    info_.input_components = header.channels;
    info_.in_color_space = header.colors;
    jpeg_set_defaults(&info_);
    if (header.colors == JCS_CMYK)
        jpeg_set_colorspace(&info_, JCS_YCCK);
    jpeg_set_quality(&info_, options.quality, TRUE);
    info_.optimize_coding = options.optimize;
    // The first component is luminance, and black is as fine.
    info_.comp_info[0].h_samp_factor = header.channels > 1 ? options.subsampling >> 4 : 1;
    info_.comp_info[0].v_samp_factor = header.channels > 1 ? options.subsampling & 15 : 1;
    if (header.channels == 4) {
        info_.comp_info[3].h_samp_factor = info_.comp_info[0].h_samp_factor;
        info_.comp_info[3].v_samp_factor = info_.comp_info[0].v_samp_factor;
    }
    if (options.progressive)
        jpeg_simple_progression(&info_);
}

void Encoder::writeMarkers(const std::vector<std::uint8_t>& exif, const std::string* comment,
                           const std::vector<std::uint8_t>& profile) {
    if (!exif.empty())
        jpeg_write_marker(&info_, JPEG_APP0 + 1, exif.data(), static_cast<unsigned>(exif.size()));
    if (comment)
        jpeg_write_marker(&info_, JPEG_COM, reinterpret_cast<const JOCTET*>(comment->data()),
                          static_cast<unsigned>(std::min(comment->size(), largestMarker)));
    if (!profile.empty() && profile.size() <= largestProfile)
        jpeg_write_icc_profile(&info_, profile.data(), static_cast<unsigned>(profile.size()));
}

std::vector<std::uint8_t> Encoder::makeExif(const zelkit::Fields& fields, bool hasDensity) const {
    zelkit::Fields rest = fields;
    if (hasDensity && !losesResolution(fields))
        for (const int tag :
             {zelkit::exifXResolution, zelkit::exifYResolution, zelkit::exifResolutionUnit})
            rest.erase(tag);
    std::vector<std::uint8_t> marker = exifMarkerOf(rest);
    if (marker.size() > largestMarker) {
        zelError(zelSevWarning, "%s: texts of more than %d bytes do not fit in EXIF; left out",
                 name(), static_cast<int>(shortText));
        marker = exifMarkerOf(withoutLongTexts(rest));
    }
    return marker;
}

zelStatus Encoder::open(const Header& header, const Options& options, const Metadata& metadata) {
    // Only grey and YCbCr files have the header that tells a density.
    const std::vector<std::uint8_t> exif = makeExif(metadata.fields, header.colors != JCS_CMYK);
    const std::string* const comment = metadata.fields.text(commentTag);
    const Density density = densityOf(metadata.fields);
    const bool inverts = header.colors == JCS_CMYK;
    if (!buffer_.allocate(bufferBytes) ||
        (inverts && !row_.allocate(static_cast<std::size_t>(header.width) * 4)))
        return zelStatusEncode(zelMALLOCFAILED, 1, ENOMEM);
    if (metadata.iccProfile.size() > largestProfile)
        zelError(zelSevWarning, "%s: the ICC profile is too large for JPEG; left out", name());
    return run([&] {
        jpeg_create_compress(&info_);
        setUp(header, options);
        info_.density_unit = static_cast<UINT8>(density.unit);
        info_.X_density = static_cast<UINT16>(density.x);
        info_.Y_density = static_cast<UINT16>(density.y);
        jpeg_start_compress(&info_, TRUE);
        writeMarkers(exif, comment, metadata.iccProfile);
    });
}

zelStatus Encoder::encodeRows(const std::uint8_t* rows, int count) {
    const std::size_t rowBytes = static_cast<std::size_t>(info_.image_width) *
                                 static_cast<std::size_t>(info_.input_components);
    return run([=, this] {
        for (int i = 0; i < count; i++) {
            const std::uint8_t* const row = rows + static_cast<std::size_t>(i) * rowBytes;
            // The library does not change what it is given.
            JSAMPROW pointer = const_cast<JSAMPROW>(row);
            if (row_.size() > 0) {
                std::transform(row, row + rowBytes, row_.data(), [](std::uint8_t sample) {
                    return static_cast<std::uint8_t>(255 - sample);
                });
                pointer = row_.data();
            }
            jpeg_write_scanlines(&info_, &pointer, 1);
        }
    });
}

zelStatus Encoder::finish() {
    return run([this] { jpeg_finish_compress(&info_); });
}

} // namespace zeljpeg
