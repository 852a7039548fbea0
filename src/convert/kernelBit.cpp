#include "convert/kernel.h"

namespace zel::convert {

Road roadToBit(zelDataType from) {
    return roadTo<Bit>(from);
}

} // namespace zel::convert
