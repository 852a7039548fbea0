#include "direct.h"

#include <gif_lib.h>

namespace {

struct Close {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

bool decodeImage(GifFileType* gif, const bench::Coded& file, bench::Place& place) {
    if (DGifGetImageDesc(gif) == GIF_ERROR)
        return false;
    for (int y = 0; y < file.height; y++)
        if (DGifGetLine(gif, place.next(file.rowBytes()), file.width) == GIF_ERROR)
            return false;
    return true;
}

bool skipExtension(GifFileType* gif) {
    int code = 0;
    GifByteType* block = nullptr;
    bool whole = DGifGetExtension(gif, &code, &block) != GIF_ERROR;
    while (whole && block)
        whole = DGifGetExtensionNext(gif, &block) != GIF_ERROR;
    return whole;
}

bool decode(const bench::Coded& file, bench::Place& place) {
    const std::unique_ptr<GifFileType, Close> gif(DGifOpenFileName(file.path.c_str(), nullptr));
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    bool good = gif != nullptr;
    while (good && record != TERMINATE_RECORD_TYPE) {
        good = DGifGetRecordType(gif.get(), &record) != GIF_ERROR;
        if (good && record == IMAGE_DESC_RECORD_TYPE)
            good = decodeImage(gif.get(), file, place);
        else if (good && record == EXTENSION_RECORD_TYPE)
            good = skipExtension(gif.get());
    }
    return good;
}

const bench::DirectRegistration registration("GIF", decode);

} // namespace
