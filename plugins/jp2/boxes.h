#ifndef ZELJP2_BOXES_H
#define ZELJP2_BOXES_H

#include <zel/zelError.h>

#include <cstdint>
#include <vector>

namespace zeljp2 {

/// The enumerated colour spaces that are told apart.
enum : int {
    noColorSpace = 0,
    cmykSpace = 12,
    rgbSpace = 16,
    greySpace = 17,
    yccSpace = 18
};

/// What a component means.
struct ChannelDefinition {
    int component = 0;
    int kind = 0;  ///< 0 colour, 1 and 2 alpha
    int color = 0; ///< which one, from 1; 0: all
};

/// What the boxes around a codestream say.
struct Boxes {
    std::int64_t codestream = 0; ///< offset and length
    std::int64_t codestreamBytes = 0;
    int colorSpace = noColorSpace;
    std::vector<std::uint8_t> iccProfile;
    std::vector<ChannelDefinition> definitions;
    std::vector<std::uint8_t> palette; ///< one colour behind the other, if it has bytes
    int paletteChannels = 0;           ///< 0: none
    bool shortened = false;            ///< the file ends before the codestream does
};

/// Reads the boxes of a JP2 file; a file that is a bare codestream has none. Fails with
/// zelPREMATUREEOF or zelREADFAILED, and zelCORRUPTED if there is no codestream.
zelStatus readBoxes(int fd, Boxes& boxes);

/// What the boxes of a new file tell.
struct NewBoxes {
    int width = 0;
    int height = 0;
    int channels = 1;
    int bits = 8;
    bool isSigned = false;
    int colorSpace = noColorSpace;
    bool alpha = false; ///< the last channel
    std::vector<std::uint8_t> iccProfile;
};

/// The boxes up to the codestream, whose length stands in the last 8 bytes and is to be set by
/// `codestreamHeader` when it is known.
std::vector<std::uint8_t> formatBoxes(const NewBoxes& wanted);

/// The bytes of a codestream's box header.
constexpr int codestreamHeaderBytes = 16;
std::vector<std::uint8_t> codestreamHeader(std::int64_t codestreamBytes);

} // namespace zeljp2

#endif
