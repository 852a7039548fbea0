#include "matchFinder.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

namespace zelpng {

namespace {

// Farther back than any position of a window reaches.
constexpr std::int32_t nowhere = -MatchFinder::reach;

template <class Word>
Word load(const std::uint8_t* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

int sameBytes(const std::uint8_t* a, const std::uint8_t* b, int most) {
    int count = 0;
    for (; count < most; count += 8) {
        const auto differing = load<std::uint64_t>(a + count) ^ load<std::uint64_t>(b + count);
        if (differing != 0) {
            const int equalBits = std::endian::native == std::endian::little
                                      ? std::countr_zero(differing)
                                      : std::countl_zero(differing);
            return std::min(most, count + equalBits / 8);
        }
    }
    return most;
}

} // namespace

bool MatchFinder::start() {
    if (!tables_)
        tables_.reset(new (std::nothrow) Tables);
    if (!tables_)
        return false;
    std::ranges::fill(tables_->latest, nowhere);
    std::ranges::fill(tables_->earlier, nowhere);
    return true;
}

Match MatchFinder::find(const std::uint8_t* window, int at, int end, int floor,
                        const Effort& effort) {
    const int most = std::min(longest, end - at);
    if (most < shortest)
        return {};
    const std::uint8_t* const here = window + at;
    const auto first = load<std::uint32_t>(here);
    int place = chain(first, at);
    Match best{std::max(floor, shortest - 1), 0};
    if (best.length >= most)
        return {};
    const int limit = std::max(at - reach, -1);
    for (int left = effort.steps; left > 0 && place > limit; left--) {
        const std::uint8_t* const there = window + place;
        // The last bytes of a longer match differ most often.
        if (load<std::uint32_t>(there + best.length - 3) ==
                load<std::uint32_t>(here + best.length - 3) &&
            load<std::uint32_t>(there) == first) {
            const int length = sameBytes(here, there, most);
            if (length > best.length) {
                best = {length, at - place};
                if (length >= std::min(effort.nice, most))
                    break;
            }
        }
        place = tables_->earlier[place & chainMask];
    }
    return best.distance > 0 ? best : Match{};
}

void MatchFinder::enter(const std::uint8_t* window, int at, int end) {
    if (end - at < shortest)
        return;
    chain(load<std::uint32_t>(window + at), at);
}

int MatchFinder::chain(std::uint32_t first, int at) {
    std::int32_t& latest = tables_->latest[first * 0x9E3779B1u >> (32 - hashBits)];
    tables_->earlier[at & chainMask] = latest;
    return std::exchange(latest, at);
}

void MatchFinder::slide(int count) {
    const auto moved = [count](std::int32_t place) { return std::max(place - count, nowhere); };
    std::ranges::transform(tables_->latest, tables_->latest, moved);
    std::ranges::transform(tables_->earlier, tables_->earlier, moved);
}

} // namespace zelpng
