#ifndef ZELPNM_PNMFILE_H
#define ZELPNM_PNMFILE_H

#include "header.h"
#include "plainText.h"
#include "rowCodec.h"

#include "kit/fileClass.h"
#include "kit/pluginFile.h"

#include <zel/zelFileConfig.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace zelpnm {

/// The image that a file shows: its header, and how its rows lie in the file.
struct Image {
    Header header;
    RowCodec codec;
    std::int64_t rowBytes = 0; ///< of a row as the codec takes it
    /// Rows in the file run against the rows of the object. Only in an image of our own making:
    /// a client may write in either orientation, and the format prescribes one.
    bool reversed = false;
    /// A plain image of our own making, whose rows can be found and so rewritten.
    bool fixedFields = false;
    std::int64_t textRowBytes = 0;        ///< of such a row
    std::unique_ptr<PlainRows> plainRows; ///< null in a raw image
};

/// A file of the family. Pages are bands of rows. They are read straight from the file and written
/// straight to it, in any order; nothing is held back.
class PnmFile final : public zelkit::FileClass<PnmFile, zelkit::PluginFile> {
public:
    static constexpr char className[] = "zelpnm::PnmFile";
    static constexpr char description[] = "Portable anymap file";

    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    /// zelREADONLY on a file opened so; zelUNSUPPORTEDBYFILE on a plain file that was not made by
    /// this object.
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

    int getNumImgs() override;
    int getCurrentImg() override;
    /// Makes the new image the current one. zelUNSUPPORTEDBYFILE if the file is plain or a PFM,
    /// which hold one image.
    zelStatus appendImg(zelFile* source, zelFileConfig* config) override;

    zelStatus getScaleMinMax(double& min, double& max) override;

protected:
    zelStatus showImage(int i) override;
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus closeFile() override;

private:
    /// A band of rows in the object's frame.
    struct Band {
        int row;
        int count;
    };
    bool isPage(int x, int y, int z, int c, int nx, int ny, int nz, int nc) const;
    int rowsAtOnce() const;
    int fileRow(Band band) const;
    zelStatus readBand(Band band, void* page, int firstRow, std::uint8_t* buffer);
    zelStatus writeBand(Band band, const void* page, int firstRow, std::uint8_t* buffer,
                        char* text);

    void readOptions();
    zelStatus readImage(std::int64_t offset, Image& image) const;
    void adoptImage(Image&& image);
    void findImages();

    std::optional<Header> headerFor(const zelFileConfig& wanted) const;
    zelStatus writeImage(const Header& header, std::int64_t offset, const zelFileConfig& wanted);
    zelStatus fillWithZeros(const Image& image) const;

    Image image_;
    std::vector<std::int64_t> imageOffsets_; ///< of the images found so far
    bool allFound_ = false;
    bool endsCleanly_ = false; ///< nothing stands behind the last image; known once all are found
    int currentImage_ = 0;

    bool plain_ = false; ///< the format arguments
    int maxval_ = 0;
};

} // namespace zelpnm

#endif
