#include "encoder.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace zeljp2 {

namespace {

opj_image_t* makeImage(const EncoderSettings& settings) {
    opj_image_cmptparm_t component = {};
    component.dx = component.dy = 1;
    component.w = static_cast<OPJ_UINT32>(settings.width);
    component.h = static_cast<OPJ_UINT32>(settings.height);
    component.prec = static_cast<OPJ_UINT32>(settings.bits);
    component.sgnd = settings.isSigned;
    std::vector<opj_image_cmptparm_t> components(static_cast<std::size_t>(settings.channels),
                                                 component);
    opj_image_t* const image =
        opj_image_tile_create(static_cast<OPJ_UINT32>(settings.channels), components.data(),
                              settings.colorTransform ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY);
    if (image) {
        image->x1 = component.w;
        image->y1 = component.h;
    }
    return image;
}

opj_cparameters_t parametersOf(const EncoderSettings& settings) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    const bool lossy = settings.quality > 0 || settings.rate > 1;
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = settings.quality == 0;
    parameters.cp_fixed_quality = settings.quality > 0;
    parameters.tcp_distoratio[0] = static_cast<float>(settings.quality);
    parameters.tcp_rates[0] = settings.rate > 1 ? static_cast<float>(settings.rate) : 0;
    parameters.irreversible = lossy;
    // OpenJPEG lays out its buffer by the bits of a sample, with which the transforms of few bits
    // of noise do not make do.
    const bool fewBits = settings.bits <= 4;
    parameters.tcp_mct = settings.colorTransform && !fewBits;
    parameters.tile_size_on = OPJ_TRUE;
    parameters.cp_tdx = std::min(settings.tileWidth, settings.width);
    parameters.cp_tdy = std::min(settings.tileHeight, settings.height);
    // Each level of resolution halves the tile.
    const auto shorter = static_cast<unsigned>(std::min(parameters.cp_tdx, parameters.cp_tdy));
    parameters.numresolution = fewBits ? 1 : std::min(6, static_cast<int>(std::bit_width(shorter)));
    return parameters;
}

} // namespace

zelStatus Encoder::start(const EncoderSettings& settings) {
    handle_.reset(stream_.make(false));
    codec_.reset(opj_create_compress(OPJ_CODEC_J2K));
    image_.reset(makeImage(settings));
    if (!handle_ || !codec_ || !image_)
        return zelStatusEncode(zelMALLOCFAILED);
    stream_.listenTo(codec_.get());
    opj_cparameters_t parameters = parametersOf(settings);
    return stream_.check(opj_setup_encoder(codec_.get(), &parameters, image_.get()) &&
                             opj_start_compress(codec_.get(), image_.get(), handle_.get()),
                         zelWRITEFAILED);
}

zelStatus Encoder::writeTile(std::span<std::uint8_t> planes) {
    const bool written = opj_write_tile(codec_.get(), nextTile_++, planes.data(),
                                        static_cast<OPJ_UINT32>(planes.size()), handle_.get());
    return stream_.check(written, zelWRITEFAILED);
}

zelStatus Encoder::finish() {
    const zelStatus status =
        stream_.check(opj_end_compress(codec_.get(), handle_.get()), zelWRITEFAILED);
    image_.reset();
    codec_.reset();
    handle_.reset();
    return status;
}

} // namespace zeljp2
