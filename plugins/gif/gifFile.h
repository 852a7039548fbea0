#ifndef ZELGIF_GIFFILE_H
#define ZELGIF_GIFFILE_H

#include "canvas.h"
#include "encoder.h"
#include "frameDecoder.h"

#include "kit/fileClass.h"
#include "kit/scanlineFile.h"

#include <memory>
#include <span>

namespace zelgif {

enum Tag : int {
    commentTag = 1,
    durationTag = 2,
    loopCountTag = 3
};

std::span<const zelTagDescription> tagTable();

/// A GIF file. Each image is the whole screen, as it is seen while a frame is shown: the frame's
/// indexes, or greys, where its palette has all colours to be seen, else zelRGBA.
class GifFile final : public zelkit::FileClass<GifFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zelgif::GifFile";
    static constexpr char description[] = "Graphics Interchange Format file";

    int getNumImgs() override;
    int getCurrentImg() override { return current_; }
    /// Ends the image in writing and begins another of the same size.
    zelStatus appendImg(zelFile* source, zelFileConfig* config) override;

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;
    /// A file in making stays at its last image.
    zelStatus showImage(int i) override;
    zelStatus closeFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;

    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;

private:
    ~GifFile() override = default;

    const Frame& frame() const { return contents_.frames[static_cast<std::size_t>(current_)]; }
    bool isComposed() const { return cm == zelRGBA; }
    void fillFields();
    zelStatus decodeInterlaced();
    zelStatus nextFrameRow(int y, const std::uint8_t*& indexes);
    /// Decodes the indexes of the next row of the screen.
    zelStatus decodeIndexes(std::uint8_t* row);
    zelStatus beginImage();

    Contents contents_;
    int current_ = 0;
    int row_ = 0;          ///< the next row to be decoded
    int outsideIndex_ = 0; ///< of the pixels beside the frame
    std::unique_ptr<FrameDecoder> decoder_;
    std::vector<std::uint8_t> indexes_; ///< a row of the frame
    std::vector<std::uint8_t> line_;    ///< the indexes of a row of bits
    zelkit::Buffer whole_;              ///< the frame, if it is interlaced
    std::unique_ptr<Canvas> canvas_;

    std::unique_ptr<Encoder> encoder_;
    int images_ = 0; ///< of a file in making
};

} // namespace zelgif

#endif
