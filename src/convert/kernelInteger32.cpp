#include "convert/kernel.h"

namespace zel::convert {

Road roadToInteger32(zelDataType from) {
    return roadTo<std::uint32_t>(from);
}

} // namespace zel::convert
