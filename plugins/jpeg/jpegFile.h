#ifndef ZELJPEG_JPEGFILE_H
#define ZELJPEG_JPEGFILE_H

#include "decoder.h"
#include "encoder.h"

#include "kit/codecFile.h"
#include "kit/fileClass.h"

namespace zeljpeg {

/// A JPEG file.
class JpegFile final : public zelkit::FileClass<JpegFile, zelkit::CodecFile<Decoder, Encoder>> {
public:
    static constexpr char className[] = "JpegFile";
    static constexpr char description[] = "JPEG file";

protected:
    zelStatus createFile() override;

    void readOptions() override;
    zelStatus open(Decoder& decoder) override { return decoder.open(header_); }
    void describe(Decoder& decoder) override;
    zelStatus open(Encoder& encoder) override;

private:
    Options options_;
    Header header_;
};

} // namespace zeljpeg

#endif
