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
    double xPerMeter = 0;              ///< pixels; 0: not stated
    double yPerMeter = 0;
    bool shortened = false; ///< the file ends before the codestream does
};

/// Reads the boxes of a JP2 file; a file that is a bare codestream has none. Fails with
/// zelPREMATUREEOF or zelREADFAILED, and zelCORRUPTED if there is no codestream.
zelStatus readBoxes(int fd, Boxes& boxes);

/// A resolution in grid points per metre, as a box has it: a fraction of 16-bit numbers times a
/// power of ten.
struct Resolution {
    int numerator = 0; ///< 0: not stated
    int denominator = 1;
    int exponent = 0;
};

/// The nearest resolution to `number` pixels in 1 / `denominator` * 10^`exponent` metres. Not
/// stated for numbers that are not above 0 or too far out.
Resolution resolutionOf(double number, int denominator, int exponent);

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
    Resolution x, y;
};

/// The boxes up to the codestream, whose length stands in the last 8 bytes and is to be set by
/// `codestreamHeader` when it is known.
std::vector<std::uint8_t> formatBoxes(const NewBoxes& wanted);

/// The bytes of a codestream's box header.
constexpr int codestreamHeaderBytes = 16;
std::vector<std::uint8_t> codestreamHeader(std::int64_t codestreamBytes);

} // namespace zeljp2

#endif
