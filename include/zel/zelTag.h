#ifndef ZEL_TAG_H
#define ZEL_TAG_H

#include <zel/zelError.h>
#include <zel/zelExport.h>

class zelFile;

/// The type codes of tags, as they stand in bits 4 to 7 of zelTagDescription::flags. The codes that
/// end in 2 are handled like their namesakes; a format may give them a meaning of its own.
enum zelTagType : int {
    zelTagShort = 0x00,     ///< signed 16-bit integer
    zelTagInt = 0x10,       ///< signed 32-bit integer
    zelTagFloat = 0x20,     ///< single float
    zelTagString = 0x30,    ///< char*
    zelTagBool = 0x40,      ///< int, as text "True" or "False"
    zelTagShortEnum = 0x50, ///< signed 16-bit integer, as text a name from the table in spec
    zelTagIntEnum = 0x60,   ///< signed 32-bit integer, likewise
    zelTagInt2 = 0x70,
    zelTagFloat2 = 0x80,
    zelTagDouble = 0x90, ///< double float
    zelTagDouble2 = 0xA0
};

/// One name of an enumerated tag's values. A table of them ends with a null name.
struct zelEnumSpec {
    const char* name;
    int value;
};

/// A format's description of one of its tags. Formats hold static tables of them.
struct zelTagDescription {
    int tag;                  ///< the number for zelFile::getTag and setTag
    unsigned flags;           ///< a type code, plus the number of elements in bits 0 to 3
    const char* description;  ///< text for a human reader
    const char* name;         ///< the tag's name
    const char* defaultValue; ///< the default as text, for a human reader
    void* spec;               ///< the zelEnumSpec table of the two enumerated types
};

/// Holds the value of one tag, moves it to and from a file, and turns it into text and back.
///
/// The description is referred to, not copied, and must outlive the tag. A tag is bound once, by
/// its constructor or by init, and is not copied. One thread at a time.
class ZEL_API zelTag {
public:
    /// A tag without a description, of no use before init.
    zelTag();
    /// As init.
    zelTag(zelTagDescription* desc);
    ~zelTag();
    zelTag(const zelTag&) = delete;
    zelTag& operator=(const zelTag&) = delete;

    /// Binds a fresh tag to a description. All numbers are 0 and all strings null. If memory runs
    /// out there is no value, and the tag is of no use.
    void init(zelTagDescription* Desc);

    /// The elements, packed: short, int, float, double or char* by type. Owned by the tag; null if
    /// there are none.
    void* getValue() const;
    /// The type code; 0 without a description.
    int getType() const;
    /// The number of elements, 0 to 15; 0 without a description.
    int getCount() const;

    /// Fetches the value from the file, and answers what zelFile::getTag does. Strings that come in
    /// stay the format's. A count of 0 fetches nothing and is zelOKAY. zelBADPARAMS: no
    /// description, a count above 5, an unknown type, or no memory for the value.
    zelStatus read(zelFile* file);

    /// Hands the value to the file, and answers what zelFile::setTag does. With a count of 0 the
    /// tag's number alone is handed over. zelBADPARAMS: as for read.
    zelStatus write(zelFile* file) const;

    /// Writes the value as text, elements joined by ", ", into `str`, which must have room for it.
    /// Null strings are empty. zelBADPARAMS: an element has no name in the table; `str` then holds
    /// what comes before it.
    zelStatus encode(char* str) const;

    /// Takes the value from text. Elements are separated by blanks, tabs or a comma each; strings
    /// may stand in quotes, and a single string takes all of the text. Names and "True" and "False"
    /// may be abbreviated and in any case. zelBADPARAMS: the text has too few values; elements
    /// without one keep theirs. Too few values but some, or an unknown name, draw a warning.
    /// zelMALLOCFAILED (kind 1): no memory for a string; the strings before it are kept.
    zelStatus decode(const char* str);

protected:
    zelTagDescription* desc;
    void* value;

private:
    void freeStrings();

    int strAllocated;
};

#endif
