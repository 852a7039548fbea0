#include "exrFile.h"

#include "tags.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <algorithm>
#include <exception>
#include <new>

namespace zelexr {

namespace {

// Everything is done on the caller's thread.
constexpr int noThreads = 0;

} // namespace

// OpenEXR's exceptions end here.

zelStatus ExrFile::statusOf(zelMainStatus otherwise) const {
    for (const zelStatus status :
         {output_ ? output_->status() : zelOKAY, chromaInput_ ? chromaInput_->status() : zelOKAY,
          input_ ? input_->status() : zelOKAY})
        if (status != zelOKAY)
            return status;
    return zelStatusEncode(otherwise);
}

template <typename Work>
zelStatus ExrFile::guarded(Work&& work) {
    for (FdInput* const stream : {input_.get(), chromaInput_.get()})
        if (stream)
            stream->forgetFailure();
    try {
        work();
        return zelOKAY;
    } catch (const std::bad_alloc&) {
        return zelStatusEncode(zelMALLOCFAILED);
    } catch (const std::exception& failure) {
        zelError(zelSevWarning, "%s: %.300s", nameForMessages(), failure.what());
        return statusOf(output_ ? zelWRITEFAILED : zelCORRUPTED);
    }
}

// Reading

void ExrFile::readOptions() {
    bool rle = false, zips = false, piz = false, pxr24 = false, b44 = false, b44a = false,
         dwaa = false, dwab = false;
    const zelkit::Argument arguments[] = {{"half", &half_}, {"rle", &rle},     {"zips", &zips},
                                          {"piz", &piz},    {"pxr24", &pxr24}, {"b44", &b44},
                                          {"b44a", &b44a},  {"dwaa", &dwaa},   {"dwab", &dwab}};
    readArguments(arguments);
    const std::pair<bool, Imf::Compression> methods[] = {
        {rle, Imf::RLE_COMPRESSION},   {zips, Imf::ZIPS_COMPRESSION},
        {piz, Imf::PIZ_COMPRESSION},   {pxr24, Imf::PXR24_COMPRESSION},
        {b44, Imf::B44_COMPRESSION},   {b44a, Imf::B44A_COMPRESSION},
        {dwaa, Imf::DWAA_COMPRESSION}, {dwab, Imf::DWAB_COMPRESSION}};
    for (const auto& [wanted, method] : methods)
        if (wanted)
            method_ = method;
}

zelStatus ExrFile::openFile() {
    readOptions();
    const zelStatus status = guarded([&] {
        input_ = std::make_unique<FdInput>(fd);
        parts_ = std::make_unique<Imf::MultiPartInputFile>(*input_, noThreads);
    });
    return status == zelOKAY ? showImage(0) : status;
}

zelStatus ExrFile::showImage(int part) {
    std::int64_t fileBytes = 0;
    Layout layout;
    zelStatus status = zelkit::getFileLength(fd, fileBytes);
    if (status == zelOKAY)
        status = describe(parts_->header(part), fileBytes, layout);
    if (status == zelOKAY && layout.chroma && part != 0)
        status = zelStatusEncode(zelUNSUPPORTEDBYFILE);
    if (status != zelOKAY)
        return status;
    status = guarded([&] {
        chroma_.reset();
        if (layout.chroma) {
            chromaInput_ = std::make_unique<FdInput>(fd);
            chroma_ = std::make_unique<Imf::RgbaInputFile>(*chromaInput_, noThreads);
        }
        part_ = std::make_unique<Imf::InputPart>(*parts_, part);
        readTags(parts_->header(part), fields);
    });
    if (status != zelOKAY)
        return status;
    layout_ = std::move(layout);
    current_ = part;
    size = zelSize(layout_.width, layout_.height, 1, static_cast<int>(layout_.channels.size()));
    dtype = layout_.type;
    order = zelInterleaved;
    cm = layout_.colorModel;
    orientation = zelUpperLeftOrigin;
    compression = layout_.compression;
    return beginReading();
}

zelStatus ExrFile::startDecoding() {
    row_ = 0;
    return zelOKAY;
}

zelStatus ExrFile::skipRows(int count) {
    row_ += count;
    return zelOKAY;
}

zelStatus ExrFile::decodeRows(std::uint8_t* rows, int count) {
    const int first = layout_.window.min.y + row_;
    row_ += count;
    return guarded([&] {
        if (layout_.chroma)
            readChroma(rows, first, count);
        else
            readPart(rows, first, count);
    });
}

void ExrFile::readPart(std::uint8_t* rows, int first, int count) {
    const Imf::PixelType type = dtype == zelUInt ? Imf::UINT : Imf::FLOAT;
    const std::size_t pixel = layout_.channels.size() * 4;
    Imf::FrameBuffer frame;
    for (std::size_t c = 0; c < layout_.channels.size(); c++)
        frame.insert(layout_.channels[c],
                     Imf::Slice::Make(type, rows + 4 * c, {layout_.window.min.x, first}, size.x,
                                      count, pixel, rowBytes()));
    part_->setFrameBuffer(frame);
    part_->readPixels(first, first + count - 1);
}

void ExrFile::readChroma(std::uint8_t* rows, int first, int count) {
    const auto width = static_cast<std::size_t>(size.x);
    chromaRows_.resize(width * static_cast<std::size_t>(count));
    // OpenEXR wants the place of the pixel 0, 0, which may be far outside.
    const std::int64_t away = std::int64_t{first} * size.x + layout_.window.min.x;
    const auto origin = reinterpret_cast<std::uintptr_t>(chromaRows_.data()) -
                        static_cast<std::uintptr_t>(away) * sizeof(Imf::Rgba);
    chroma_->setFrameBuffer(reinterpret_cast<Imf::Rgba*>(origin), 1, width);
    chroma_->readPixels(first, first + count - 1);
    auto* to = reinterpret_cast<float*>(rows);
    for (const Imf::Rgba& pixel : chromaRows_) {
        const half channels[] = {pixel.r, pixel.g, pixel.b, pixel.a};
        to = std::copy_n(channels, size.c, to);
    }
}

int ExrFile::getNumImgs() {
    return parts_ ? parts_->parts() : 1;
}

int ExrFile::getCurrentImg() {
    return current_;
}

zelStatus ExrFile::setItem(int tag, va_list args) {
    if (isReadOnly(tag))
        return zelStatusEncode(accessmode == 0 ? zelREADONLY : zelBADFIELDSET);
    return ScanlineFile::setItem(tag, args);
}

// Writing

zelStatus ExrFile::createFile() {
    readOptions();
    layout_.channels = channelNames(cm, size.c);
    if (layout_.channels.size() != static_cast<std::size_t>(size.c))
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    if (method_)
        compression = *method_ == Imf::ZIPS_COMPRESSION ? zelZIP : zelUnknownCompression;
    const zelStatus status = makeFile();
    return status == zelOKAY ? beginWriting() : status;
}

Imf::Header ExrFile::newHeader(const Imath::Box2i& data, const Imath::Box2i& display) const {
    const Imf::Compression plain =
        compression == zelZIP ? Imf::ZIP_COMPRESSION : Imf::NO_COMPRESSION;
    Imf::Header header(display, data, 1, {0, 0}, 1, Imf::INCREASING_Y, method_.value_or(plain));
    const Imf::PixelType real = half_ ? Imf::HALF : Imf::FLOAT;
    for (const std::string& name : layout_.channels)
        header.channels().insert(name, Imf::Channel(dtype == zelUInt ? Imf::UINT : real));
    writeTags(fields, header);
    return header;
}

zelStatus ExrFile::startEncoding() {
    Imath::Box2i display;
    if (!placeWindows(fields, size.x, size.y, layout_.window, display))
        return zelStatusEncode(zelBADPARAMS);
    return guarded([&] {
        output_ = std::make_unique<FdOutput>(fd);
        writer_ = std::make_unique<Imf::OutputFile>(*output_, newHeader(layout_.window, display),
                                                    noThreads);
    });
}

zelStatus ExrFile::encodeRows(const std::uint8_t* rows, int count) {
    return guarded([&] {
        Imf::PixelType type = dtype == zelUInt ? Imf::UINT : Imf::FLOAT;
        std::size_t element = 4;
        const void* first = rows;
        if (half_ && type == Imf::FLOAT) {
            const auto* const numbers = reinterpret_cast<const float*>(rows);
            const std::size_t elements = rowBytes() / 4 * static_cast<std::size_t>(count);
            halfRows_.assign(numbers, numbers + elements);
            type = Imf::HALF;
            element = 2;
            first = halfRows_.data();
        }
        const std::size_t pixel = element * static_cast<std::size_t>(size.c);
        Imf::FrameBuffer frame;
        for (std::size_t c = 0; c < layout_.channels.size(); c++)
            frame.insert(layout_.channels[c],
                         Imf::Slice::Make(type, static_cast<const char*>(first) + element * c,
                                          {layout_.window.min.x, writer_->currentScanLine()},
                                          size.x, count, pixel,
                                          pixel * static_cast<std::size_t>(size.x)));
        writer_->setFrameBuffer(frame);
        writer_->writePixels(count);
    });
}

// The table of blocks is written as the writer goes.
zelStatus ExrFile::finishEncoding() {
    writer_.reset();
    return output_->status();
}

zelStatus ExrFile::closeFile() {
    const zelStatus written = finishWriting();
    writer_.reset(); // of a file that failed: it writes to the descriptor as it goes
    const zelStatus closed = closeDescriptor();
    return written != zelOKAY ? written : closed;
}

} // namespace zelexr
