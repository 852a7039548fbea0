#include "scan.h"

#include "input.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zelgif {

namespace {

constexpr std::size_t longestComment = 1 << 20;

// The steps through a file. After each, `error` tells whether giflib met one.
class Scanner {
public:
    Scanner(Input& input, GifFileType* gif, Contents& contents)
        : input_(input), gif_(gif), contents_(contents) {}

    /// False at the end of the file's records or at an error.
    bool step() {
        GifRecordType record = UNDEFINED_RECORD_TYPE;
        if (!good(DGifGetRecordType(gif_, &record)))
            return false;
        if (record == IMAGE_DESC_RECORD_TYPE)
            return readFrame();
        return record == EXTENSION_RECORD_TYPE && readExtension();
    }

    int error = D_GIF_SUCCEEDED;

private:
    bool good(int result) {
        if (result == GIF_ERROR)
            error = gif_->Error;
        return result != GIF_ERROR;
    }

    // giflib keeps a record and the colours of each image.
    void forgetImages() {
        GifFreeSavedImages(gif_);
        gif_->ImageCount = 0;
    }

    bool readFrame();
    bool readExtension();
    void takeBlock(int code, const GifByteType* block, bool first);
    void takeComment(std::string_view part, bool first);

    Input& input_;
    GifFileType* gif_;
    Contents& contents_;
    Frame next_; ///< what the extensions before it tell
    bool inLoopBlock_ = false;
};

bool Scanner::readFrame() {
    Frame frame = next_;
    next_ = Frame();
    frame.offset = input_.position() - 1;
    if (!good(DGifGetImageDesc(gif_)))
        return false;
    frame.left = gif_->Image.Left;
    frame.top = gif_->Image.Top;
    frame.width = gif_->Image.Width;
    frame.height = gif_->Image.Height;
    frame.interlaced = gif_->Image.Interlace;
    forgetImages();
    int codeSize = 0;
    GifByteType* block = nullptr;
    bool whole = good(DGifGetCode(gif_, &codeSize, &block));
    while (whole && block) {
        frame.dataBytes += block[0];
        whole = good(DGifGetCodeNext(gif_, &block));
    }
    contents_.frames.push_back(frame);
    return whole;
}

bool Scanner::readExtension() {
    int code = 0;
    GifByteType* block = nullptr;
    bool whole = good(DGifGetExtension(gif_, &code, &block));
    for (bool first = true; whole && block; first = false) {
        takeBlock(code, block, first);
        whole = good(DGifGetExtensionNext(gif_, &block));
    }
    return whole;
}

void Scanner::takeComment(std::string_view part, bool first) {
    std::string& comment = contents_.comment;
    if (first && !comment.empty() && comment.size() < longestComment)
        comment += '\n';
    comment += part.substr(0, longestComment - std::min(comment.size(), longestComment));
}

void Scanner::takeBlock(int code, const GifByteType* block, bool first) {
    const std::size_t bytes = block[0];
    const GifByteType* const data = block + 1;
    GraphicsControlBlock control;
    if (code == COMMENT_EXT_FUNC_CODE) {
        takeComment({reinterpret_cast<const char*>(data), bytes}, first);
    } else if (code == GRAPHICS_EXT_FUNC_CODE && first) {
        if (DGifExtensionToGCB(bytes, data, &control) != GIF_ERROR) {
            next_.disposal = control.DisposalMode;
            next_.transparentIndex = control.TransparentColor;
            next_.delay = control.DelayTime;
        }
    } else if (code == APPLICATION_EXT_FUNC_CODE) {
        if (!first && inLoopBlock_ && bytes == 3 && data[0] == 1)
            contents_.loopCount = data[1] | data[2] << 8;
        inLoopBlock_ = first && bytes == 11 && std::memcmp(data, "NETSCAPE2.0", 11) == 0;
    }
}

// A screen of no size is as large as its frames.
void settleSize(const GifFileType& gif, Contents& contents) {
    contents.width = gif.SWidth;
    contents.height = gif.SHeight;
    for (const Frame& frame : contents.frames) {
        if (gif.SWidth == 0)
            contents.width = std::max(contents.width, frame.left + frame.width);
        if (gif.SHeight == 0)
            contents.height = std::max(contents.height, frame.top + frame.height);
    }
}

void findBlankBeginnings(Contents& contents) {
    bool blank = true;
    for (Frame& frame : contents.frames) {
        frame.beginsBlank = blank;
        blank = (frame.disposal == DISPOSE_BACKGROUND && (blank || contents.covers(frame))) ||
                (frame.disposal == DISPOSE_PREVIOUS && blank);
    }
}

} // namespace

zelStatus scan(int fd, const char* name, Contents& contents) {
    Input input(fd);
    zelStatus status = zelOKAY;
    const DecoderHandle gif = input.open(status);
    if (!gif)
        return status;
    Scanner scanner(input, gif.get(), contents);
    while (scanner.step()) {
    }
    if (scanner.error != D_GIF_SUCCEEDED)
        status = input.statusOf(scanner.error);
    if (contents.frames.empty())
        return status != zelOKAY ? status : zelStatusEncode(zelUNSUPPORTEDBYFILE);
    if (status != zelOKAY)
        zelError(zelSevWarning, "%s: the file is damaged behind image %d; more may be missing",
                 name, static_cast<int>(contents.frames.size()) - 1);
    settleSize(*gif, contents);
    findBlankBeginnings(contents);
    return contents.width > 0 && contents.height > 0 ? zelOKAY : zelStatusEncode(zelCORRUPTED);
}

} // namespace zelgif
