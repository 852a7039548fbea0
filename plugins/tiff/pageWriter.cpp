#include "pageWriter.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace zeltiff {

namespace {

// libtiff swaps bytes in the memory that it is given, so it gets a copy.
using Bytes = std::vector<std::uint8_t>;

zelStatus writeBlock(Handle& handle, const Layout& layout, std::uint32_t block, Bytes& stored) {
    const auto bytes = static_cast<tmsize_t>(stored.size());
    const tmsize_t done = layout.tiled
                              ? TIFFWriteEncodedTile(handle.get(), block, stored.data(), bytes)
                              : TIFFWriteEncodedStrip(handle.get(), block, stored.data(), bytes);
    return handle.check(done == bytes, zelWRITEFAILED);
}

int rowsInBlock(const Layout& layout, std::uint32_t block) {
    const int height = static_cast<int>(layout.blockHeight);
    if (layout.tiled)
        return height;
    const int perPlane = (layout.attributes.size.y - 1) / height + 1;
    const int strip = static_cast<int>(block) % perPlane;
    return std::min(height, layout.attributes.size.y - strip * height);
}

zelStatus writeZeros(Handle& handle, const Layout& layout, std::uint32_t block) {
    Bytes zeros(static_cast<std::size_t>(layout.bytesOf(rowsInBlock(layout, block))));
    return writeBlock(handle, layout, block, zeros);
}

Bytes packRows(const Layout& layout, const BlockRows& rows, const std::uint8_t* page) {
    const auto rowBytes = static_cast<std::size_t>(layout.groupBytes);
    const std::size_t elements = layout.pageRowElements();
    Bytes stored(rowBytes * static_cast<std::size_t>(rows.rows));
    for (int row = 0; row < rows.rows; row++) {
        std::uint8_t* const to = stored.data() + static_cast<std::size_t>(row) * rowBytes;
        const std::size_t first = static_cast<std::size_t>(rows.pageRow + row) * elements;
        if (layout.samples.kind == SampleKind::Bit) {
            copyBits(to, 0, page, first, elements);
            if (elements % 8 != 0)
                to[rowBytes - 1] &= static_cast<std::uint8_t>(0xff00U >> elements % 8);
        } else {
            std::memcpy(to, page + first * zelDataSize(layout.samples.type, 1), rowBytes);
        }
    }
    return stored;
}

// Codecs that look at whole blocks do best without an edge at the image's border.
void padTile(const Layout& layout, const PageArea& area, Bytes& stored) {
    const auto rowBytes = static_cast<std::size_t>(layout.groupBytes);
    const auto inside = static_cast<std::size_t>(area.nx);
    const bool bits = layout.samples.kind == SampleKind::Bit;
    const std::size_t pixelBits = static_cast<std::size_t>(layout.blockChannels) *
                                  (bits ? 1 : 8 * zelDataSize(layout.samples.type, 1));
    for (int row = 0; row < area.ny; row++) {
        std::uint8_t* const line = stored.data() + static_cast<std::size_t>(row) * rowBytes;
        for (std::size_t x = inside; x < layout.blockWidth; x++) {
            if (bits)
                copyBits(line, x * pixelBits, line, (inside - 1) * pixelBits, pixelBits);
            else
                std::memcpy(line + x * pixelBits / 8, line + (inside - 1) * pixelBits / 8,
                            pixelBits / 8);
        }
    }
    const auto lastRow = static_cast<std::size_t>(area.ny - 1) * rowBytes;
    for (std::size_t at = lastRow + rowBytes; at < stored.size(); at += rowBytes)
        std::memcpy(stored.data() + at, stored.data() + lastRow, rowBytes);
}

// A part of a strip that is not compressed is written where it lies.
zelStatus writeRawRows(Handle& handle, const Layout& layout, const BlockRows& rows, Bytes& stored) {
    TIFF* const tiff = handle.get();
    if (isUnwritten(tiff, rows.block)) {
        const zelStatus status = writeZeros(handle, layout, rows.block);
        if (status != zelOKAY)
            return status;
    }
    const std::int64_t before = layout.bytesOf(rows.firstRow);
    const std::uint64_t end = static_cast<std::uint64_t>(before) + stored.size();
    if (end > TIFFGetStrileByteCount(tiff, rows.block))
        return zelStatusEncode(zelCORRUPTED);
    if (layout.swap)
        swapSamples(stored.data(), stored.size(), layout.storedBits);
    if (layout.reverse)
        TIFFReverseBits(stored.data(), static_cast<tmsize_t>(stored.size()));
    const auto offset = static_cast<std::int64_t>(TIFFGetStrileOffset(tiff, rows.block));
    return zelkit::writeExact(handle.fd(), stored.data(), stored.size(), offset + before);
}

} // namespace

bool canWritePages(const Layout& layout) {
    const SampleKind kind = layout.samples.kind;
    return !layout.ycc && !layout.banded && !layout.sharedTables &&
           (kind == SampleKind::Bit || kind == SampleKind::Copy);
}

zelStatus writePage(Handle& handle, const Layout& layout, const PageArea& area,
                    const std::uint8_t* page) {
    for (int row = area.y; row < area.y + area.ny;) {
        const BlockRows rows = blockRowsAt(handle.get(), layout, area, row);
        if (rows.block >= layout.blockCount)
            return zelStatusEncode(zelBADPARAMS);
        Bytes stored = packRows(layout, rows, page);
        if (layout.tiled)
            padTile(layout, area, stored);
        const bool whole = rows.rows == rows.rowsInBlock;
        const zelStatus status = whole ? writeBlock(handle, layout, rows.block, stored)
                                       : writeRawRows(handle, layout, rows, stored);
        if (status != zelOKAY)
            return status;
        row += rows.rows;
    }
    return zelOKAY;
}

bool hasUnwrittenBlocks(TIFF* tiff, const Layout& layout) {
    for (std::uint32_t block = 0; block < layout.blockCount; block++)
        if (isUnwritten(tiff, block))
            return true;
    return false;
}

zelStatus writeMissingBlocks(Handle& handle, const Layout& layout) {
    zelStatus status = zelOKAY;
    handle.setSparse(true);
    for (std::uint32_t block = 0; status == zelOKAY && block < layout.blockCount; block++)
        if (isUnwritten(handle.get(), block))
            status = writeZeros(handle, layout, block);
    handle.setSparse(false);
    return status;
}

} // namespace zeltiff
