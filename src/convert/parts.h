#ifndef ZEL_CONVERT_PARTS_H
#define ZEL_CONVERT_PARTS_H

// What the two walks of a change of layout share: pieces of an area, and how elements pass.

#include "convert/moves.h"
#include "convert/relayout.h"
#include "convert/roads.h"

#include <array>

namespace zel::convert {

/// Rows of some pixels of an area, forwards in memory.
template <class Byte>
struct Part {
    Byte* first;
    std::ptrdiff_t rowStep;
    std::ptrdiff_t slotStep;
    int slots;
    bool interleaved;

    Byte* at(int slot, int row) const { return first + slot * slotStep + row * rowStep; }
};
using ToPart = Part<std::byte>;
using FromPart = Part<const std::byte>;

inline FromPart reading(const ToPart& part) {
    return {part.first, part.rowStep, part.slotStep, part.slots, part.interleaved};
}

// A piece passes through buffers on the stack, where two steps cannot be one. They stay in the
// first cache, so that each element is still fetched from memory once and sent there once.
constexpr int stageBytes = 8192;
struct alignas(64) Stage {
    std::array<std::byte, stageBytes> bytes;
};

/// How the elements of one change pass.
struct Passage {
    explicit Passage(const Change& theChange);

    const Change& change;
    const Moves& moves;
    Road road;           ///< null where the bits stay as they are
    bool moveFirst;      ///< places change before types do
    int size;            ///< bytes of an element when it changes places
    bool samePixels;     ///< pixels pass whole
    bool mirroredPixels; ///< pixels pass whole, but with their slots in inverse order

    /// Bytes of all slots of a pixel on the side that has more of them.
    int pixelBytes() const;

    Split split(int channels) const { return pick(moves.split, channels); }
    Split splitBack(int channels) const { return pick(moves.splitBack, channels); }
    Join join(int channels) const { return pick(moves.join, channels); }
    Mirror mirrorPixels(int channels) const { return pick(moves.mirrorPixels, channels); }
    Mirror mirrorChannels(int channels) const { return pick(moves.mirrorChannels, channels); }
    Exchange exchange(int units) const {
        return moves.exchange[static_cast<std::size_t>(units) * static_cast<std::size_t>(size)];
    }

    /// Rows on a stage that are laid out as in `like`.
    template <class Byte>
    ToPart stageLike(const Part<Byte>& like, Stage& stage, int rows, int length) const {
        const std::ptrdiff_t run = std::ptrdiff_t{size} * length;
        if (like.interleaved)
            return {stage.bytes.data(), run * like.slots, size, like.slots, true};
        return {stage.bytes.data(), run, run * rows, like.slots, false};
    }

    /// Changes the types of a row between parts of one layout. The slots that take part are those
    /// of the change's destination if `bySlotsTo`, otherwise those of its source.
    void convertRow(const ToPart& to, const FromPart& from, int row, int length,
                    bool bySlotsTo) const;

    /// Takes apart a row of an interleaved part: slot `feeds[i].from` goes to `planes[i]`.
    void splitRow(std::byte* const* planes, const FromPart& from, int row, int length,
                  bool back) const;

private:
    template <class Loop>
    Loop pick(const Moves::ByChannels<Loop>& loops, int channels) const;
};

/// The walks for sides whose rows run along the same axis, x, and along different ones, x in the
/// destination. Rows of the destination run upwards in memory; with exchanged axes so do those of
/// the source.
void changeRows(const Passage& passage);
void changeSquares(const Passage& passage);

} // namespace zel::convert

#endif
