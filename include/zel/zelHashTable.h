#ifndef ZEL_HASH_TABLE_H
#define ZEL_HASH_TABLE_H

#include <zel/zelExport.h>

/// What a zelHashTable holds.
class ZEL_API zelHashElem {
public:
    /// The hash of the element's key, set before the element is inserted and not changed while it
    /// is in a table.
    unsigned int hashIndex;
};

/// The share of used slots at which a new table grows.
inline constexpr float zelDefaultHashFullFraction = 0.5F;

/// A table of pointers to elements, found by hash and key. What a key is, is the derived class's
/// matter. The table owns no element; each must outlive its place in the table. It holds at most
/// 131,040 elements. Even searches write the statistics, so that a table belongs to one thread at a
/// time.
class ZEL_API zelHashTable {
public:
    /// Makes an empty table that takes about `maxEntries` elements before it grows.
    explicit zelHashTable(int maxEntries);
    zelHashTable(const zelHashTable&) = delete;
    zelHashTable& operator=(const zelHashTable&) = delete;
    /// Leaves the elements alone.
    virtual ~zelHashTable();

    /// Empties the table. The elements, the number of slots and the statistics stay.
    void clear();
    /// 1 if the element is in the table afterwards, 0 if the table was full. Keys are not compared:
    /// two elements with equal keys are both kept.
    int insert(zelHashElem* elem);
    /// 1 if the element was in the table and is gone, 0 if it was not there. Other elements can
    /// change slots.
    int remove(zelHashElem* elem);
    /// The element with this hash and key, or null.
    zelHashElem* find(unsigned int index, const void* key);
    /// Walks the table in slot order: `index` starts at 0 and is advanced. Null at the end.
    zelHashElem* next(int& index) const;
    int getNumEntries() const;
    float getFullFraction() const;
    /// The share of used slots at which insert() makes the table grow, from now on. At 1 or above
    /// the table never grows.
    void setFullFraction(const float fraction);
    /// Sets the statistics to 0.
    void clearStats();

    /// Searches made.
    int lookCount;
    /// Slots looked at by all searches.
    int totalLook;
    /// The most slots that one search looked at.
    int maxLook;

protected:
    /// Nonzero if `key` is the key of `elem`. Asked only for elements of equal hash.
    virtual int match(const void* key, const zelHashElem* elem) = 0;

private:
    ZEL_LOCAL unsigned int advance(int idx);
    ZEL_LOCAL int normalize(unsigned int hash);
    ZEL_LOCAL int locate(zelHashElem* elem);
    ZEL_LOCAL int pickSize(int maxEntries);
    ZEL_LOCAL void closeGap(int gap);
    ZEL_LOCAL void growIfFull();
    ZEL_LOCAL void grow();
    ZEL_LOCAL void upStats(int looks);

    zelHashElem** table;
    int size;
    int count;
    float fullFraction;
};

#endif
