#include "convert/kernel.h"

namespace zel::convert {

Road roadToFloat(zelDataType from) {
    return roadTo<float>(from);
}

Road roadToDouble(zelDataType from) {
    return roadTo<double>(from);
}

} // namespace zel::convert
