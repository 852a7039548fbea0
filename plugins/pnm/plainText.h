#ifndef ZELPNM_PLAINTEXT_H
#define ZELPNM_PLAINTEXT_H

#include "header.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zelpnm {

/// The text of a row as this plug-in writes it: every sample in a field of the same width, so that
/// rows can be found, and lines of at most 70 characters.
/// The bytes of such a row; nothing if they pass 63 bits.
std::optional<std::int64_t> textRowBytes(const Header& header);

/// Writes a row of one or two bytes a sample as such a text.
void formatTextRow(const Header& header, const std::uint8_t* row, char* text);

/// Reads rows of plain files. Where a row begins is known only once the text before it was read:
/// the reader keeps the place of every `step`th row that it came past, so that the text is scanned
/// once, however the rows are asked for.
class PlainRows {
public:
    PlainRows(int fd, const Header& header, int step);

    /// Reads `count` rows from row `first` on, as one or two bytes a sample. Fails with
    /// zelPREMATUREEOF, zelCORRUPTED, or zelREADFAILED and errno.
    zelStatus read(int first, int count, std::uint8_t* rows);

private:
    zelStatus readRow(ByteReader& reader, std::uint8_t* row) const;
    void keepPlace(int row, const ByteReader& reader);

    int fd_;
    Header header_;
    int step_;
    std::vector<std::int64_t> places_; ///< of the rows 0, step, 2 * step and so on
};

} // namespace zelpnm

#endif
