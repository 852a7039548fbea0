#ifndef ZELEXR_EXRFILE_H
#define ZELEXR_EXRFILE_H

#include "layout.h"
#include "streams.h"

#include "kit/fileClass.h"
#include "kit/scanlineFile.h"

#include <OpenEXR/ImfInputPart.h>
#include <OpenEXR/ImfMultiPartInputFile.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfRgbaFile.h>
#include <half.h>
#include <memory>
#include <optional>
#include <vector>

namespace zelexr {

/// An EXR file. Parts are images, and rows are read by OpenEXR in any order, from tiles too.
class ExrFile final : public zelkit::FileClass<ExrFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zelexr::ExrFile";
    static constexpr char description[] = "OpenEXR file";

    int getNumImgs() override;
    int getCurrentImg() override;
    zelStatus setItem(int tag, va_list args) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus showImage(int i) override;
    zelStatus closeFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;
    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;
    zelStatus finishEncoding() override;

private:
    template <typename Work>
    zelStatus guarded(Work&& work);
    zelStatus statusOf(zelMainStatus otherwise) const;

    void readOptions();
    void readPart(std::uint8_t* rows, int first, int count);
    void readChroma(std::uint8_t* rows, int first, int count);
    Imf::Header newHeader(const Imath::Box2i& data, const Imath::Box2i& display) const;

    Layout layout_;
    int row_ = 0; ///< the next one to read
    int current_ = 0;
    bool half_ = false; ///< the format arguments
    std::optional<Imf::Compression> method_;

    // Each reader goes before the stream that it reads.
    std::unique_ptr<FdInput> input_;
    std::unique_ptr<FdInput> chromaInput_;
    std::unique_ptr<FdOutput> output_;
    std::unique_ptr<Imf::MultiPartInputFile> parts_;
    std::unique_ptr<Imf::InputPart> part_;
    std::unique_ptr<Imf::RgbaInputFile> chroma_;
    std::unique_ptr<Imf::OutputFile> writer_;
    std::vector<Imf::Rgba> chromaRows_;
    std::vector<half> halfRows_;
};

} // namespace zelexr

#endif
