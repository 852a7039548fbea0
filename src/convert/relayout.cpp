#include "convert/relayout.h"

#include "convert/parts.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <utility>

namespace zel::convert {

namespace {

// Below these, a change costs more to set up than it saves.
constexpr int leastRun = 16;
constexpr int leastSquare = 4;

int sizeOf(zelDataType type) {
    return static_cast<int>(zelDataSize(type, 1));
}

bool isReal(zelDataType type) {
    return type == zelFloat || type == zelDouble;
}

bool keepsBits(zelDataType a, zelDataType b) {
    return a == b || (sizeOf(a) == sizeOf(b) && !isReal(a) && !isReal(b));
}

bool hasElements(zelDataType type) {
    return type != zelBit && zelDataSize(type, 1) != 0;
}

bool feedsTwice(std::span<const Feed> feeds) {
    for (std::size_t i = 1; i < feeds.size(); ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            if (feeds[i].from == feeds[k].from)
                return true;
        }
    }
    return false;
}

bool isServed(const Change& change) {
    const auto fed = static_cast<int>(change.feeds.size());
    return hasElements(change.to.type) && hasElements(change.from.type) &&
           std::max(change.to.slots, change.from.slots) <= maxSlots &&
           (!change.to.interleaved || fed == change.to.slots) && !feedsTwice(change.feeds);
}

template <class Byte>
void reverseX(Side<Byte>& side, int nx) {
    side.first += side.x * (nx - 1);
    side.x = -side.x;
}

template <class Byte>
void reverseY(Side<Byte>& side, int ny) {
    side.first += side.y * (ny - 1);
    side.y = -side.y;
}

// The shared space has no say in how memory is walked: its axes are named and turned to suit.
void suitAxes(Change& change) {
    if (change.to.transposed) {
        std::swap(change.to.x, change.to.y);
        std::swap(change.from.x, change.from.y);
        std::swap(change.nx, change.ny);
        change.to.transposed = false;
        change.from.transposed = !change.from.transposed;
    }
    if (change.to.x < 0) {
        reverseX(change.to, change.nx);
        reverseX(change.from, change.nx);
    }
    if (change.from.transposed && change.from.y < 0) {
        reverseY(change.to, change.ny);
        reverseY(change.from, change.ny);
    }
}

// Rows that follow each other on both sides become one.
void joinRows(Change& change) {
    if (change.to.x * change.nx == change.to.y && change.from.x * change.nx == change.from.y) {
        change.nx *= change.ny;
        change.ny = 1;
    }
}

// Whether pixels pass whole, with slot i fed from slot `first` + i * `step`.
bool passWhole(const Change& change, int first, int step) {
    if (!change.to.interleaved || !change.from.interleaved || change.to.slots != change.from.slots)
        return false;
    return std::all_of(change.feeds.begin(), change.feeds.end(),
                       [=](const Feed& feed) { return feed.from == first + feed.to * step; });
}

} // namespace

Passage::Passage(const Change& theChange)
    : change(theChange), moves(movesHere()),
      road(keepsBits(theChange.to.type, theChange.from.type)
               ? nullptr
               : roadBetween(theChange.to.type, theChange.from.type)),
      moveFirst(sizeOf(theChange.from.type) <= sizeOf(theChange.to.type) ||
                theChange.feeds.size() < static_cast<std::size_t>(theChange.from.slots)),
      size(sizeOf(moveFirst ? theChange.from.type : theChange.to.type)),
      samePixels(passWhole(theChange, 0, 1)),
      mirroredPixels(passWhole(theChange, theChange.from.slots - 1, -1)) {}

int Passage::pixelBytes() const {
    return size * std::max(change.to.slots, change.from.slots);
}

template <class Loop>
Loop Passage::pick(const Moves::ByChannels<Loop>& loops, int channels) const {
    const auto width = static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(size)));
    return loops[width][channels <= unrolledChannels ? static_cast<std::size_t>(channels) : 0];
}

template Split Passage::pick(const Moves::ByChannels<Split>&, int) const;
template Join Passage::pick(const Moves::ByChannels<Join>&, int) const;
template Mirror Passage::pick(const Moves::ByChannels<Mirror>&, int) const;

void Passage::convertRow(const ToPart& to, const FromPart& from, int row, int length,
                         bool bySlotsTo) const {
    if (to.interleaved) {
        road({to.at(0, row), from.at(0, row), 1, 1, length * to.slots}, 0, 0);
        return;
    }
    for (const Feed& feed : change.feeds) {
        const int slot = bySlotsTo ? feed.to : feed.from;
        road({to.at(slot, row), from.at(slot, row), 1, 1, length}, 0, 0);
    }
}

void Passage::splitRow(std::byte* const* planes, const FromPart& from, int row, int length,
                       bool back) const {
    std::array<std::byte*, maxSlots> bySlot;
    std::fill_n(bySlot.begin(), from.slots, nullptr);
    for (std::size_t i = 0; i < change.feeds.size(); ++i)
        bySlot[static_cast<std::size_t>(change.feeds[i].from)] = planes[i];
    const Split loop = back ? splitBack(from.slots) : split(from.slots);
    loop(bySlot.data(), from.at(0, row), from.slots, length);
}

bool relayout(const Change& given) {
    Change change = given;
    if (!isServed(change))
        return false;
    suitAxes(change);
    if (change.from.transposed) {
        if (std::min(change.nx, change.ny) < leastSquare)
            return false;
        changeSquares(Passage(change));
        return true;
    }
    joinRows(change);
    if (change.nx < leastRun)
        return false;
    changeRows(Passage(change));
    return true;
}

} // namespace zel::convert
