#include "gifFile.h"

#include "kit/bits.h"
#include "kit/palette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace zelgif {

namespace {

constexpr zelTagDescription tags[] = {
    {commentTag, zelkit::oneOf(zelTagString), "Comment on the file", "Comment", "", nullptr},
    {durationTag, zelkit::oneOf(zelTagInt), "Milliseconds for which the image is shown", "Duration",
     "0", nullptr},
    {loopCountTag, zelkit::oneOf(zelTagInt), "How often the images are shown; 0 for ever",
     "LoopCount", "", nullptr}};

constexpr int millisecondsPerDelay = 10;

// The file counts how often the images are shown again, and 0 is for ever.
int showingsOf(int loopCount) {
    return loopCount > 0 ? loopCount + 1 : loopCount;
}

// -1: the images are shown once, which is not stated.
int loopCountOf(int showings) {
    return showings == 1 ? -1 : std::max(showings - 1, 0);
}

// The palette of an image as it is shown, and the index of the pixels beside its frame. Null if
// they and the frame need more than 256 colours.
std::unique_ptr<zelColormap> paletteOf(std::span<const std::uint8_t> colors, const Frame& frame,
                                       bool covers, int& outside) {
    auto entries = static_cast<int>(colors.size() / 3);
    const int transparent =
        covers || frame.transparentIndex >= 0 ? frame.transparentIndex : entries;
    if (transparent >= zelkit::largestPalette)
        return nullptr;
    outside = std::max(transparent, 0);
    entries = std::max(entries, transparent + 1);
    const int channels = transparent >= 0 ? 4 : 3;
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < entries; i++) {
        for (std::size_t c = 0; c < 3; c++) {
            const std::size_t at = static_cast<std::size_t>(i) * 3 + c;
            bytes.push_back(at < colors.size() ? colors[at] : std::uint8_t{0});
        }
        if (channels == 4)
            bytes.push_back(i == transparent ? 0 : 255);
    }
    return zelkit::makePalette(bytes, channels);
}

// As many indexes as pixels of a type can have.
int indexesOf(zelDataType type) {
    return type == zelBit ? 2 : zelkit::largestPalette;
}

bool isGrey(const zelColormap& palette, zelDataType type) {
    const auto greys = zelkit::greyPalette(indexesOf(type));
    return greys && !palette.isDiff(*greys);
}

} // namespace

std::span<const zelTagDescription> tagTable() {
    return tags;
}

// Reading

zelStatus GifFile::openFile() {
    readArguments({});
    const zelStatus status = scan(fd, nameForMessages(), contents_);
    return status == zelOKAY ? showImage(0) : status;
}

// Fills the attributes of an image. At a failure those of the image before stay.
zelStatus GifFile::showImage(int i) {
    if (images_ > 0)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    const Frame& shown = contents_.frames[static_cast<std::size_t>(i)];
    const bool covers = contents_.covers(shown);
    std::unique_ptr<zelColormap> colors;
    int outside = 0;
    if (shown.beginsBlank || (covers && shown.transparentIndex < 0)) {
        FrameDecoder decoder(fd);
        const zelStatus status = decoder.open(shown);
        if (status != zelOKAY)
            return status;
        colors = paletteOf(decoder.colors(), shown, covers, outside);
    }
    current_ = i;
    outsideIndex_ = outside;
    palette = std::move(colors);
    decoder_.reset();
    whole_ = zelkit::Buffer();
    size = zelSize(contents_.width, contents_.height, 1, palette ? 1 : 4);
    dtype = palette && palette->getLength() == 2 ? zelBit : zelUChar;
    cm = palette ? zelRGBPalette : zelRGBA;
    if (palette && isGrey(*palette, dtype)) {
        cm = zelLuminance;
        palette.reset();
    }
    order = zelInterleaved;
    orientation = zelUpperLeftOrigin;
    compression = zelLZW;
    fillFields();
    return beginReading();
}

void GifFile::fillFields() {
    fields.clear();
    if (!contents_.comment.empty())
        fields.set(commentTag, contents_.comment);
    if (contents_.frames.size() > 1 || frame().delay > 0)
        fields.set(durationTag, double(frame().delay) * millisecondsPerDelay);
    if (contents_.loopCount >= 0)
        fields.set(loopCountTag, double(showingsOf(contents_.loopCount)));
}

int GifFile::getNumImgs() {
    return images_ > 0 ? images_ : static_cast<int>(contents_.frames.size());
}

zelStatus GifFile::startDecoding() {
    row_ = 0;
    if (isComposed()) {
        if (!canvas_)
            canvas_ = std::make_unique<Canvas>(fd, contents_);
        return canvas_->show(current_);
    }
    if (frame().interlaced && whole_.size() > 0)
        return zelOKAY;
    decoder_ = std::make_unique<FrameDecoder>(fd);
    const zelStatus status = decoder_->open(frame());
    indexes_.resize(static_cast<std::size_t>(frame().width));
    return status == zelOKAY && frame().interlaced ? decodeInterlaced() : status;
}

// The rows of an interlaced frame come in four passes over the whole of it.
zelStatus GifFile::decodeInterlaced() {
    const auto rowLength = static_cast<std::size_t>(frame().width);
    zelkit::Buffer rows;
    if (!rows.allocate(rowLength * static_cast<std::size_t>(frame().height)))
        return zelkit::noMemory();
    const zelStatus status = forEachStoredRow(frame(), [&](int y) {
        return decoder_->nextRow(rows.data() + rowLength * static_cast<std::size_t>(y));
    });
    if (status == zelOKAY)
        whole_ = std::move(rows);
    return status;
}

zelStatus GifFile::nextFrameRow(int y, const std::uint8_t*& indexes) {
    if (frame().interlaced) {
        indexes =
            whole_.data() + static_cast<std::size_t>(frame().width) * static_cast<std::size_t>(y);
        return zelOKAY;
    }
    indexes = indexes_.data();
    return decoder_->nextRow(indexes_.data());
}

zelStatus GifFile::decodeIndexes(std::uint8_t* row) {
    const Frame& shown = frame();
    std::memset(row, outsideIndex_, static_cast<std::size_t>(size.x));
    const int y = row_ - shown.top;
    if (y < 0 || y >= shown.height || shown.width < 1)
        return zelOKAY;
    const std::uint8_t* indexes = nullptr;
    const zelStatus status = nextFrameRow(y, indexes);
    if (status == zelOKAY && shown.left < size.x)
        std::memcpy(row + shown.left, indexes,
                    static_cast<std::size_t>(std::min(shown.width, size.x - shown.left)));
    return status;
}

zelStatus GifFile::decodeRows(std::uint8_t* rows, int count) {
    zelStatus status = zelOKAY;
    line_.resize(static_cast<std::size_t>(size.x));
    for (; count > 0 && status == zelOKAY; count--, row_++, rows += rowBytes()) {
        if (isComposed()) {
            std::memcpy(rows, canvas_->row(row_), rowBytes());
        } else if (dtype == zelBit) {
            status = decodeIndexes(line_.data());
            for (int x = 0; x < size.x; x++)
                zelkit::setBit(rows, x, line_[static_cast<std::size_t>(x)] == 1);
        } else {
            status = decodeIndexes(rows);
        }
    }
    return status;
}

zelStatus GifFile::skipRows(int count) {
    if (!isComposed() && !frame().interlaced)
        return ScanlineFile::skipRows(count);
    row_ += count;
    return zelOKAY;
}

// Writing

zelStatus GifFile::createFile() {
    readArguments({});
    const zelStatus status = makeFile();
    if (status != zelOKAY)
        return status;
    images_ = 1;
    return beginImage();
}

// Without a palette of its own an image has that of the one before, or greys.
zelStatus GifFile::beginImage() {
    if (cm != zelRGBPalette || (palette && palette->getLength() > indexesOf(dtype)))
        palette.reset();
    if (cm == zelRGBPalette && !palette) {
        palette = zelkit::greyPalette(indexesOf(dtype));
        if (!palette)
            return zelkit::noMemory();
    }
    return beginWriting();
}

zelStatus GifFile::appendImg(zelFile* source, zelFileConfig* config) {
    const zelStatus status = prepareNextImage(source, config);
    if (status != zelOKAY)
        return status;
    current_ = images_++;
    return beginImage();
}

zelStatus GifFile::startEncoding() {
    const auto greys = palette ? nullptr : zelkit::greyPalette(indexesOf(dtype));
    if (!palette && !greys)
        return zelkit::noMemory();
    const Encoder::Image image = {
        size.x, size.y, palette ? *palette : *greys, dtype == zelBit,
        static_cast<int>(std::lround(fields.numberOr(durationTag, 0) / millisecondsPerDelay))};
    zelStatus status = zelOKAY;
    if (!encoder_) {
        encoder_ = std::make_unique<Encoder>(fd);
        status = encoder_->begin(image, fields.text(commentTag),
                                 loopCountOf(static_cast<int>(fields.numberOr(loopCountTag, 1))));
    }
    return status == zelOKAY ? encoder_->beginImage(image) : status;
}

zelStatus GifFile::encodeRows(const std::uint8_t* rows, int count) {
    zelStatus status = zelOKAY;
    line_.resize(static_cast<std::size_t>(size.x));
    for (; count > 0 && status == zelOKAY; count--, rows += rowBytes()) {
        const std::uint8_t* indexes = rows;
        if (dtype == zelBit) {
            for (int x = 0; x < size.x; x++)
                line_[static_cast<std::size_t>(x)] =
                    static_cast<std::uint8_t>(zelkit::getBit(rows, x));
            indexes = line_.data();
        }
        status = encoder_->writeRow(indexes);
    }
    if (status == zelBADPARAMS)
        zelError(zelSevWarning, "%s: an index is beyond the colour map", nameForMessages());
    return status;
}

zelStatus GifFile::closeFile() {
    const zelStatus written = finishWriting();
    const zelStatus ended = encoder_ ? encoder_->finish() : zelOKAY;
    encoder_.reset();
    const zelStatus closed = closeDescriptor();
    if (written != zelOKAY)
        return written;
    return ended != zelOKAY ? ended : closed;
}

} // namespace zelgif
