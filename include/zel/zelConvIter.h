#ifndef ZEL_CONV_ITER_H
#define ZEL_CONV_ITER_H

#include <zel/zelConverter.h>
#include <zel/zelDataSize.h>
#include <zel/zelExport.h>
#include <zel/zelTile.h>

#include <cstddef>
#include <cstdint>

/// The engine behind the assignment of one `zelConverter` to another: moves the elements of a box
/// from a source area to a destination area, in the destination's type, order and layout. Clips
/// and masks of the areas play no part.
///
/// An object is made on the stack for one assignment and refers to the two areas, which must
/// outlive it and not change during a `convert`. It allocates nothing and belongs to one thread.
class ZEL_API zelConvIter {
public:
    /// Refers to the two areas; they are read at each `convert`.
    zelConvIter(zelConverter& dest, zelConverter& source);

    /// Converts every element of the box `area` in every channel that both sides have; all else
    /// in memory stays. The box must lie inside the destination's area and, unless the source is
    /// a constant pixel, inside the source's; the two blocks must not overlap in memory. Element
    /// types outside the nine, an empty box and areas without a common channel write nothing.
    void convert(const zelTile3D<int>& area);

    /// Element index of the start of the current row in the destination's data.
    int destIndex() const;
    /// Element index of the start of the current row in the source's data.
    int sourceIndex() const;
    /// Moves to the next row, plane or channel; nonzero if there is one.
    int nextRow();

private:
    int reset();
    int nextChan();
    int fastCopy();
    int sameType() const;
    int sameXdim() const;
    int sameChans() const;
    int sameXY() const;
    int sameZ() const;
    void rowCopy();
    void chanCopy();
    void wholeCopy();
    ZEL_LOCAL void joinRows();
    ZEL_LOCAL int changeLayout();
    ZEL_LOCAL static int channelOf(const zelConverter& area, int slot);
    ZEL_LOCAL int sourceSlot(int channel) const;
    ZEL_LOCAL std::ptrdiff_t blockOffset(const zelConverter& side, int start,
                                         bool severalRows) const;
    ZEL_LOCAL void copyBlock(std::int64_t count);

    void BitSwitch();
    void uCharSwitch();
    void charSwitch();
    void uShortSwitch();
    void shortSwitch();
    void uIntSwitch();
    void intSwitch();
    void floatSwitch();
    void doubleSwitch();

    zelConverter& dst;                    ///< destination area
    zelConverter& src;                    ///< source area
    zelTile3D<int> com{0, 0, 0, 0, 0, 0}; ///< the box being converted
    int baseD = 0;    ///< index of the box's first corner at slot 0, in the destination
    int baseS = 0;    ///< the same in the source
    int ci = -1;      ///< current slot of the destination's pixel; -1 before the first
    int zi = 0;       ///< plane counter within the box
    int yi = 0;       ///< row counter within the box
    int ziD = 0;      ///< start of the current plane of the current channel, destination
    int ziS = 0;      ///< the same in the source
    int yiD = 0;      ///< start of the current row, destination
    int yiS = 0;      ///< the same in the source
    int sxD = 0;      ///< step from one element of a row to the next, destination
    int sxS = 0;      ///< the same in the source
    int nx = 0;       ///< elements in a row walk
    int collapse = 0; ///< nonzero: one row walk takes all channels of a row at once
};

#endif
