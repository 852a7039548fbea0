#ifndef ZELPNG_MATCHFINDER_H
#define ZELPNG_MATCHFINDER_H

#include <cstdint>
#include <memory>

namespace zelpng {

/// The same bytes, once more: `length` of them, `distance` back.
struct Match {
    int length = 0;
    int distance = 0;
};

/// How hard to look for matches.
struct Effort {
    int steps = 0; ///< the most earlier places to try
    int nice = 0;  ///< a match of this length is long enough
    int lazy = 0;  ///< a shorter one is given up for a longer one that begins a byte later
};

/// Finds earlier places with the same bytes. Positions count from the beginning of a window, which
/// may slide; behind its end must be 8 bytes that can be read.
class MatchFinder {
public:
    static constexpr int reach = 32768;
    static constexpr int shortest = 4;
    static constexpr int longest = 258;

    /// Forgets everything. False without memory.
    bool start();

    /// Finds a match for the bytes from `at` to `end` that is longer than `floor`, if there is one
    /// among the places to try, and enters the position.
    Match find(const std::uint8_t* window, int at, int end, int floor, const Effort& effort);

    /// Enters a position that no match is wanted for.
    void enter(const std::uint8_t* window, int at, int end);

    /// All positions become smaller by `count`.
    void slide(int count);

private:
    static constexpr int hashBits = 15;
    static constexpr int chainMask = reach - 1;

    // Enters a position by its first four bytes; the place before it with the same hash.
    int chain(std::uint32_t first, int at);

    struct Tables {
        std::int32_t latest[1 << hashBits]; ///< by the hash of the bytes there
        std::int32_t earlier[reach];        ///< the place before each with the same hash
    };
    std::unique_ptr<Tables> tables_;
};

} // namespace zelpng

#endif
