#include "convert/parts.h"

#include <algorithm>
#include <cstring>

namespace zel::convert {

namespace {

class RowChange {
public:
    explicit RowChange(const Passage& thePassage)
        : passage(thePassage), change(thePassage.change), back(thePassage.change.from.x < 0) {}

    void run();

private:
    void pass(const ToPart& to, const FromPart& from, int length);
    void move(const ToPart& to, const FromPart& from, int length);
    void planesForward(std::byte* const* to, const FromPart& from, int length) const;

    const Passage& passage;
    const Change& change;
    bool back; ///< the source's rows are read downwards
    Stage changed;
    Stage planes;
};

void RowChange::run() {
    const auto& to = change.to;
    const auto& from = change.from;
    const std::ptrdiff_t limit = stageBytes / passage.pixelBytes() / 16 * 16;
    for (int z = 0; z < change.nz; ++z) {
        for (int y = 0; y < change.ny; ++y) {
            for (std::ptrdiff_t x = 0; x < change.nx; x += limit) {
                const auto length = static_cast<int>(std::min(limit, change.nx - x));
                const std::ptrdiff_t lowest = back ? x + length - 1 : x;
                pass({to.first + x * to.x + y * to.y + z * to.z, 0, to.slot, to.slots,
                      to.interleaved},
                     {from.first + lowest * from.x + y * from.y + z * from.z, 0, from.slot,
                      from.slots, from.interleaved},
                     length);
            }
        }
    }
}

// Types change on whole rows, so before or after places do.
void RowChange::pass(const ToPart& to, const FromPart& from, int length) {
    if (passage.road == nullptr) {
        move(to, from, length);
    } else if (passage.moveFirst) {
        const ToPart stage = passage.stageLike(to, changed, 1, length);
        move(stage, from, length);
        passage.convertRow(to, reading(stage), 0, length, true);
    } else {
        const ToPart stage = passage.stageLike(from, changed, 1, length);
        passage.convertRow(stage, from, 0, length, false);
        move(to, reading(stage), length);
    }
}

void RowChange::move(const ToPart& to, const FromPart& from, int length) {
    if (to.slots <= unrolledChannels) {
        if (passage.samePixels && back)
            return passage.mirrorPixels(to.slots)(to.first, from.first, length);
        if (passage.mirroredPixels && !back)
            return passage.mirrorChannels(to.slots)(to.first, from.first, length);
    }
    std::array<std::byte*, maxSlots> target;
    std::byte* plane = planes.bytes.data();
    for (std::size_t i = 0; i < change.feeds.size(); ++i) {
        target[i] = to.interleaved ? plane : to.at(change.feeds[i].to, 0);
        plane += std::ptrdiff_t{passage.size} * length;
    }
    if (!to.interleaved)
        return planesForward(target.data(), from, length);

    std::array<const std::byte*, maxSlots> source;
    if (from.interleaved || back) {
        planesForward(target.data(), from, length);
        std::copy_n(target.begin(), change.feeds.size(), source.begin());
    } else {
        for (std::size_t i = 0; i < change.feeds.size(); ++i)
            source[i] = from.at(change.feeds[i].from, 0);
    }
    passage.join(to.slots)(to.first, source.data(), to.slots, length);
}

// The channels of the source, one a plane, in the destination's direction.
void RowChange::planesForward(std::byte* const* to, const FromPart& from, int length) const {
    if (from.interleaved)
        return passage.splitRow(to, from, 0, length, back);
    for (std::size_t i = 0; i < change.feeds.size(); ++i) {
        const std::byte* plane = from.at(change.feeds[i].from, 0);
        if (back)
            passage.splitBack(1)(to + i, plane, 1, length);
        else
            std::memcpy(to[i], plane,
                        static_cast<std::size_t>(passage.size) * static_cast<std::size_t>(length));
    }
}

} // namespace

void changeRows(const Passage& passage) {
    RowChange(passage).run();
}

} // namespace zel::convert
