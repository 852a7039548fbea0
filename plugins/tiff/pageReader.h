#ifndef ZELTIFF_PAGEREADER_H
#define ZELTIFF_PAGEREADER_H

#include "layout.h"
#include "ycc.h"

#include <cstdint>
#include <vector>

namespace zeltiff {

/// A page's origin, and its extent as cut by the image.
struct PageArea {
    int x, y, z, c;
    int nx, ny, nz, nc;

    bool sameOrigin(const PageArea& other) const {
        return x == other.x && y == other.y && z == other.z && c == other.c;
    }
};

/// The rows of one block that a page needs.
struct BlockRows {
    std::uint32_t block; ///< libtiff's number of the strip or tile
    int firstRow;        ///< within the block
    int rows;
    int rowsInBlock;
    int pageRow; ///< where the first row lies in the page
};

/// The rows of the page that lie in the block that holds image row `row` of the area.
BlockRows blockRowsAt(TIFF* tiff, const Layout& layout, const PageArea& area, int row);

/// True if the block has no place in the file: nothing was ever written to it.
bool isUnwritten(TIFF* tiff, std::uint32_t block);

/// Reads pages of the current image, in full-page layout. Blocks that were never written read as 0.
class PageReader {
public:
    /// Starts on the image of the current directory. Fails with zelCORRUPTED.
    zelStatus start(Handle& handle, const Layout& layout);

    /// Forgets how far a strip was decoded, as is needed after each write.
    void forgetPosition() { nextRow_ = -1; }

    /// Fails with zelPREMATUREEOF, zelCORRUPTED, or zelREADFAILED with errno.
    zelStatus read(Handle& handle, const Layout& layout, const PageArea& area, std::uint8_t* page);

private:
    zelStatus readRows(Handle& handle, const Layout& layout, const BlockRows& rows,
                       std::uint8_t* page);
    zelStatus readRaw(Handle& handle, const Layout& layout, const BlockRows& rows,
                      std::uint8_t* stored);
    zelStatus decodeBlock(Handle& handle, const Layout& layout, const BlockRows& rows,
                          std::uint8_t* stored);
    zelStatus decodeRows(Handle& handle, const Layout& layout, const BlockRows& rows,
                         std::uint8_t* stored);
    zelStatus decodeNextRow(Handle& handle, const Layout& layout, std::uint8_t* stored);
    void unpack(const Layout& layout, const BlockRows& rows, const std::uint8_t* stored,
                std::uint8_t* page) const;

    YccToRgb ycc_;
    std::vector<std::uint64_t> scratch_;
    std::vector<std::uint64_t> skipped_;
    /// The strip that is being decoded row by row, and the next row in it; -1 if there is none.
    std::uint32_t strip_ = 0;
    int nextRow_ = -1;
};

} // namespace zeltiff

#endif
