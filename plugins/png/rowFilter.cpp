#include "rowFilter.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <png.h>

namespace zelpng {

namespace {

constexpr std::pair<int, int> maskOfFilter[] = {{PNG_FILTER_VALUE_NONE, PNG_FILTER_NONE},
                                                {PNG_FILTER_VALUE_SUB, PNG_FILTER_SUB},
                                                {PNG_FILTER_VALUE_UP, PNG_FILTER_UP},
                                                {PNG_FILTER_VALUE_AVG, PNG_FILTER_AVG},
                                                {PNG_FILTER_VALUE_PAETH, PNG_FILTER_PAETH}};

struct Row {
    const std::uint8_t* bytes;
    const std::uint8_t* above;
    std::size_t count;
    std::size_t step;
};

template <class Foretell>
void subtract(const Row& row, std::uint8_t* out, Foretell foretell) {
    const auto difference = [](std::uint8_t byte, int foretold) {
        return static_cast<std::uint8_t>(byte - foretold);
    };
    const std::size_t first = std::min(row.step, row.count);
    for (std::size_t i = 0; i < first; i++)
        out[i] = difference(row.bytes[i], foretell(0, row.above[i], 0));
    for (std::size_t i = first; i < row.count; i++)
        out[i] = difference(
            row.bytes[i], foretell(row.bytes[i - row.step], row.above[i], row.above[i - row.step]));
}

// Of the three the one that is nearest to the plane through them.
int nearest(int left, int above, int corner) {
    const auto toLeft = static_cast<std::int16_t>(std::abs(above - corner));
    const auto toAbove = static_cast<std::int16_t>(std::abs(left - corner));
    const auto toCorner = static_cast<std::int16_t>(std::abs(left + above - 2 * corner));
    // Without jumps, so that many bytes are done at once.
    const bool isLeft = (toLeft <= toAbove) & (toLeft <= toCorner);
    const int other = toAbove <= toCorner ? above : corner;
    return isLeft ? left : other;
}

// How far the bytes lie from 0, as numbers with sign.
std::uint64_t sizeOf(const std::uint8_t* bytes, std::size_t count) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < count; i++)
        sum += std::min<std::uint8_t>(bytes[i], static_cast<std::uint8_t>(-bytes[i]));
    return sum;
}

} // namespace

bool RowFilter::start(std::size_t rowBytes, std::size_t step, int filters, bool wide) {
    rowBytes_ = rowBytes;
    step_ = step;
    filters_ = filters;
    swaps_ = wide && std::endian::native == std::endian::little;
    return row_.allocate(rowBytes) && above_.allocate(rowBytes) && best_.allocate(rowBytes + 1) &&
           trial_.allocate(rowBytes + 1);
}

void RowFilter::takeRow(const std::uint8_t* row) {
    std::swap(row_, above_);
    std::uint8_t* const to = row_.data();
    if (!swaps_) {
        std::memcpy(to, row, rowBytes_);
        return;
    }
    for (std::size_t i = 0; i + 1 < rowBytes_; i += 2) {
        to[i] = row[i + 1];
        to[i + 1] = row[i];
    }
}

std::span<const std::uint8_t> RowFilter::apply(const std::uint8_t* row) {
    takeRow(row);
    const bool chooses = !std::has_single_bit(static_cast<unsigned>(filters_));
    std::uint64_t smallest = UINT64_MAX;
    for (const auto& [filter, mask] : maskOfFilter) {
        if ((filters_ & mask) == 0)
            continue;
        apply(filter, trial_.data());
        const std::uint64_t size = chooses ? sizeOf(trial_.data() + 1, rowBytes_) : 0;
        if (size < smallest) {
            smallest = size;
            std::swap(best_, trial_);
        }
    }
    return {best_.data(), rowBytes_ + 1};
}

void RowFilter::apply(int filter, std::uint8_t* out) const {
    *out++ = static_cast<std::uint8_t>(filter);
    const Row row{row_.data(), above_.data(), rowBytes_, step_};
    switch (filter) {
    case PNG_FILTER_VALUE_SUB:
        return subtract(row, out, [](int left, int, int) { return left; });
    case PNG_FILTER_VALUE_UP:
        return subtract(row, out, [](int, int above, int) { return above; });
    case PNG_FILTER_VALUE_AVG:
        return subtract(row, out, [](int left, int above, int) { return (left + above) / 2; });
    case PNG_FILTER_VALUE_PAETH:
        return subtract(row, out, nearest);
    default:
        std::memcpy(out, row.bytes, row.count);
    }
}

} // namespace zelpng
