#include "convert/kernel.h"

namespace zel::convert {

Road roadToInteger16(zelDataType from) {
    return roadTo<std::uint16_t>(from);
}

} // namespace zel::convert
