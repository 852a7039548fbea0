#include "convert/roads.h"

namespace zel::convert {

// The sign of an integer destination never matters, since the low bits are stored.
Road roadBetween(zelDataType to, zelDataType from) {
    switch (to) {
    case zelBit:
        return roadToBit(from);
    case zelUChar:
    case zelChar:
        return roadToInteger8(from);
    case zelUShort:
    case zelShort:
        return roadToInteger16(from);
    case zelUInt:
    case zelInt:
        return roadToInteger32(from);
    case zelFloat:
        return roadToFloat(from);
    case zelDouble:
        return roadToDouble(from);
    }
    return nullptr;
}

} // namespace zel::convert
