#ifndef ZELJP2_SHAPE_H
#define ZELJP2_SHAPE_H

#include "boxes.h"

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelError.h>

#include <cstdint>
#include <vector>

namespace zeljp2 {

/// A component as the codestream's size marker has it.
struct Component {
    int bits = 8;
    bool isSigned = false;
    int dx = 1; ///< it has a sample at every so many columns and rows of the grid
    int dy = 1;
};

/// Image and tiles on the codestream's reference grid.
struct Shape {
    std::int64_t x0 = 0, y0 = 0, x1 = 0, y1 = 0; ///< the image, ends excluded
    std::int64_t tileX = 0, tileY = 0;           ///< where the first tile begins
    std::int64_t tileWidth = 0, tileHeight = 0;
    std::vector<Component> components;

    std::int64_t width() const { return x1 - x0; }
    std::int64_t height() const { return y1 - y0; }
    std::int64_t tilesAcross() const { return (x1 - tileX + tileWidth - 1) / tileWidth; }
    std::int64_t tilesDown() const { return (y1 - tileY + tileHeight - 1) / tileHeight; }
    bool singleTile() const { return tilesAcross() == 1 && tilesDown() == 1; }
};

/// Reads the size marker at the codestream's start and holds it against the length of the
/// codestream, before OpenJPEG takes memory by it. Fails with zelCORRUPTED, zelPREMATUREEOF,
/// zelREADFAILED, and zelUNSUPPORTEDBYFILE if no component has full density or one has more than
/// 31 bits.
zelStatus readShape(int fd, const Boxes& boxes, Shape& shape);

/// How the image is shown.
struct View {
    std::vector<int> components; ///< by channel
    zelDataType type = zelUChar;
    zelColorModel colorModel = zelLuminance;
    bool ycc = false; ///< the first three are to be turned to RGB
};

View viewOf(const Shape& shape, const Boxes& boxes);

} // namespace zeljp2

#endif
