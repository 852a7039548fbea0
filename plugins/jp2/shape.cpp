#include "shape.h"

#include "bigEndian.h"

#include "kit/fileIo.h"
#include "kit/sizes.h"

#include <algorithm>
#include <climits>
#include <numeric>

namespace zeljp2 {

namespace {

constexpr int fixedBytes = 42; // markers, and the size segment up to the components
constexpr int componentBytes = 3;
constexpr int mostBits = 31;
constexpr int mostComponents = 16384;
constexpr std::int64_t mostTiles = 65535;

// What OpenJPEG takes for a tile, and for a component in it, before it reads any.
constexpr std::int64_t tileOverhead = 6000;
constexpr std::int64_t tileComponentOverhead = 1200;

bool inGrid(std::int64_t number) {
    return number >= 0 && number <= INT_MAX;
}

bool isConsistent(const Shape& shape) {
    return inGrid(shape.x1) && inGrid(shape.y1) && shape.x0 < shape.x1 && shape.y0 < shape.y1 &&
           shape.tileWidth >= 1 && shape.tileHeight >= 1 && shape.tileX <= shape.x0 &&
           shape.tileY <= shape.y0 && shape.tileX + shape.tileWidth > shape.x0 &&
           shape.tileY + shape.tileHeight > shape.y0;
}

// A codestream unpacks to a few thousand times its length at most, and each of its tiles has a
// header.
bool isJustified(const Shape& shape, std::int64_t bytes) {
    const auto components = static_cast<std::int64_t>(shape.components.size());
    const std::int64_t tiles = shape.tilesAcross() * shape.tilesDown();
    const auto limit = zelkit::checkedProduct({bytes, 4096});
    const auto tileBytes =
        zelkit::checkedProduct({std::min(shape.tileWidth, shape.width()),
                                std::min(shape.tileHeight, shape.height()), components, 4});
    const auto overhead =
        zelkit::checkedProduct({tiles, tileOverhead + components * tileComponentOverhead});
    const auto rowBytes = zelkit::checkedProduct({shape.width(), components, 4});
    constexpr std::int64_t tileHeaderBytes = 14;
    constexpr std::int64_t always = 64 << 20;
    return tiles <= mostTiles && tiles <= bytes / tileHeaderBytes && limit && tileBytes &&
           overhead && rowBytes && *tileBytes <= *limit + always && *overhead <= *limit + always &&
           *rowBytes <= *limit + always;
}

zelStatus readComponents(ByteCursor cursor, int count, Shape& shape) {
    for (int i = 0; i < count; i++) {
        const int depth = cursor.takeInt(1);
        Component component;
        component.bits = (depth & 0x7f) + 1;
        component.isSigned = (depth & 0x80) != 0;
        component.dx = cursor.takeInt(1);
        component.dy = cursor.takeInt(1);
        if (!cursor.good() || component.dx < 1 || component.dy < 1)
            return zelStatusEncode(zelCORRUPTED);
        if (component.bits > mostBits)
            return zelStatusEncode(zelUNSUPPORTEDBYFILE);
        shape.components.push_back(component);
    }
    const bool dense = std::ranges::any_of(
        shape.components, [](const Component& c) { return c.dx == 1 && c.dy == 1; });
    return zelStatusEncode(dense ? zelMainStatus(0) : zelUNSUPPORTEDBYFILE);
}

// Colours in their order, then alpha, then what has no meaning.
std::vector<int> channelOrder(int count, const std::vector<ChannelDefinition>& definitions,
                              int& alphas) {
    std::vector<int> components(static_cast<std::size_t>(count));
    std::iota(components.begin(), components.end(), 0);
    std::vector<int> rank(components.size(), INT_MAX);
    alphas = 0;
    for (const ChannelDefinition& definition : definitions) {
        if (definition.component >= count)
            continue;
        const bool alpha = definition.kind == 1 || definition.kind == 2;
        alphas += alpha;
        rank[static_cast<std::size_t>(definition.component)] = alpha ? INT_MAX - 1
                                                               : definition.kind == 0
                                                                   ? definition.color
                                                                   : INT_MAX;
    }
    if (!definitions.empty())
        std::ranges::stable_sort(components, {},
                                 [&](int c) { return rank[static_cast<std::size_t>(c)]; });
    return components;
}

zelColorModel modelOf(int channels, int alphas, bool defined, const Boxes& boxes) {
    const bool alphaLast = defined ? alphas == 1 : boxes.colorSpace != cmykSpace;
    if (channels == 1)
        return boxes.palette.empty() ? zelLuminance : zelRGBPalette;
    if (channels == 3 && alphas == 0)
        return zelRGB;
    if (channels == 4 && alphas == 0 && boxes.colorSpace == cmykSpace)
        return zelCMYK;
    if (channels == 2 && alphaLast)
        return zelLuminanceAlpha;
    return channels == 4 && alphaLast ? zelRGBA : zelMultiSpectral;
}

zelDataType typeOf(const Shape& shape) {
    int bits = 0;
    bool anySigned = false, anyUnsigned = false;
    for (const Component& component : shape.components) {
        bits = std::max(bits, component.bits);
        anySigned = anySigned || component.isSigned;
        anyUnsigned = anyUnsigned || !component.isSigned;
    }
    if (anySigned && anyUnsigned)
        return zelInt;
    if (bits == 1 && anyUnsigned && shape.components.size() == 1)
        return zelBit;
    if (bits <= 8)
        return anySigned ? zelChar : zelUChar;
    if (bits <= 16)
        return anySigned ? zelShort : zelUShort;
    return anySigned ? zelInt : zelUInt;
}

} // namespace

zelStatus readShape(int fd, const Boxes& boxes, Shape& shape) {
    shape = {};
    std::uint8_t bytes[fixedBytes];
    if (boxes.codestreamBytes < fixedBytes)
        return zelStatusEncode(zelPREMATUREEOF);
    zelStatus status = zelkit::readExact(fd, bytes, sizeof bytes, boxes.codestream);
    if (status != zelOKAY)
        return status;
    ByteCursor cursor(bytes);
    if (cursor.take(4) != 0xff4fff51)
        return zelStatusEncode(zelCORRUPTED);
    cursor.skip(4); // the segment's length and the profile
    for (std::int64_t* const number : {&shape.x1, &shape.y1, &shape.x0, &shape.y0, &shape.tileWidth,
                                       &shape.tileHeight, &shape.tileX, &shape.tileY})
        *number = static_cast<std::int64_t>(cursor.take(4));
    const int count = cursor.takeInt(2);
    if (count < 1 || count > mostComponents || !isConsistent(shape))
        return zelStatusEncode(zelCORRUPTED);
    std::vector<std::uint8_t> rest(static_cast<std::size_t>(count * componentBytes));
    if (boxes.codestreamBytes < fixedBytes + count * componentBytes)
        return zelStatusEncode(zelPREMATUREEOF);
    status = zelkit::readExact(fd, rest.data(), rest.size(), boxes.codestream + fixedBytes);
    if (status == zelOKAY)
        status = readComponents(ByteCursor(rest), count, shape);
    if (status == zelOKAY && !isJustified(shape, boxes.codestreamBytes))
        status = zelStatusEncode(zelCORRUPTED);
    return status;
}

View viewOf(const Shape& shape, const Boxes& boxes) {
    View view;
    const int count = static_cast<int>(shape.components.size());
    int alphas = 0;
    view.components = channelOrder(count, boxes.definitions, alphas);
    view.type = typeOf(shape);
    view.colorModel = modelOf(count, alphas, !boxes.definitions.empty(), boxes);
    view.ycc =
        boxes.colorSpace == yccSpace && count >= 3 && !(view.type & (zelChar | zelShort | zelInt));
    return view;
}

} // namespace zeljp2
