#include "plainText.h"

#include "kit/sizes.h"

#include <algorithm>

namespace zelpnm {

namespace {

constexpr int longestLine = 70;
constexpr int highestSample = 65535;

// The digits of the highest sample, and a blank or newline.
int fieldWidth(const Header& header) {
    int width = 2;
    for (int rest = header.maxval; rest >= 10; rest /= 10)
        width++;
    return width;
}

// The digits of a plain PBM may stand without blanks between them.
zelStatus readBit(ByteReader& reader, int& bit) {
    skipSpace(reader);
    const int byte = reader.next();
    if (byte < 0)
        return reader.endStatus();
    bit = byte - '0';
    return bit == 0 || bit == 1 ? zelOKAY : zelStatusEncode(zelCORRUPTED);
}

} // namespace

std::optional<std::int64_t> textRowBytes(const Header& header) {
    return zelkit::checkedProduct({header.width, header.channels, fieldWidth(header)});
}

void formatTextRow(const Header& header, const std::uint8_t* row, char* text) {
    const std::int64_t samples = std::int64_t{header.width} * header.channels;
    const int width = fieldWidth(header);
    const int fieldsInLine = longestLine / width;
    for (std::int64_t i = 0; i < samples; i++, text += width) {
        int sample = header.maxval > 255 ? row[2 * i] << 8 | row[2 * i + 1] : row[i];
        std::fill_n(text, width, ' ');
        for (int digit = width - 2; digit >= 0; digit--, sample /= 10)
            if (sample > 0 || digit == width - 2)
                text[digit] = static_cast<char>('0' + sample % 10);
        if (i + 1 == samples || (i + 1) % fieldsInLine == 0)
            text[width - 1] = '\n';
    }
}

PlainRows::PlainRows(int fd, const Header& header, int step)
    : fd_(fd), header_(header), step_(step), places_{header.rasterOffset} {}

void PlainRows::keepPlace(int row, const ByteReader& reader) {
    if (row % step_ == 0 && row / step_ == static_cast<int>(places_.size()))
        places_.push_back(reader.position());
}

zelStatus PlainRows::readRow(ByteReader& reader, std::uint8_t* row) const {
    const std::int64_t samples = std::int64_t{header_.width} * header_.channels;
    for (std::int64_t i = 0; i < samples; i++) {
        int sample = 0;
        const zelStatus status = header_.kind == Kind::pbm
                                     ? readBit(reader, sample)
                                     : readNumber(reader, highestSample, sample);
        if (status != zelOKAY)
            return status;
        sample = std::min(sample, header_.maxval);
        if (header_.maxval > 255)
            *row++ = static_cast<std::uint8_t>(sample >> 8);
        *row++ = static_cast<std::uint8_t>(sample);
    }
    return zelOKAY;
}

zelStatus PlainRows::read(int first, int count, std::uint8_t* rows) {
    const std::int64_t rowBytes =
        std::int64_t{header_.width} * header_.channels * (header_.maxval > 255 ? 2 : 1);
    const int place = std::min(first / step_, static_cast<int>(places_.size()) - 1);
    ByteReader reader(fd_, places_[static_cast<std::size_t>(place)]);
    zelStatus status = zelOKAY;
    // The rows in front of the first one are read into its place.
    for (int row = place * step_; status == zelOKAY && row < first + count;) {
        status = readRow(reader, rows + std::max(0, row - first) * rowBytes);
        if (status == zelOKAY)
            keepPlace(++row, reader);
    }
    return status;
}

} // namespace zelpnm
