#include "codec.h"

#include <jerror.h>

namespace zeljpeg {

namespace {

// A damaged file may draw a warning from each of its rows.
constexpr int mostReports = 8;

// Warnings after which the library makes up samples.
bool meansDamage(int message) {
    switch (message) {
    case JWRN_ARITH_BAD_CODE:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_JPEG_EOF:
    case JWRN_MUST_RESYNC:
        return true;
    default:
        return false;
    }
}

bool meansUnsupported(int message) {
    switch (message) {
    case JERR_ARITH_NOTIMPL:
    case JERR_BAD_PRECISION:
    case JERR_CONVERSION_NOTIMPL:
    case JERR_FRACT_SAMPLE_NOTIMPL:
    case JERR_NOTIMPL:
    case JERR_SOF_UNSUPPORTED:
        return true;
    default:
        return false;
    }
}

} // namespace

Codec::Codec(int fd, const char* name, bool quiet)
    : fd_(fd), name_(name), reportsLeft_(quiet ? 0 : mostReports) {
    jpeg_std_error(&errors_);
    errors_.error_exit = onError;
    errors_.emit_message = onMessage;
    errors_.output_message = ignoreOutput;
}

void Codec::report(const char* message) {
    if (reportsLeft_ > 0) {
        zelError(zelSevWarning, "%.100s: libjpeg: %.100s", name_.c_str(), message);
        reportsLeft_--;
    }
}

void Codec::reportMessage(j_common_ptr info) {
    char text[JMSG_LENGTH_MAX];
    info->err->format_message(info, text);
    report(text);
}

zelStatus Codec::failure() {
    const zelStatus status = status_ != zelOKAY ? status_ : zelStatusEncode(zelCORRUPTED);
    status_ = zelOKAY;
    damaged_ = false;
    return status;
}

void Codec::fail(zelStatus status, const char* message) {
    status_ = status;
    report(message);
    guard_.jump();
}

void Codec::onError(j_common_ptr info) {
    Codec& codec = *static_cast<Codec*>(info->client_data);
    codec.reportMessage(info);
    if (meansUnsupported(info->err->msg_code))
        codec.status_ = zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    codec.guard_.jump();
}

void Codec::onMessage(j_common_ptr info, int level) {
    // The levels from 0 up tell what goes on.
    if (level >= 0)
        return;
    Codec& codec = *static_cast<Codec*>(info->client_data);
    codec.reportMessage(info);
    codec.damaged_ = codec.damaged_ || meansDamage(info->err->msg_code);
}

void Codec::ignoreOutput(j_common_ptr) {}

} // namespace zeljpeg
