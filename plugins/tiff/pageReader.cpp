#include "pageReader.h"

#include "kit/fileIo.h"

#include <algorithm>
#include <cstring>

namespace zeltiff {

namespace {

std::uint8_t* room(std::vector<std::uint64_t>& memory, std::int64_t bytes) {
    const auto words = static_cast<std::size_t>(bytes) / sizeof(std::uint64_t) + 1;
    if (memory.size() < words)
        memory.resize(words);
    return reinterpret_cast<std::uint8_t*>(memory.data());
}

std::uint8_t* pageRow(const Layout& layout, std::uint8_t* page, int row) {
    const std::size_t elements = static_cast<std::size_t>(row) * layout.pageRowElements();
    return page + (layout.samples.type == zelBit ? elements / 8
                                                 : elements * zelDataSize(layout.samples.type, 1));
}

void clearRows(const Layout& layout, const BlockRows& rows, std::uint8_t* page) {
    const std::size_t width = layout.pageRowElements();
    const std::size_t first = static_cast<std::size_t>(rows.pageRow) * width;
    const std::size_t count = static_cast<std::size_t>(rows.rows) * width;
    if (layout.samples.type == zelBit) {
        const std::vector<std::uint8_t> zeros(count / 8 + 1);
        copyBits(page, first, zeros.data(), 0, count);
        return;
    }
    const std::size_t bytes = zelDataSize(layout.samples.type, 1);
    std::memset(page + first * bytes, 0, count * bytes);
}

} // namespace

BlockRows blockRowsAt(TIFF* tiff, const Layout& layout, const PageArea& area, int row) {
    const auto x = static_cast<std::uint32_t>(area.x);
    const auto y = static_cast<std::uint32_t>(row);
    const auto plane = static_cast<std::uint16_t>(layout.separate ? area.c : 0);
    const int height = static_cast<int>(layout.blockHeight);
    if (layout.tiled)
        return {TIFFComputeTile(tiff, x, y, static_cast<std::uint32_t>(area.z), plane), 0, height,
                height, 0};
    const int firstRow = row % height;
    const int rowsInBlock = std::min(height, layout.attributes.size.y - (row - firstRow));
    const int rows = std::min(rowsInBlock - firstRow, area.y + area.ny - row);
    return {TIFFComputeStrip(tiff, y, plane), firstRow, rows, rowsInBlock, row - area.y};
}

bool isUnwritten(TIFF* tiff, std::uint32_t block) {
    return TIFFGetStrileOffset(tiff, block) == 0;
}

zelStatus PageReader::start(Handle& handle, const Layout& layout) {
    forgetPosition();
    return layout.ycc ? ycc_.init(handle.get()) : zelOKAY;
}

zelStatus PageReader::read(Handle& handle, const Layout& layout, const PageArea& area,
                           std::uint8_t* page) {
    for (int row = area.y; row < area.y + area.ny;) {
        const BlockRows rows = blockRowsAt(handle.get(), layout, area, row);
        if (rows.block >= layout.blockCount)
            return zelStatusEncode(zelBADPARAMS);
        const zelStatus status = readRows(handle, layout, rows, page);
        if (status != zelOKAY)
            return status;
        row += rows.rows;
    }
    return zelOKAY;
}

zelStatus PageReader::readRows(Handle& handle, const Layout& layout, const BlockRows& rows,
                               std::uint8_t* page) {
    if (isUnwritten(handle.get(), rows.block)) {
        clearRows(layout, rows, page);
        return zelOKAY;
    }
    std::uint8_t* const stored = layout.direct ? pageRow(layout, page, rows.pageRow)
                                               : room(scratch_, layout.bytesOf(rows.rows));
    const zelStatus status = layout.raw      ? readRaw(handle, layout, rows, stored)
                             : layout.banded ? decodeRows(handle, layout, rows, stored)
                                             : decodeBlock(handle, layout, rows, stored);
    if (status == zelOKAY && !layout.direct)
        unpack(layout, rows, stored, page);
    return status;
}

zelStatus PageReader::readRaw(Handle& handle, const Layout& layout, const BlockRows& rows,
                              std::uint8_t* stored) {
    const std::int64_t before = layout.bytesOf(rows.firstRow);
    const std::int64_t bytes = layout.bytesOf(rows.rows);
    const std::uint64_t offset = TIFFGetStrileOffset(handle.get(), rows.block);
    const std::uint64_t stretch = TIFFGetStrileByteCount(handle.get(), rows.block);
    if (static_cast<std::uint64_t>(before + bytes) > stretch)
        return zelStatusEncode(zelCORRUPTED);
    if (offset >= static_cast<std::uint64_t>(handle.fileLength()))
        return zelStatusEncode(zelPREMATUREEOF);
    const auto count = static_cast<std::size_t>(bytes);
    const zelStatus status =
        zelkit::readExact(handle.fd(), stored, count, static_cast<std::int64_t>(offset) + before);
    if (status != zelOKAY)
        return status;
    if (layout.reverse)
        TIFFReverseBits(stored, static_cast<tmsize_t>(count));
    if (layout.swap)
        swapSamples(stored, count, layout.storedBits);
    return zelOKAY;
}

zelStatus PageReader::decodeBlock(Handle& handle, const Layout& layout, const BlockRows& rows,
                                  std::uint8_t* stored) {
    const auto bytes = static_cast<tmsize_t>(layout.bytesOf(rows.rows));
    const tmsize_t got = layout.tiled
                             ? TIFFReadEncodedTile(handle.get(), rows.block, stored, bytes)
                             : TIFFReadEncodedStrip(handle.get(), rows.block, stored, bytes);
    return handle.check(got == bytes, zelCORRUPTED);
}

zelStatus PageReader::decodeRows(Handle& handle, const Layout& layout, const BlockRows& rows,
                                 std::uint8_t* stored) {
    if (strip_ != rows.block || nextRow_ < 0 || nextRow_ > rows.firstRow) {
        strip_ = rows.block;
        nextRow_ = 0;
    }
    zelStatus status = zelOKAY;
    // The codecs go forward only.
    while (status == zelOKAY && nextRow_ < rows.firstRow)
        status = decodeNextRow(handle, layout, room(skipped_, layout.groupBytes));
    for (int row = 0; status == zelOKAY && row < rows.rows; row++)
        status = decodeNextRow(handle, layout, stored + row * layout.groupBytes);
    if (status != zelOKAY)
        forgetPosition();
    return status;
}

zelStatus PageReader::decodeNextRow(Handle& handle, const Layout& layout, std::uint8_t* stored) {
    const auto strips =
        layout.blockCount /
        (layout.separate ? static_cast<std::uint32_t>(layout.attributes.size.c) : 1U);
    const std::uint32_t row =
        strip_ % strips * layout.blockHeight + static_cast<std::uint32_t>(nextRow_++);
    const int done =
        TIFFReadScanline(handle.get(), stored, row, static_cast<std::uint16_t>(strip_ / strips));
    return handle.check(done == 1, zelCORRUPTED);
}

void PageReader::unpack(const Layout& layout, const BlockRows& rows, const std::uint8_t* stored,
                        std::uint8_t* page) const {
    const std::size_t width = layout.pageRowElements();
    if (layout.ycc) {
        ycc_.convert(layout, stored, rows.rows, pageRow(layout, page, rows.pageRow), width);
        return;
    }
    for (int row = 0; row < rows.rows; row++)
        unpackSamples(layout.samples, stored + row * layout.groupBytes, width, page,
                      static_cast<std::size_t>(rows.pageRow + row) * width);
}

} // namespace zeltiff
