#include "convert/kernel.h"

namespace zel::convert {

Road roadToInteger8(zelDataType from) {
    return roadTo<std::uint8_t>(from);
}

} // namespace zel::convert
