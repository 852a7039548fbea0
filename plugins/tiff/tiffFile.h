#ifndef ZELTIFF_TIFFFILE_H
#define ZELTIFF_TIFFFILE_H

#include "attributes.h"
#include "pageReader.h"

#include "kit/fileClass.h"
#include "kit/pluginFile.h"

#include <zel/zelColormap.h>

#include <memory>
#include <vector>

namespace zeltiff {

/// One page of a compressed image, held so that parts of it can be read or written one after the
/// other without coding it each time.
struct PageCache {
    PageArea area{};
    std::vector<std::uint8_t> bytes;
    bool valid = false;
    bool dirty = false;

    bool holds(const PageArea& wanted) const { return valid && area.sameOrigin(wanted); }
};

/// A TIFF file. A new image's directory is written at once, so that a new file is from then on what
/// an existing one opened for writing is.
class TiffFile final : public zelkit::FileClass<TiffFile, zelkit::PluginFile> {
public:
    static constexpr char className[] = "TiffFile";
    static constexpr char description[] = "TIFF file";

    zelStatus flush() override;
    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

    int getNumImgs() override;
    int getCurrentImg() override { return current_; }
    zelStatus setCurrentImg(int i) override;
    zelStatus appendImg(zelFile* source, zelFileConfig* config) override;

    zelStatus getColormap(const zelColormap*& colormap) override;
    zelStatus setColormap(const zelColormap* colormap) override;
    zelStatus getStatMinMax(double& min, double& max) override;
    zelStatus setStatMinMax(double min, double max) override;
    zelStatus getScaleMinMax(double& min, double& max) override;
    zelStatus setScaleMinMax(double min, double max) override;

    zelStatus getItem(int tag, va_list args) override;
    zelStatus setItem(int tag, va_list args) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus closeFile() override;
    zelStatus _getICCProfile(int& bytes, void*& profile) override;
    zelStatus _freeICCProfile(void* profile) override;
    zelStatus _setICCProfile(int bytes, const void* profile) override;

private:
    ~TiffFile() override = default;

    void readOptions();
    Attributes attributes() const;
    zelStatus openHandle(const char* mode, std::int64_t largestBlock);
    std::int64_t memoryLimit() const;
    bool isOurs(int image) const { return image >= firstOurs_; }
    zelStatus showDirectory(int image);
    zelStatus goToImage(int image);
    zelStatus selectImage(int image);
    zelStatus reopenWide(int image);
    bool needsMoreMemory() const;
    zelStatus openForBlocks();
    zelStatus writeOut();
    zelStatus addImage(const Attributes& image);
    zelStatus fillHoles();
    void noteHoles();
    bool isPage(const PageArea& area) const;
    zelStatus flushPage();
    void cachePage(const PageArea& area, const void* data, bool dirty);
    zelStatus checkOpen() const;
    zelStatus checkWritable() const;
    std::size_t pageBytes() const;

    Options options_;
    Handle handle_;
    std::unique_ptr<Handle> forBlocks_; ///< with memory for large blocks, at the current image
    Layout layout_;
    PageReader reader_;
    PageCache cache_;
    std::unique_ptr<zelColormap> colormap_;
    int current_ = 0;
    int images_ = -1;         ///< -1 until counted
    int firstOurs_ = INT_MAX; ///< images from this on were made by this object
    std::vector<int> holed_;  ///< images of ours that may have unwritten blocks
    bool chainIsSound_ = true;
    bool narrow_ = false; ///< libtiff has memory for directories, and small blocks
};

} // namespace zeltiff

#endif
