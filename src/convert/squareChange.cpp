#include "convert/parts.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace zel::convert {

namespace {

/// Exchanges x and y square by square. Rows of the destination run along x, those of the source
/// along y.
class SquareChange {
public:
    explicit SquareChange(const Passage& thePassage)
        : passage(thePassage), change(thePassage.change) {
        setExtents();
    }

    void run();

private:
    void setExtents();
    bool passesWhole() const;
    void pass(const ToPart& to, const FromPart& from, int nx, int ny);
    void turn(const ToPart& to, const FromPart& from, int nx, int ny);
    void turnChannels(const ToPart& to, const FromPart& from, int nx, int ny);
    std::byte* plane(Stage& stage, std::size_t index, int row, int rowLength) const {
        const std::ptrdiff_t before =
            static_cast<std::ptrdiff_t>(index) * width * height + std::ptrdiff_t{row} * rowLength;
        return stage.bytes.data() + before * passage.size;
    }

    const Passage& passage;
    const Change& change;
    int width = 0;  ///< of a piece along x
    int height = 0; ///< of a piece along y
    Stage changed;
    Stage apart;
    Stage turned;
};

bool SquareChange::passesWhole() const {
    return passage.samePixels && change.to.slots <= unrolledChannels;
}

// How many rows, one `step` bytes behind the other, the first cache holds at one place each: it has
// few lines for each remainder of an address by 4096, and the rows of many images lie a multiple of
// a large power of two apart.
int rowsThatFit(std::ptrdiff_t step, int linesEach) {
    const auto period = std::gcd(step, std::ptrdiff_t{4096});
    return linesEach * static_cast<int>(4096 / period);
}

void SquareChange::setExtents() {
    const int unit = passage.size * (passesWhole() ? change.to.slots : 1);
    // Units that are moved one by one come back to each row of the source more often.
    const bool byVector =
        std::has_single_bit(static_cast<unsigned>(unit)) || unit == 3 || unit == 6;
    const int lines = byVector ? 8 : 4;
    // With a change of type, one of the sides is a stage.
    const bool meetsFrom = passage.road == nullptr || passage.moveFirst;
    const bool meetsTo = passage.road == nullptr || !passage.moveFirst;
    const int rows = std::min(meetsFrom ? rowsThatFit(change.from.x, lines) : 64,
                              meetsTo ? rowsThatFit(change.to.y, lines) : 64);
    const bool staged = !passesWhole() || passage.road != nullptr;
    const int limit = staged ? stageBytes / passage.pixelBytes() : 2 * stageBytes / unit;
    width = height =
        static_cast<int>(std::bit_floor(static_cast<unsigned>(std::clamp(rows, 8, 64))));
    while (width * height > limit)
        width = height /= 2;
    // Rows that change type are better longer.
    if (passage.road != nullptr && 2 * width * height <= limit)
        width *= 2;
}

void SquareChange::run() {
    const auto& to = change.to;
    const auto& from = change.from;
    for (int z = 0; z < change.nz; ++z) {
        for (int y = 0; y < change.ny; y += height) {
            for (int x = 0; x < change.nx; x += width) {
                pass({to.first + x * to.x + y * to.y + z * to.z, to.y, to.slot, to.slots,
                      to.interleaved},
                     {from.first + x * from.x + y * from.y + z * from.z, from.x, from.slot,
                      from.slots, from.interleaved},
                     std::min(width, change.nx - x), std::min(height, change.ny - y));
            }
        }
    }
}

// Types change on whole rows, so before or after places do.
void SquareChange::pass(const ToPart& to, const FromPart& from, int nx, int ny) {
    if (passage.road == nullptr) {
        turn(to, from, nx, ny);
    } else if (passage.moveFirst) {
        const ToPart stage = passage.stageLike(to, changed, ny, nx);
        turn(stage, from, nx, ny);
        for (int y = 0; y < ny; ++y)
            passage.convertRow(to, reading(stage), y, nx, true);
    } else {
        const ToPart stage = passage.stageLike(from, changed, nx, ny);
        for (int x = 0; x < nx; ++x)
            passage.convertRow(stage, from, x, ny, false);
        turn(to, reading(stage), nx, ny);
    }
}

void SquareChange::turn(const ToPart& to, const FromPart& from, int nx, int ny) {
    if (passesWhole())
        passage.exchange(to.slots)({to.first, to.rowStep}, {from.first, from.rowStep}, nx, ny);
    else
        turnChannels(to, from, nx, ny);
}

// Pixels that don't pass whole are taken apart before, and put together after, as far as needed.
void SquareChange::turnChannels(const ToPart& to, const FromPart& from, int nx, int ny) {
    const std::size_t count = change.feeds.size();
    std::array<std::byte*, maxSlots> planes;
    for (int x = 0; from.interleaved && x < nx; ++x) {
        for (std::size_t i = 0; i < count; ++i)
            planes[i] = plane(apart, i, x, ny);
        passage.splitRow(planes.data(), from, x, ny, false);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Feed& feed = change.feeds[i];
        const ConstRows source =
            from.interleaved ? ConstRows{plane(apart, i, 0, ny), std::ptrdiff_t{passage.size} * ny}
                             : ConstRows{from.at(feed.from, 0), from.rowStep};
        const Rows target = to.interleaved
                                ? Rows{plane(turned, i, 0, nx), std::ptrdiff_t{passage.size} * nx}
                                : Rows{to.at(feed.to, 0), to.rowStep};
        passage.exchange(1)(target, source, nx, ny);
    }
    std::array<const std::byte*, maxSlots> rows;
    for (int y = 0; to.interleaved && y < ny; ++y) {
        for (std::size_t i = 0; i < count; ++i)
            rows[i] = plane(turned, i, y, nx);
        passage.join(to.slots)(to.at(0, y), rows.data(), to.slots, nx);
    }
}

} // namespace

void changeSquares(const Passage& passage) {
    SquareChange(passage).run();
}

} // namespace zel::convert
