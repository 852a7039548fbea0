#ifndef ZELGIF_SCAN_H
#define ZELGIF_SCAN_H

#include <zel/zelError.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zelgif {

/// A frame as the file describes it. It may lie outside the screen, in part or whole.
struct Frame {
    std::int64_t offset = 0;    ///< of its description in the file
    std::int64_t dataBytes = 0; ///< of its compressed indexes
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool interlaced = false;
    int disposal = 0;
    int transparentIndex = -1; ///< -1: none
    int delay = 0;             ///< in hundredths of a second
    bool beginsBlank = true;   ///< nothing of the frames before can be seen any more
};

/// What a file holds.
struct Contents {
    int width = 0;
    int height = 0;
    std::vector<Frame> frames;
    std::string comment;
    int loopCount = -1; ///< -1: not stated

    /// Whether the frame leaves no pixel of the screen out.
    bool covers(const Frame& frame) const {
        return frame.left == 0 && frame.top == 0 && frame.width >= width && frame.height >= height;
    }
};

/// Looks up all frames. A file that ends or goes wrong behind a frame draws a warning; `name` is
/// for that. Fails if there is no frame.
zelStatus scan(int fd, const char* name, Contents& contents);

} // namespace zelgif

#endif
