#include "deflateBlock.h"

#include "huffman.h"

#include <algorithm>
#include <array>
#include <bit>

namespace zelpng {

namespace {

constexpr std::size_t storedPiece = 65535;
constexpr int longestCode = 15;
constexpr int longestLengthCode = 7;
constexpr int longestMatch = 258;

constexpr int endOfBlock = 256;
constexpr std::size_t literalSymbols = 286;
constexpr std::size_t distanceSymbols = 30;
constexpr std::size_t lengthSymbols = 19;

enum BlockKind {
    Stored = 0,
    Fixed = 1,
    Dynamic = 2
};

/// A symbol of a code, and the bits behind it that say which of its values is meant.
struct Coded {
    std::size_t symbol;
    int extraBits;
    std::uint32_t extra;
};

// Groups of four symbols for lengths and of two for distances have the same number of further bits.

Coded codedLength(int length) {
    const auto value = static_cast<std::uint32_t>(length - 3);
    if (length == longestMatch)
        return {literalSymbols - 1, 0, 0};
    const int bits = std::max(static_cast<int>(std::bit_width(value)) - 3, 0);
    const std::uint32_t symbol =
        endOfBlock + 1 + 4 * static_cast<std::uint32_t>(bits) + (value >> bits);
    return {symbol, bits, value & ((1u << bits) - 1)};
}

Coded codedDistance(int distance) {
    const auto value = static_cast<std::uint32_t>(distance - 1);
    const int bits = std::max(static_cast<int>(std::bit_width(value)) - 2, 0);
    return {2 * static_cast<std::uint32_t>(bits) + (value >> bits), bits,
            value & ((1u << bits) - 1)};
}

template <std::size_t symbols>
struct Code {
    std::array<std::uint32_t, symbols> counts{};
    std::array<std::uint8_t, symbols> lengths{};
    std::array<std::uint16_t, symbols> codes{};

    void build(int longest) {
        setCodeLengths(counts, longest, lengths);
        setCodes(lengths, codes);
    }

    void put(BitWriter& out, std::size_t symbol) const { out.put(codes[symbol], lengths[symbol]); }

    /// The bits of all symbols as they were counted, by these lengths.
    std::size_t bitsBy(const std::array<std::uint8_t, symbols>& by) const {
        std::size_t bits = 0;
        for (std::size_t i = 0; i < symbols; i++)
            bits += std::size_t{counts[i]} * by[i];
        return bits;
    }

    /// Symbols up to the last that has a code, but at least `least`.
    std::size_t used(std::size_t least) const {
        std::size_t count = symbols;
        while (count > least && lengths[count - 1] == 0)
            count--;
        return count;
    }
};

struct Codes {
    Code<mostSymbols> literals; ///< and lengths
    Code<distanceSymbols> distances;
    std::size_t extraBits = 0; ///< of all symbols

    void count(std::span<const Symbol> symbols) {
        literals.counts[endOfBlock] = 1;
        for (const Symbol symbol : symbols) {
            if (!symbol.isMatch()) {
                literals.counts[static_cast<std::size_t>(symbol.byte())]++;
                continue;
            }
            const Coded length = codedLength(symbol.length());
            const Coded distance = codedDistance(symbol.distance());
            literals.counts[length.symbol]++;
            distances.counts[distance.symbol]++;
            extraBits += static_cast<std::size_t>(length.extraBits + distance.extraBits);
        }
    }

    template <class LiteralLengths, class DistanceLengths>
    std::size_t bitsBy(const LiteralLengths& literal, const DistanceLengths& distance) const {
        return literals.bitsBy(literal) + distances.bitsBy(distance) + extraBits;
    }

    void write(BitWriter& out, std::span<const Symbol> symbols) const {
        for (const Symbol symbol : symbols) {
            if (symbol.isMatch()) {
                const Coded length = codedLength(symbol.length());
                const Coded distance = codedDistance(symbol.distance());
                literals.put(out, length.symbol);
                out.put(length.extra, length.extraBits);
                distances.put(out, distance.symbol);
                out.put(distance.extra, distance.extraBits);
            } else {
                literals.put(out, static_cast<std::size_t>(symbol.byte()));
            }
            out.flush();
        }
        literals.put(out, endOfBlock);
        out.flush();
    }
};

/// The codes that every reader knows.
struct FixedLengths {
    FixedLengths() {
        for (std::size_t i = 0; i < literals.size(); i++)
            literals[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
        distances.fill(5);
    }
    std::array<std::uint8_t, mostSymbols> literals;
    std::array<std::uint8_t, distanceSymbols> distances;
};

/// How a block states the lengths of its codes: runs of one length are one item, and the items have
/// a code of their own.
class StatedLengths {
public:
    explicit StatedLengths(const Codes& codes)
        : literals_(codes.literals.used(endOfBlock + 1)), distances_(codes.distances.used(1)) {
        std::array<std::uint8_t, literalSymbols + distanceSymbols> all;
        const auto end = std::copy_n(codes.literals.lengths.begin(), literals_, all.begin());
        const auto last = std::copy_n(codes.distances.lengths.begin(), distances_, end);
        for (auto run = all.begin(); run != last;) {
            const auto next = std::find_if(run, last, [&](auto length) { return length != *run; });
            addRun(*run, static_cast<std::size_t>(next - run));
            run = next;
        }
        code_.build(longestLengthCode);
        while (stated_ > 4 && code_.lengths[order[stated_ - 1]] == 0)
            stated_--;
    }

    std::size_t bits() const {
        return 5 + 5 + 4 + 3 * stated_ + code_.bitsBy(code_.lengths) + extraBits_;
    }

    void write(BitWriter& out) const {
        out.put(literals_ - (endOfBlock + 1), 5);
        out.put(distances_ - 1, 5);
        out.put(stated_ - 4, 4);
        out.flush();
        for (std::size_t i = 0; i < stated_; i++) {
            out.put(code_.lengths[order[i]], 3);
            out.flush();
        }
        for (std::size_t i = 0; i < used_; i++) {
            code_.put(out, items_[i].symbol);
            out.put(items_[i].extra, items_[i].extraBits);
            out.flush();
        }
    }

private:
    static constexpr std::uint8_t order[lengthSymbols] = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                          11, 4,  12, 3, 13, 2, 14, 1, 15};
    enum Repeats {
        LastLength = 16,
        FewZeros = 17,
        ManyZeros = 18
    };

    void add(std::size_t symbol, int extraBits = 0, std::size_t extra = 0) {
        items_[used_++] = {symbol, extraBits, static_cast<std::uint32_t>(extra)};
        code_.counts[symbol]++;
        extraBits_ += static_cast<std::size_t>(extraBits);
    }

    void addRun(std::uint8_t length, std::size_t run) {
        if (length != 0) {
            add(length);
            run--;
        }
        while (run >= 3) {
            const std::size_t part = std::min<std::size_t>(run, length != 0 ? 6 : 138);
            if (length != 0)
                add(LastLength, 2, part - 3);
            else if (part <= 10)
                add(FewZeros, 3, part - 3);
            else
                add(ManyZeros, 7, part - 11);
            run -= part;
        }
        for (; run > 0; run--)
            add(length);
    }

    std::size_t literals_;
    std::size_t distances_;
    std::array<Coded, literalSymbols + distanceSymbols> items_;
    std::size_t used_ = 0;
    std::size_t extraBits_ = 0;
    Code<lengthSymbols> code_;
    std::size_t stated_ = lengthSymbols;
};

void putHead(BitWriter& out, BlockKind kind, bool last) {
    out.put(last ? 1 : 0, 1);
    out.put(kind, 2);
    out.flush();
}

} // namespace

std::size_t largestBlock(std::size_t bytes) {
    return bytes + 6 * (bytes / storedPiece + 1);
}

void writeStored(BitWriter& out, std::span<const std::uint8_t> bytes, bool last) {
    do {
        const std::size_t count = std::min(bytes.size(), storedPiece);
        putHead(out, Stored, last && count == bytes.size());
        out.align();
        out.put(count, 16);
        out.put(~count & 0xffff, 16);
        out.flush();
        for (const std::uint8_t byte : bytes.first(count))
            out.putByte(byte);
        bytes = bytes.subspan(count);
    } while (!bytes.empty());
}

void writeBlock(BitWriter& out, std::span<const Symbol> symbols,
                std::span<const std::uint8_t> bytes, bool last) {
    static const FixedLengths fixed;
    Codes codes;
    codes.count(symbols);
    codes.literals.build(longestCode);
    codes.distances.build(longestCode);
    const StatedLengths stated(codes);
    const std::size_t dynamicBits =
        stated.bits() + codes.bitsBy(codes.literals.lengths, codes.distances.lengths);
    const std::size_t fixedBits = codes.bitsBy(fixed.literals, fixed.distances);
    if (!bytes.empty() && std::min(dynamicBits, fixedBits) / 8 >= bytes.size() + 4) {
        writeStored(out, bytes, last);
        return;
    }
    const bool dynamic = dynamicBits < fixedBits;
    putHead(out, dynamic ? Dynamic : Fixed, last);
    if (dynamic) {
        stated.write(out);
    } else {
        codes.literals.lengths = fixed.literals;
        codes.distances.lengths = fixed.distances;
        setCodes(codes.literals.lengths, codes.literals.codes);
        setCodes(codes.distances.lengths, codes.distances.codes);
    }
    codes.write(out, symbols);
}

} // namespace zelpng
