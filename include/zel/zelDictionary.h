#ifndef ZEL_DICTIONARY_H
#define ZEL_DICTIONARY_H

#include <zel/zelExport.h>
#include <zel/zelHashTable.h>

/// A string that can be an element of a zelDictionary. The object owns its copy of the string.
class ZEL_API zelName : public zelHashElem {
public:
    explicit zelName(const char* id);
    zelName(const zelName&) = delete;
    zelName& operator=(const zelName&) = delete;
    virtual ~zelName();

    /// Stores a copy of `id`, which may be null. The former copy stays allocated, for those who
    /// still hold it. An object that is in a dictionary must not be renamed.
    void setID(const char* id);
    /// The string, valid as long as the object, or null.
    const char* getID() const;

private:
    char* name;
};

/// A zelHashTable of zelName objects (or objects of derived classes), found by string.
class ZEL_API zelDictionary : public zelHashTable {
public:
    /// With `caseSensitive` 0, upper and lower case of ASCII letters are the same.
    zelDictionary(int maxEntries, int caseSensitive);
    ~zelDictionary() override;

    /// Sets the element's hash from its string, which must not be null, and inserts it. 1 if it is
    /// in the table afterwards, 0 if the table was full. The element stays the caller's.
    int insert(zelName* elem);
    /// The element of this string. If there is none: null, or with `insertIfNeeded` nonzero a new
    /// zelName, which belongs to the dictionary's user.
    zelName* find(const char* s, int insertIfNeeded);

private:
    ZEL_LOCAL unsigned int hash(const char* s);
    int match(const void* key, const zelHashElem* elem) override;

    int ignoreCase;
};

/// The process-wide table of names, which heeds case. Never destroyed.
ZEL_API zelDictionary* zelGlobalDict();
/// The one object that stands for this string in the global table, made if it does not exist yet.
ZEL_API zelName* zelGlobalName(const char* s);
/// Makes `nm` the object for its string: returns `nm`, or null if another object holds the string.
/// `nm` must then live as long as the process.
ZEL_API zelName* zelGlobalName(zelName* nm);

#endif
