#include "exrFile.h"

#include "tags.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfDeepCompositing.h>
#include <OpenEXR/ImfTileDescription.h>
#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

namespace zelexr {

namespace {

// Everything is done on the caller's thread.
constexpr int noThreads = 0;

// The samples of a deep pixel, over one another from the nearest on. Depths are no colours: that of
// the nearest sample counts.
class OverByDepth final : public Imf::DeepCompositing {
public:
    void composite_pixel(float outputs[], const float* inputs[], const char* names[], int channels,
                         int samples, int) override {
        constexpr int someSources = 2; // so that samples are sorted
        DeepCompositing::composite_pixel(outputs, inputs, names, channels, samples, someSources);
        if (samples == 0)
            return;
        const auto nearest = std::min_element(inputs[0], inputs[0] + samples) - inputs[0];
        for (const int depth : {0, 1}) // the front and the back of a sample
            outputs[depth] = inputs[depth][nearest];
    }
};

} // namespace

// OpenEXR's exceptions end here.

zelStatus ExrFile::statusOf(zelMainStatus otherwise) const {
    for (const zelStatus status : {output_ ? output_->status() : zelOKAY,
                                   readers_.chromaInput ? readers_.chromaInput->status() : zelOKAY,
                                   input_ ? input_->status() : zelOKAY})
        if (status != zelOKAY)
            return status;
    return zelStatusEncode(otherwise);
}

template <typename Work>
zelStatus ExrFile::guarded(Work&& work) {
    for (FdInput* const stream : {input_.get(), readers_.chromaInput.get()})
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
    if (status != zelOKAY)
        return status;
    // The first part that can be shown.
    const zelStatus first = showImage(0);
    zelStatus shown = first;
    for (int part = 1; shown != zelOKAY && part < parts_->parts(); part++)
        shown = showImage(part);
    return shown == zelOKAY ? shown : first;
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
        readers_ = openPart(part, layout);
        readTags(parts_->header(part), fields);
    });
    if (status != zelOKAY)
        return status;
    cache_.clear();
    layout_ = std::move(layout);
    current_ = part;
    size = zelSize(layout_.width, layout_.height, 1, static_cast<int>(layout_.channels.size()));
    dtype = layout_.type;
    order = zelInterleaved;
    cm = layout_.colorModel;
    orientation = zelUpperLeftOrigin;
    compression = layout_.compression;
    status = beginReading();
    if (layout_.tileWidth > 0)
        pageSize = zelSize(layout_.tileWidth, layout_.tileHeight, 1, size.c);
    return status;
}

ExrFile::Readers ExrFile::openPart(int part, const Layout& layout) {
    Readers readers;
    if (layout.chroma) {
        readers.chromaInput = std::make_unique<FdInput>(fd);
        readers.chroma = std::make_unique<Imf::RgbaInputFile>(*readers.chromaInput, noThreads);
    } else if (layout.deep) {
        readers.deep = std::make_unique<Imf::DeepScanLineInputPart>(*parts_, part);
        readers.flat = std::make_unique<Imf::CompositeDeepScanLine>();
        readers.flat->addSource(readers.deep.get());
        static OverByDepth over;
        readers.flat->setCompositing(&over);
    } else if (layout.tileWidth > 0) {
        readers.tiles = std::make_unique<Imf::TiledInputPart>(*parts_, part);
    } else {
        readers.rows = std::make_unique<Imf::InputPart>(*parts_, part);
    }
    return readers;
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
        else if (layout_.deep)
            readDeep(rows, first, count);
        else
            readRows(rows, first, count);
    });
}

// The pixels from `origin` on, of all channels, in rows of `width` pixels.
template <typename Elements>
Imf::FrameBuffer ExrFile::frameOf(Imf::PixelType type, Elements* elements, const Imath::V2i& origin,
                                  int width, int height) const {
    const std::size_t element = type == Imf::HALF ? 2 : 4;
    const std::size_t pixel = element * layout_.channels.size();
    Imf::FrameBuffer frame;
    for (std::size_t c = 0; c < layout_.channels.size(); c++)
        frame.insert(layout_.channels[c],
                     Imf::Slice::Make(type, elements + element * c, origin, width, height, pixel,
                                      pixel * static_cast<std::size_t>(width)));
    return frame;
}

void ExrFile::readRows(std::uint8_t* rows, int first, int count) {
    const Imf::PixelType type = dtype == zelUInt ? Imf::UINT : Imf::FLOAT;
    readers_.rows->setFrameBuffer(
        frameOf(type, rows, {layout_.window.min.x, first}, size.x, count));
    readers_.rows->readPixels(first, first + count - 1);
}

void ExrFile::readDeep(std::uint8_t* rows, int first, int count) {
    // A file can state any number of samples in a few bytes.
    constexpr std::int64_t mostSamples = 4 << 20;
    Imf::CompositeDeepScanLine::setMaximumSampleCount(mostSamples);
    readers_.flat->setFrameBuffer(
        frameOf(Imf::FLOAT, rows, {layout_.window.min.x, first}, size.x, count));
    readers_.flat->readPixels(first, first + count - 1);
}

zelStatus ExrFile::getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz, int nc) {
    if (!readers_.tiles)
        return ScanlineFile::getPage(data, x, y, z, c, nx, ny, nz, nc);
    if (!data || !isPage(x, y, z, c, nx, ny, nz, nc))
        return zelStatusEncode(zelBADPARAMS);
    if (const auto* const kept = cache_.find(x, y)) {
        std::memcpy(data, kept->data(), kept->size());
        return zelOKAY;
    }
    const zelStatus status = guarded([&] {
        const Imath::V2i origin = layout_.window.min + Imath::V2i(x, y);
        readers_.tiles->setFrameBuffer(frameOf(dtype == zelUInt ? Imf::UINT : Imf::FLOAT,
                                               static_cast<std::uint8_t*>(data), origin, pageSize.x,
                                               ny));
        readers_.tiles->readTile(x / pageSize.x, y / pageSize.y);
    });
    if (status == zelOKAY)
        cache_.keep(x, y, data, zelDataSize(dtype, pageSize));
    return status;
}

void ExrFile::readChroma(std::uint8_t* rows, int first, int count) {
    const auto width = static_cast<std::size_t>(size.x);
    chromaRows_.resize(width * static_cast<std::size_t>(count));
    // OpenEXR wants the place of the pixel 0, 0, which may be far outside.
    const std::int64_t away = std::int64_t{first} * size.x + layout_.window.min.x;
    const auto origin = reinterpret_cast<std::uintptr_t>(chromaRows_.data()) -
                        static_cast<std::uintptr_t>(away) * sizeof(Imf::Rgba);
    readers_.chroma->setFrameBuffer(reinterpret_cast<Imf::Rgba*>(origin), 1, width);
    readers_.chroma->readPixels(first, first + count - 1);
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
        return refuseAttributes();
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
    if (pageSize.x < size.x)
        header.setTileDescription(Imf::TileDescription(static_cast<unsigned>(pageSize.x),
                                                       static_cast<unsigned>(pageSize.y)));
    writeTags(fields, header);
    return header;
}

zelStatus ExrFile::startEncoding() {
    Imath::Box2i display;
    if (!placeWindows(fields, size.x, size.y, layout_.window, display))
        return zelStatusEncode(zelBADPARAMS);
    return guarded([&] {
        output_ = std::make_unique<FdOutput>(fd);
        const Imf::Header header = newHeader(layout_.window, display);
        if (header.hasTileDescription())
            tileWriter_ = std::make_unique<Imf::TiledOutputFile>(*output_, header, noThreads);
        else
            rowWriter_ = std::make_unique<Imf::OutputFile>(*output_, header, noThreads);
    });
}

// The frame of what is to be encoded, in rows of `width` pixels.
Imf::FrameBuffer ExrFile::frameToEncode(const std::uint8_t* elements, const Imath::V2i& origin,
                                        int width, int height) {
    if (dtype == zelUInt || !half_)
        return frameOf(dtype == zelUInt ? Imf::UINT : Imf::FLOAT, elements, origin, width, height);
    const auto* const numbers = reinterpret_cast<const float*>(elements);
    const std::size_t count = layout_.channels.size() * static_cast<std::size_t>(width) *
                              static_cast<std::size_t>(height);
    halfRows_.assign(numbers, numbers + count);
    return frameOf(Imf::HALF, reinterpret_cast<const std::uint8_t*>(halfRows_.data()), origin,
                   width, height);
}

zelStatus ExrFile::encodeRows(const std::uint8_t* rows, int count) {
    return guarded([&] {
        const Imath::V2i origin(layout_.window.min.x, rowWriter_->currentScanLine());
        rowWriter_->setFrameBuffer(frameToEncode(rows, origin, size.x, count));
        rowWriter_->writePixels(count);
    });
}

zelStatus ExrFile::encodePage(const std::uint8_t* elements, int x, int y, int nx, int ny) {
    if (!tileWriter_)
        return ScanlineFile::encodePage(elements, x, y, nx, ny);
    return guarded([&] {
        const Imath::V2i origin = layout_.window.min + Imath::V2i(x, y);
        tileWriter_->setFrameBuffer(frameToEncode(elements, origin, pageSize.x, ny));
        tileWriter_->writeTile(x / pageSize.x, y / pageSize.y);
    });
}

// The table of blocks is written as the writer goes.
zelStatus ExrFile::finishEncoding() {
    rowWriter_.reset();
    tileWriter_.reset();
    return output_->status();
}

zelStatus ExrFile::closeFile() {
    const zelStatus written = finishWriting();
    rowWriter_.reset(); // of a file that failed: it writes to the descriptor as it goes
    tileWriter_.reset();
    const zelStatus closed = closeDescriptor();
    return written != zelOKAY ? written : closed;
}

} // namespace zelexr
