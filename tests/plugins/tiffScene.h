#ifndef ZEL_TESTS_PLUGINS_TIFF_SCENE_H
#define ZEL_TESTS_PLUGINS_TIFF_SCENE_H

#include "plugins/fileScene.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zel::test {

/// A tag of a file made by hand: one value in the entry itself, or several of the type's width.
struct HandTag {
    int number;
    int type; ///< 3: 16 bits, 4: 32 bits
    std::vector<std::uint32_t> values;
};

/// A TIFF of one strip or tile and of either byte order. Width, height, strip or tile offset and
/// byte count are added to the tags, which are in rising order. `data` is what the block holds.
std::string handMadeTiff(bool bigEndian, int width, int height, std::vector<HandTag> tags,
                         const std::string& data);

using TiffScene = FileScene;

} // namespace zel::test

#endif
