#ifndef ZELPNG_PNGFILE_H
#define ZELPNG_PNGFILE_H

#include "decoder.h"
#include "encoder.h"

#include "kit/codecFile.h"
#include "kit/fileClass.h"

namespace zelpng {

/// A PNG file.
class PngFile final : public zelkit::FileClass<PngFile, zelkit::CodecFile<Decoder, Encoder>> {
public:
    static constexpr char className[] = "PngFile";
    static constexpr char description[] = "PNG file";

protected:
    zelStatus createFile() override;

    void readOptions() override;
    zelStatus open(Decoder& decoder) override { return decoder.open(header_); }
    void describe(Decoder& decoder) override;
    zelStatus open(Encoder& encoder) override;

private:
    Metadata metadataToWrite() const;

    Options options_;
    Header header_;
};

} // namespace zelpng

#endif
