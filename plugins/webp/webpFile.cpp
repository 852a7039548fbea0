#include "webpFile.h"

#include "kit/exif.h"

#include <cerrno>
#include <new>
#include <vector>

namespace zelwebp {

namespace {

// EXIF has no fields of such low numbers.
constexpr int durationTag = 1;
constexpr int loopCountTag = 2;

constexpr zelTagDescription animationTags[] = {
    {durationTag, zelkit::oneOf(zelTagInt), "Milliseconds for which the image is shown", "Duration",
     "", nullptr},
    {loopCountTag, zelkit::oneOf(zelTagInt), "How often the images are shown; 0 for ever",
     "LoopCount", "", nullptr}};

} // namespace

std::span<const zelTagDescription> tagTable() {
    static const std::vector<zelTagDescription> table =
        zelkit::joinTags({animationTags, zelkit::exifTagDescriptions()});
    return table;
}

// Without a quality the compression that was asked for decides.
void WebpFile::readOptions() {
    int quality = -1;
    bool lossless = false;
    const zelkit::Argument known[] = {
        {"quality", &quality, 0, 100}, {"lossless", &lossless}, {"effort", &options_.effort, 0, 6}};
    readArguments(known);
    options_.lossless = lossless || (quality < 0 && compression != zelJPEG);
    if (quality >= 0)
        options_.quality = quality;
}

// Reading

zelStatus WebpFile::openFile() {
    readArguments({});
    const zelStatus status = container_.load(fd);
    if (status != zelOKAY)
        return status;
    iccProfile = container_.iccProfile;
    if (!container_.exif.empty())
        zelkit::readExif(container_.exif, fields);
    return showImage(0);
}

zelStatus WebpFile::showImage(int i) {
    const Frame& frame = container_.frames[static_cast<std::size_t>(i)];
    current_ = i;
    size = zelSize(container_.width, container_.height, 1, container_.hasAlpha ? 4 : 3);
    dtype = zelUChar;
    order = zelInterleaved;
    cm = container_.hasAlpha ? zelRGBA : zelRGB;
    orientation = zelkit::orientationOf(fields);
    compression = frame.lossless ? zelZIP : zelJPEG;
    if (container_.isAnimation) {
        fields.set(durationTag, double(frame.duration));
        fields.set(loopCountTag, double(container_.loopCount));
    }
    return beginReading();
}

int WebpFile::getNumImgs() {
    return container_.frames.empty() ? 1 : static_cast<int>(container_.frames.size());
}

zelStatus WebpFile::startDecoding() {
    if (!source_)
        source_ = makeFrameSource(container_);
    row_ = 0;
    return source_ ? source_->show(current_) : zelkit::noMemory();
}

zelStatus WebpFile::decodeRows(std::uint8_t* rows, int count) {
    zelStatus status = zelOKAY;
    for (; count > 0 && status == zelOKAY; count--, row_++, rows += rowBytes())
        status = source_->copyRow(row_, rows);
    return status;
}

zelStatus WebpFile::skipRows(int count) {
    row_ += count;
    return zelOKAY;
}

// Writing

zelStatus WebpFile::createFile() {
    readOptions();
    if (size.c != zelColorModelChans(cm))
        return refuseAttributes();
    compression = options_.lossless ? zelZIP : zelJPEG;
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

// An animation is only read.
zelStatus WebpFile::setItem(int tag, va_list args) {
    const bool ofAnimation = tag == durationTag || tag == loopCountTag;
    return ofAnimation ? zelStatusEncode(zelBADFIELDSET) : ScanlineFile::setItem(tag, args);
}

zelStatus WebpFile::startEncoding() {
    encoder_.reset(new (std::nothrow) Encoder);
    return encoder_ ? encoder_->begin(size.x, size.y, size.c) : zelkit::noMemory();
}

zelStatus WebpFile::encodeRows(const std::uint8_t* rows, int count) {
    for (; count > 0; count--, rows += rowBytes())
        encoder_->addRow(rows);
    return zelOKAY;
}

zelStatus WebpFile::finishEncoding() {
    zelkit::Fields stated = fields;
    if (orientation != zelUpperLeftOrigin)
        stated.set(zelkit::exifOrientation, double(orientation));
    const std::vector<std::uint8_t> exif = zelkit::writeExif(stated);
    const zelStatus status = encoder_->write(fd, nameForMessages(), options_, iccProfile, exif);
    encoder_.reset();
    return status;
}

} // namespace zelwebp
