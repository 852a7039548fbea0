#ifndef ZELJPEG_JPEGFILE_H
#define ZELJPEG_JPEGFILE_H

#include "decoder.h"
#include "encoder.h"

#include "kit/fileClass.h"
#include "kit/scanlineFile.h"

#include <memory>

namespace zeljpeg {

/// A JPEG file.
class JpegFile final : public zelkit::FileClass<JpegFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "JpegFile";
    static constexpr char description[] = "JPEG file";

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
    ~JpegFile() override = default;

    void readOptions();
    zelStatus openDecoder(bool quiet);
    void showHeader();

    Options options_;
    Header header_;
    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Encoder> encoder_;
    bool decoderIsFresh_ = false;
};

} // namespace zeljpeg

#endif
