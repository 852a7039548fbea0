#ifndef ZELFITS_FITSFILE_H
#define ZELFITS_FITSFILE_H

#include "elements.h"
#include "scan.h"

#include "kit/fileClass.h"
#include "kit/pluginFile.h"

#include <zel/zelFileConfig.h>

namespace zelfits {

/// A FITS file. Headers are read by CFITSIO; pages are bands of rows, moved straight from and to
/// the file in any order. Nothing is held back.
class FitsFile final : public zelkit::FileClass<FitsFile, zelkit::PluginFile> {
public:
    static constexpr char className[] = "zelfits::FitsFile";
    static constexpr char description[] = "Flexible Image Transport System file";

    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    /// zelREADONLY on a file opened so; zelUNSUPPORTEDBYFILE where the numbers shown are computed
    /// from the stored ones.
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

    int getNumImgs() override;
    int getCurrentImg() override;
    /// Adds an image unit behind the last unit and shows it.
    zelStatus appendImg(zelFile* source, zelFileConfig* config) override;

    zelStatus getStatMinMax(double& min, double& max) override;
    zelStatus setStatMinMax(double min, double max) override;
    zelStatus getItem(int tag, va_list args) override;
    zelStatus setItem(int tag, va_list args) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus showImage(int i) override;
    zelStatus closeFile() override;

private:
    const Image& image() const { return contents_.images[static_cast<std::size_t>(current_)]; }
    bool isPage(int x, int y, int z, int c, int nx, int ny, int nz, int nc) const;
    std::int64_t offsetOf(int y, int z, int c) const;

    void readOptions();
    zelStatus writeImage(const zelFileConfig& wanted, std::int64_t offset);
    zelStatus fillWithZeros(const Image& made, const Elements& elements) const;
    zelStatus rewrite(const zelkit::Fields& tags, int tag);

    Contents contents_;
    Elements elements_;
    int current_ = 0;
    bool raw_ = false; ///< the format argument
};

} // namespace zelfits

#endif
