#ifndef ZEL_CONFIG_H
#define ZEL_CONFIG_H

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelExport.h>
#include <zel/zelOrientation.h>

/// How the pixel data that a caller hands over is laid out, and which channels of a file it holds.
///
/// A position is an index into the caller's pixel, 0 to nchans - 1. Without a list, position i
/// holds the file's channel choff + i. With a list it holds the channel that the list names. When
/// tiles are read and written, the list is read from its start at index i, whatever choff is, and
/// an entry below 0 leaves the caller's elements at that position as they were.
///
/// The list belongs to the caller, who keeps it alive as long as the config is in use.
class ZEL_API zelConfig {
public:
    zelDataType dtype;          ///< element type
    zelOrder order;             ///< channel layout
    zelOrientation orientation; ///< of the tile's coordinates and data; 0: the file's own
    int nchans;                 ///< channels of the data; 0: as many as the file has
    int choff;                  ///< first channel, when there is no list
    int* channels; ///< list of at least nchans channels (mapChan: choff + nchans), or null

    /// All fields 0.
    zelConfig();
    zelConfig(zelDataType type, zelOrder ord, int nchan, int* chanList, int coff,
              zelOrientation ori);

    /// The channel at position i: entry choff + i of the list, else choff + i. -1 if i is not a
    /// position.
    int mapChan(int i) const;

    /// Maps nc positions: out[i] = mapChan(in[i]). The two arrays may be one.
    void compose(int nc, int* in, int* out) const;

    /// Fills nc entries with the reverse map: chanList[c] is the highest position that holds
    /// channel c, -1 if none does.
    void invert(int nc, int* chanList) const;

    /// 1 if no two positions hold the same channel, else 0. Equal negative entries count as equal.
    int isInvertable() const;

    /// The same as mapChan.
    int operator[](int i) const;
};

#endif
