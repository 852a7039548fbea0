#ifndef ZELJP2_JP2FILE_H
#define ZELJP2_JP2FILE_H

#include "boxes.h"
#include "decoder.h"
#include "encoder.h"
#include "shape.h"

#include "kit/fileClass.h"
#include "kit/pageCache.h"
#include "kit/scanlineFile.h"

#include <memory>
#include <vector>

namespace zeljp2 {

/// A JP2 file or a bare codestream. The pages of new files are tiles, written in rising order;
/// existing ones are read in any order, by tiles if they have several.
class Jp2File final : public zelkit::FileClass<Jp2File, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zeljp2::Jp2File";
    static constexpr char description[] = "JPEG 2000 file";

    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    zelStatus setItem(int tag, va_list args) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus startEncoding() override;
    zelStatus encodePage(const std::uint8_t* elements, int x, int y, int nx, int ny) override;
    zelStatus finishEncoding() override;
    bool carriesIccProfile() const override;

private:
    /// A box of the image.
    struct Box {
        int x, y, nx, ny;
    };
    void readOptions();
    zelStatus show();
    void showPalette();
    void showResolution();
    Area areaOf(const Box& page);
    void copyPage(void* data, const Box& page);
    void turnToRgb(std::size_t columns);
    void spread(std::size_t channel, std::size_t columns);
    void storeRow(void* data, std::int64_t firstElement, std::size_t columns) const;
    bool describeNewFile();
    NewBoxes newBoxes() const;

    Boxes boxes_;
    Shape shape_;
    View view_;
    std::unique_ptr<Decoder> decoder_;
    zelkit::PageCache cache_;
    int areaRows_ = 0;                           ///< the most that are decoded together
    Box decodedRows_{};                          ///< where pages are bands
    std::vector<std::vector<std::int32_t>> row_; ///< by channel

    std::unique_ptr<Encoder> encoder_; ///< of a new file
    bool isNew_ = false;
    bool bare_ = false;
    std::int64_t headerBytes_ = 0;
    template <typename Element, typename Sample>
    void gatherPlanes(const std::uint8_t* elements, int nx, int ny);

    int storedBits_ = 8; ///< of a sample
    zelkit::Buffer planes_;
    int quality_ = 0; ///< the format arguments
    int rate_ = 0;
    int bits_ = 0;
};

} // namespace zeljp2

#endif
