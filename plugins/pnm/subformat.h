#ifndef ZELPNM_SUBFORMAT_H
#define ZELPNM_SUBFORMAT_H

#include "header.h"

#include <optional>

namespace zelpnm {

/// What a client wants of a new image.
struct Wish {
    const char* fileName = nullptr;        ///< null if there is none
    const char* nameForMessages = nullptr; ///< never null
    int width = 0;
    int height = 0;
    int channels = 0;
    zelDataType type = zelUChar;
    zelColorModel colorModel = zelLuminance;
    bool plain = false;
    int maxval = 0; ///< 0: the highest number of the type
};

/// The header of the image: the format that the name's suffix demands, or, if it demands none, the
/// oldest format that can hold the pixels. Nothing if the format cannot hold them. A maxval that
/// does not suit the type is ignored with a warning.
///
/// The colour models zelNegative and zelLuminance of bits stand for each other with 0 and 1
/// exchanged, so that the header may have one where the wish has the other.
std::optional<Header> chooseHeader(const Wish& wish);

} // namespace zelpnm

#endif
