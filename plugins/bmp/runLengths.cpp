#include "runLengths.h"

#include <algorithm>

namespace zelbmp {

// The second byte of a code whose first one is 0; more are that many pixels.
enum Escape : int {
    endOfRow = 0,
    endOfImage = 1,
    movePlace = 2
};

zelStatus RunLengths::decodeRow(std::uint8_t* row) {
    std::fill_n(row, width_, std::uint8_t{0});
    if (emptyRows_ > 0) {
        emptyRows_--;
        return zelOKAY;
    }
    while (!ended_) {
        const int count = reader_.next();
        const int value = reader_.next();
        if (value < 0)
            return reader_.endStatus();
        zelStatus status = zelOKAY;
        if (count > 0) {
            status = putRun(row, count, value);
        } else if (value == endOfRow) {
            column_ = 0;
            return zelOKAY;
        } else if (value == endOfImage) {
            ended_ = true;
        } else if (value == movePlace) {
            status = move();
            if (status == zelOKAY && emptyRows_ > 0) {
                emptyRows_--;
                return zelOKAY;
            }
        } else {
            status = putLiteral(row, value);
        }
        if (status != zelOKAY)
            return status;
    }
    return zelOKAY;
}

void RunLengths::put(std::uint8_t* row, int index) {
    if (column_ < width_)
        row[column_] = static_cast<std::uint8_t>(index);
    column_++;
}

zelStatus RunLengths::putRun(std::uint8_t* row, int count, int value) {
    if (count > room_ - column_)
        return zelStatusEncode(zelCORRUPTED);
    for (int i = 0; i < count; i++)
        put(row, bits_ == 8 ? value : i % 2 == 0 ? value >> 4 : value & 15);
    return zelOKAY;
}

zelStatus RunLengths::putLiteral(std::uint8_t* row, int count) {
    if (count > room_ - column_)
        return zelStatusEncode(zelCORRUPTED);
    const int bytes = bits_ == 8 ? count : (count + 1) / 2;
    for (int i = 0; i < bytes; i++) {
        const int value = reader_.next();
        if (value < 0)
            return reader_.endStatus();
        put(row, bits_ == 8 ? value : value >> 4);
        if (bits_ == 4 && i * 2 + 1 < count)
            put(row, value & 15);
    }
    if (bytes % 2 != 0)
        reader_.next(); // codes begin at even places
    return zelOKAY;
}

zelStatus RunLengths::move() {
    const int right = reader_.next();
    const int rows = reader_.next();
    if (rows < 0)
        return reader_.endStatus();
    if (right > room_ - column_)
        return zelStatusEncode(zelCORRUPTED);
    column_ += right;
    emptyRows_ = rows;
    return zelOKAY;
}

namespace {

constexpr int longestCode = 255;

// How many indexes from `row` on repeat: one, or of 4 bits two in turn.
int runAt(const std::uint8_t* row, int left, int bits) {
    const int most = std::min(left, longestCode);
    const int period = bits == 8 ? 1 : 2;
    int count = std::min(period, most);
    while (count < most && row[count] == row[count - period])
        count++;
    return count;
}

std::uint8_t nibbles(const std::uint8_t* row, int left) {
    return static_cast<std::uint8_t>(row[0] << 4 | (left > 1 ? row[1] : 0));
}

void appendLiteral(std::vector<std::uint8_t>& out, const std::uint8_t* row, int count, int bits) {
    out.insert(out.end(), {0, static_cast<std::uint8_t>(count)});
    const std::size_t start = out.size();
    for (int i = 0; i < count; i += bits == 8 ? 1 : 2)
        out.push_back(bits == 8 ? row[i] : nibbles(row + i, count - i));
    if ((out.size() - start) % 2 != 0)
        out.push_back(0); // codes begin at even places
}

} // namespace

void appendRunLengths(std::vector<std::uint8_t>& out, const std::uint8_t* row, int width,
                      int bits) {
    const int shortestRun = bits == 8 ? 3 : 5; // a shorter one saves nothing within a literal
    constexpr int shortestLiteral = 3;         // fewer pixels would be other codes
    for (int at = 0; at < width;) {
        const auto isRunAt = [&](int i) {
            return runAt(row + i, width - i, bits) >= std::min(shortestRun, width - i);
        };
        int count = 0;
        while (at + count < width && count < longestCode && !isRunAt(at + count))
            count++;
        if (count >= shortestLiteral) {
            appendLiteral(out, row + at, count, bits);
        } else {
            count = runAt(row + at, width - at, bits);
            out.push_back(static_cast<std::uint8_t>(count));
            out.push_back(bits == 8 ? row[at] : nibbles(row + at, width - at));
        }
        at += count;
    }
    out.insert(out.end(), {0, endOfRow});
}

void appendEnd(std::vector<std::uint8_t>& out) {
    out.insert(out.end(), {0, endOfImage});
}

} // namespace zelbmp
