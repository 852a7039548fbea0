#ifndef ZELTGA_TGAFILE_H
#define ZELTGA_TGAFILE_H

#include "header.h"
#include "packets.h"

#include "kit/byteWriter.h"
#include "kit/fileClass.h"
#include "kit/fixedRows.h"
#include "kit/packedPixels.h"
#include "kit/scanlineFile.h"

#include <optional>

namespace zeltga {

/// A Targa file. Rows are shown in the order and direction in which they are stored.
class TgaFile final : public zelkit::FileClass<TgaFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zeltga::TgaFile";
    static constexpr char description[] = "Targa file";

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;
    bool rowsAreAtHand() const override { return !header_.runLengths; }
    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;

private:
    void readOptions();
    bool describeNewFile();
    void decodeRow(const std::uint8_t* stored, std::uint8_t* elements) const;
    void encodeRow(const std::uint8_t* elements, std::uint8_t* stored) const;

    Header header_;
    zelkit::PackedPixels pixels_; ///< of zelRGB and zelRGBA
    zelkit::FixedRows rows_;
    std::optional<PacketReader> packets_;
    zelkit::Buffer row_;       ///< one row as it is stored, with run lengths
    zelkit::ByteWriter coded_; ///< run lengths of rows in writing

    bool rle_ = false; ///< the format argument
};

} // namespace zeltga

#endif
