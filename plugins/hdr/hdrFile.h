#ifndef ZELHDR_HDRFILE_H
#define ZELHDR_HDRFILE_H

#include "header.h"

#include "kit/byteReader.h"
#include "kit/byteWriter.h"
#include "kit/fileClass.h"
#include "kit/scanlineFile.h"

#include <optional>

namespace zelhdr {

/// A Radiance picture. Scanlines are shown in the order and direction in which they are stored.
class HdrFile final : public zelkit::FileClass<HdrFile, zelkit::ScanlineFile> {
public:
    static constexpr char className[] = "zelhdr::HdrFile";
    static constexpr char description[] = "Radiance picture";

protected:
    zelStatus openFile() override;
    zelStatus createFile() override;

    zelStatus startDecoding() override;
    zelStatus decodeRows(std::uint8_t* rows, int count) override;
    zelStatus skipRows(int count) override;
    zelStatus startEncoding() override;
    zelStatus encodeRows(const std::uint8_t* rows, int count) override;

private:
    zelStatus makeLine();

    Header header_;
    std::optional<zelkit::ByteReader> reader_;
    zelkit::Buffer line_;      ///< one scanline as it is stored, without run lengths
    zelkit::ByteWriter coded_; ///< scanlines in writing
};

} // namespace zelhdr

#endif
