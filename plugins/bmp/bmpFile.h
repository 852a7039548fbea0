#ifndef ZELBMP_BMPFILE_H
#define ZELBMP_BMPFILE_H

#include "header.h"
#include "runLengths.h"

#include "kit/byteWriter.h"
#include "kit/fileClass.h"
#include "kit/fixedRows.h"
#include "kit/packedPixels.h"
#include "kit/scanlineFile.h"

#include <optional>

namespace zelbmp {

/// A bitmap file. Rows are shown in the order in which they are stored.
class BmpFile final : public zelkit::FileClass<BmpFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zelbmp::BmpFile";
    static constexpr char description[] = "Bitmap file";

    zelStatus setColormap(const zelColormap* colormap) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;
    bool rowsAreAtHand() const override { return !header_.runLengths; }
    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;
    zelStatus finishEncoding() override;
    bool carriesIccProfile() const override { return true; }

private:
    void readOptions();
    zelStatus readProfile();
    bool describeNewFile();
    void describePalette();
    zelStatus writeHeader();
    zelStatus encodeRunLengths(const std::uint8_t* rows, int count);
    void encodeRow(const std::uint8_t* elements, std::uint8_t* stored) const;
    void decodeRow(const std::uint8_t* stored, std::uint8_t* elements) const;

    Header header_;
    zelkit::PackedPixels pixels_; ///< for 16 bits and more
    zelkit::FixedRows rows_;
    std::optional<RunLengths> runs_;
    zelkit::ByteWriter coded_; ///< run lengths of rows in writing

    bool rle_ = false; ///< the format arguments
    int bits_ = 8;
};

} // namespace zelbmp

#endif
