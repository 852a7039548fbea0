#ifndef ZEL_CLASS_LIST_H
#define ZEL_CLASS_LIST_H

#include <zel/zelExport.h>

/// A link in the chain of class identities that leads from a file class to zelFile.
///
/// Every file class holds one static link, whose parent is the link of its direct base class.
/// Identity is the address of the link, never its name. Links are constant once built and may be
/// read from any thread.
class ZEL_API zelClassList {
public:
    /// `name` is a static text that the link does not own; `parentList` is null at the root.
    /// Constant-initialised when both arguments are constants.
    constexpr zelClassList(const char* name, const zelClassList* parentList)
        : className(const_cast<char*>(name)), parent(parentList) {}

    /// The name of the link `parentIdx` steps towards the root, or null if the chain ends before
    /// it. Zero or a negative count gives this link's own name.
    char* find(int parentIdx) const;

    /// How far `classID` stands up the chain, counting this link as 1; 0 if it is not on it.
    int find(const zelClassList* classID) const;

private:
    char* className;
    const zelClassList* parent;
};

#endif
