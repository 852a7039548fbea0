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

void WebpFile::readOptions() {
    int quality = -1;
    const zelkit::Argument known[] = {{"quality", &quality, 0, 100},
                                      {"lossless", &isLossless_},
                                      {"effort", &options_.effort, 0, 6}};
    readArguments(known);
    isLossy_ = quality >= 0 && !isLossless_;
    if (quality >= 0)
        options_.quality = quality;
}

// Without arguments the compression that was asked for decides.
void WebpFile::settleCompression() {
    options_.lossless = isLossless_ || (!isLossy_ && compression != zelJPEG);
    compression = options_.lossless ? zelZIP : zelJPEG;
}

// Reading

zelStatus WebpFile::openFile() {
    readArguments({});
    const zelStatus status = container_.open(fd, nameForMessages());
    if (status != zelOKAY)
        return status;
    iccProfile = container_.iccProfile;
    if (!container_.exif.empty())
        zelkit::readExif(container_.exif, fields);
    return showImage(0);
}

zelStatus WebpFile::showImage(int i) {
    if (images_ > 0)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
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
    return images_ > 0 ? images_ : static_cast<int>(container_.frames.size());
}

zelStatus WebpFile::startDecoding() {
    const zelStatus loaded = container_.load();
    if (loaded != zelOKAY)
        return loaded;
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
    settleCompression();
    images_ = 1;
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

zelStatus WebpFile::appendImg(zelFile* source, zelFileConfig* config) {
    const zelStatus status = prepareNextImage(source, config);
    if (status != zelOKAY)
        return status;
    settleCompression();
    current_ = images_++;
    return beginWriting();
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
    EncodedImage image;
    image.duration = static_cast<int>(fields.numberOr(durationTag, 0));
    const zelStatus status = encoder_->encode(nameForMessages(), options_, image);
    encoder_.reset();
    if (status == zelOKAY)
        made_.images.push_back(std::move(image));
    return status;
}

zelStatus WebpFile::writeImages() {
    zelkit::Fields stated = fields;
    if (orientation != zelUpperLeftOrigin)
        stated.set(zelkit::exifOrientation, double(orientation));
    made_.exif = zelkit::writeExif(stated);
    made_.iccProfile = iccProfile;
    made_.loopCount = static_cast<int>(fields.numberOr(loopCountTag, 1));
    return made_.write(fd);
}

zelStatus WebpFile::closeFile() {
    zelStatus written = finishWriting();
    if (written == zelOKAY && images_ > 0)
        written = writeImages();
    const zelStatus closed = closeDescriptor();
    return written != zelOKAY ? written : closed;
}

} // namespace zelwebp
