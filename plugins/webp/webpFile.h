#ifndef ZELWEBP_WEBPFILE_H
#define ZELWEBP_WEBPFILE_H

#include "assembly.h"
#include "container.h"
#include "frameSource.h"

#include "kit/fileClass.h"
#include "kit/scanlineFile.h"

#include <memory>
#include <span>

namespace zelwebp {

/// The tags: those of EXIF, and the duration and repetition of an animation.
std::span<const zelTagDescription> tagTable();

/// A WebP file.
class WebpFile final : public zelkit::FileClass<WebpFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zelwebp::WebpFile";
    static constexpr char description[] = "WebP file";

    int getNumImgs() override;
    int getCurrentImg() override { return current_; }
    /// Ends the image in writing and begins another of the same size: the file is an animation.
    zelStatus appendImg(zelFile* source, zelFileConfig* config) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus closeFile() override;
    /// A file in making stays at its last image.
    zelStatus showImage(int i) override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;
    bool rowsAreAtHand() const override { return !container_.isAnimation; }

    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;
    zelStatus finishEncoding() override;

    bool carriesIccProfile() const override { return true; }

private:
    ~WebpFile() override = default;

    void readOptions();
    void settleCompression();
    zelStatus writeImages();

    Options options_;
    bool isLossy_ = false;    ///< by the file's arguments
    bool isLossless_ = false; ///< likewise
    Container container_;
    int current_ = 0;
    int row_ = 0; ///< the next row to be decoded
    std::unique_ptr<FrameSource> source_;
    std::unique_ptr<Encoder> encoder_;
    Assembly made_;
    int images_ = 0; ///< of a file in making
};

} // namespace zelwebp

#endif
