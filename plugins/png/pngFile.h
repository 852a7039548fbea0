#ifndef ZELPNG_PNGFILE_H
#define ZELPNG_PNGFILE_H

#include "decoder.h"
#include "encoder.h"

#include "kit/fileClass.h"
#include "kit/scanlineFile.h"

#include <memory>

namespace zelpng {

/// A PNG file.
class PngFile final : public zelkit::FileClass<PngFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "PngFile";
    static constexpr char description[] = "PNG file";

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;

    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;
    zelStatus finishEncoding() override;

    bool carriesIccProfile() const override { return true; }

private:
    ~PngFile() override = default;

    void readOptions();
    zelStatus openDecoder(bool quiet);
    zelStatus decodeInterlaced();
    void showHeader();
    Metadata metadataToWrite() const;

    Options options_;
    Header header_;
    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Encoder> encoder_;
    zelkit::Buffer image_; ///< of an interlaced file, once it is decoded
    int row_ = 0;          ///< the next one of that image
    bool decoderIsFresh_ = false;
};

} // namespace zelpng

#endif
