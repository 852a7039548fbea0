#ifndef ZELFITS_CARDS_H
#define ZELFITS_CARDS_H

#include "image.h"

#include <string>

namespace zelfits {

/// The name that a header's third axis has for the channels of a colour model, null for
/// zelLuminance, which needs none, and models that the format lacks.
const char* channelAxisName(zelColorModel model);

/// The model whose channel axis has this name and extent; zelLuminance if there is none.
zelColorModel channelAxisModel(const std::string& name, std::int64_t extent);

/// The header of a new image, filled up to whole blocks: of the file's first unit or of one behind
/// it.
std::string formatHeader(const Image& image, bool first);

} // namespace zelfits

#endif
