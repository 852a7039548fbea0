#ifndef ZELBMP_BMPFILE_H
#define ZELBMP_BMPFILE_H

#include "header.h"
#include "runLengths.h"

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

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;
    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;

private:
    bool describeNewFile();
    void showResolution();
    void storeResolution();
    void decodeRow(const std::uint8_t* stored, std::uint8_t* elements) const;

    Header header_;
    zelkit::PackedPixels pixels_; ///< for 16 bits and more
    zelkit::FixedRows rows_;
    std::optional<RunLengths> runs_;
};

} // namespace zelbmp

#endif
