#ifndef ZELEXR_EXRFILE_H
#define ZELEXR_EXRFILE_H

#include "layout.h"
#include "streams.h"

#include "kit/fileClass.h"
#include "kit/pageCache.h"
#include "kit/scanlineFile.h"

#include <OpenEXR/ImfCompositeDeepScanLine.h>
#include <OpenEXR/ImfDeepScanLineInputPart.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfInputPart.h>
#include <OpenEXR/ImfMultiPartInputFile.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfRgbaFile.h>
#include <OpenEXR/ImfTiledInputPart.h>
#include <OpenEXR/ImfTiledOutputFile.h>
#include <half.h>
#include <memory>
#include <optional>
#include <vector>

namespace zelexr {

/// An EXR file. Parts are images, and rows and tiles are read by OpenEXR in any order.
class ExrFile final : public zelkit::FileClass<ExrFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zelexr::ExrFile";
    static constexpr char description[] = "OpenEXR file";

    int getNumImgs() override;
    int getCurrentImg() override;
    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    zelStatus setItem(int tag, va_list args) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus showImage(int i) override;
    zelStatus closeFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;
    bool rowsAreAtHand() const override { return layout_.compression == zelNoCompression; }
    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;
    zelStatus encodePage(const std::uint8_t* elements, int x, int y, int nx, int ny) override;
    zelStatus finishEncoding() override;

private:
    template <typename Work>
    zelStatus guarded(Work&& work);
    zelStatus statusOf(zelMainStatus otherwise) const;

    void readOptions();
    /// OpenEXR has a reader for each kind of part: one of these reads, of deep parts two.
    struct Readers {
        std::unique_ptr<Imf::InputPart> rows;
        std::unique_ptr<Imf::TiledInputPart> tiles;
        std::unique_ptr<Imf::DeepScanLineInputPart> deep;
        std::unique_ptr<Imf::CompositeDeepScanLine> flat;
        std::unique_ptr<FdInput> chromaInput;
        std::unique_ptr<Imf::RgbaInputFile> chroma;
    };
    Readers openPart(int part, const Layout& layout);
    template <typename Elements>
    Imf::FrameBuffer frameOf(Imf::PixelType type, Elements* elements, const Imath::V2i& origin,
                             int width, int height) const;
    void readRows(std::uint8_t* rows, int first, int count);
    void readDeep(std::uint8_t* rows, int first, int count);
    void readChroma(std::uint8_t* rows, int first, int count);
    Imf::FrameBuffer frameToEncode(const std::uint8_t* elements, const Imath::V2i& origin,
                                   int width, int height);
    Imf::Header newHeader(const Imath::Box2i& data, const Imath::Box2i& display) const;

    Layout layout_;
    int row_ = 0; ///< the next one to read
    int current_ = 0;
    bool half_ = false; ///< the format arguments
    std::optional<Imf::Compression> method_;

    // Each reader goes before the stream that it reads.
    std::unique_ptr<FdInput> input_;
    std::unique_ptr<FdOutput> output_;
    std::unique_ptr<Imf::MultiPartInputFile> parts_;
    Readers readers_;
    std::unique_ptr<Imf::OutputFile> rowWriter_; // one of them writes the file
    std::unique_ptr<Imf::TiledOutputFile> tileWriter_;
    zelkit::PageCache cache_; // of tiles
    std::vector<Imf::Rgba> chromaRows_;
    std::vector<half> halfRows_;
};

} // namespace zelexr

#endif
