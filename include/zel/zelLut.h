#ifndef ZEL_LUT_H
#define ZEL_LUT_H

#include <zel/zelDataSize.h>
#include <zel/zelError.h>
#include <zel/zelExport.h>

/// A table from an interval of real numbers, the domain, to stored elements, for one or more
/// channels. The domain is divided evenly: its first value belongs to the first entry, its last to
/// the last, and a value between two entries to the nearer one, half way to the higher. A domain
/// whose last value is below its first runs backwards.
///
/// All entries of channel 0 come first, then those of channel 1, and so on, without gaps; entries
/// of type zelBit are packed in one run through all channels. The storage is the table's own or the
/// caller's, who then keeps it alive. If storage cannot be allocated, the table has no entries.
/// Threads may read one table together as long as none writes it.
class ZEL_API zelLut {
public:
    /// A table of `tabChannels` channels of `length` entries each. With `length` 0 or below, there
    /// is one entry for each whole number from `min` to `max`, and none if that makes no number of
    /// entries. With `table` null the table has storage of its own, otherwise it uses `table`.
    /// A type of 0 becomes zelDouble at the first setVal, and needs the room for it.
    zelLut(void* table, int tabChannels, zelDataType tabType, double min, double max, int length);
    zelLut(int tabChannels, zelDataType tabType, double min, double max, int length);
    /// A table without channels and entries.
    zelLut();
    /// An independent copy with storage of its own.
    zelLut(const zelLut& from);
    virtual ~zelLut();

    int getNumChans() const;
    zelDataType getDataType() const;
    int getLength() const;
    void* getData() const;
    void getDomain(double& min, double& max) const;
    double getDomainMin() const;
    double getDomainMax() const;
    /// The distance in the domain from an entry to the next.
    double getDomainStep() const;

    /// Gives the same entries another domain. Always zelOKAY.
    zelStatus setDomain(double min, double max);

    /// The entry that `domainIdx` belongs to, as a number; outside the domain the first or the last
    /// entry. An entry number that 64 bits do not hold, or NaN, counts as the first. 0.0 for a
    /// channel out of range and for a table without entries.
    double getVal(double domainIdx, int chan) const;

    /// Stores a number. An integer type gets the number rounded to the nearest, half way away from
    /// zero, and of that the low bits; a bit is set if the number is not 0. zelBADPARAMS, with
    /// nothing changed, if entry or channel is out of range.
    zelStatus setVal(double val, double domainIdx, int chan);

    /// The smallest and the largest entry of all channels. Without entries, `min` is the type's
    /// largest and `max` its smallest value.
    void getRange(double& min, double& max) const;

    /// The first entry of a channel, null if there is none. For type zelBit, the byte in which it
    /// lies.
    void* getChan(int chan) const;

    /// Where the entry for the domain value 0 lies or would lie, null for a channel out of range.
    /// If entries are 1 apart, it can be indexed by domain values; it may lie outside the table.
    void* getOrigin(int chan) const;

    /// Frees storage of the table's own, and uses the caller's, of the same shape, from now on.
    void setData(void* dataPnt);

    /// Makes this table an independent copy with storage of its own.
    void operator=(const zelLut& from);

    /// 1 if channels, length or the number in any entry differ, else 0. Types and domains do not
    /// count.
    int isDiff(const zelLut& from) const;

protected:
    void init(void* table, int tabChannels, zelDataType tabType, double min, double max,
              int length);

private:
    void setType(zelDataType tabType);
    void setNumChans(int chans);
    double clampToInt(double val) const;

    void* data;
    void* allocFlg;
    zelDataType type;
    int numChannels;
    unsigned tabWidth;
    int tabLength;
    double domainMin;
    double domainMax;
    double scale;
    double bias;
};

#endif
