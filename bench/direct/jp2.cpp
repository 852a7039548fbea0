#include "direct.h"

#include <openjpeg.h>

namespace {

// Streams and codecs are one type to the compiler.
struct DestroyStream {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct DestroyCodec {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct DestroyImage {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using Image = std::unique_ptr<opj_image_t, DestroyImage>;

/// The library's result, which is of 32 bits and by component, as the interleaved bytes that it
/// stands for. Not a part of what is measured.
void keep(const opj_image_t& image, bench::Place& place) {
    const std::size_t pixels = std::size_t{image.comps[0].w} * image.comps[0].h;
    std::uint8_t* to = place.next(pixels * image.numcomps);
    for (std::size_t i = 0; i < pixels; i++)
        for (OPJ_UINT32 c = 0; c < image.numcomps; c++)
            *to++ = static_cast<std::uint8_t>(image.comps[c].data[i]);
}

bool decode(const bench::Coded& file, bench::Place& place) {
    const std::unique_ptr<opj_stream_t, DestroyStream> stream(
        opj_stream_create_default_file_stream(file.path.c_str(), OPJ_TRUE));
    const std::unique_ptr<opj_codec_t, DestroyCodec> codec(opj_create_decompress(OPJ_CODEC_JP2));
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* header = nullptr;
    if (!stream || !codec || !opj_setup_decoder(codec.get(), &parameters) ||
        !opj_read_header(stream.get(), codec.get(), &header))
        return false;
    const Image image(header);
    const opj_codestream_info_v2_t* info = opj_get_cstr_info(codec.get());
    const OPJ_UINT32 tiles = info->tw * info->th;
    opj_destroy_cstr_info(const_cast<opj_codestream_info_v2_t**>(&info));
    if (tiles == 1) {
        if (!opj_decode(codec.get(), stream.get(), image.get()))
            return false;
        if (place.keepsAll())
            keep(*image, place);
        return true;
    }
    for (OPJ_UINT32 tile = 0; tile < tiles; tile++) {
        if (!opj_get_decoded_tile(codec.get(), stream.get(), image.get(), tile))
            return false;
        if (place.keepsAll())
            keep(*image, place);
    }
    return true;
}

const bench::DirectRegistration registration("JP2", decode);

} // namespace
