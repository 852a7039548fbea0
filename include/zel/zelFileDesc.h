#ifndef ZEL_FILE_DESC_H
#define ZEL_FILE_DESC_H

#include <zel/zelError.h>
#include <zel/zelExport.h>

class zelFormat;

/// What a client said about the file it wants: name, image index, format, format arguments and
/// perhaps an open descriptor. zelFile::open and zelFile::create take it.
///
/// It owns copies of its texts, and neither the format nor the descriptor. It is not copied.
/// Constructing one, and setFileDesc, may read the format database and load a plug-in: one thread
/// at a time in the whole process.
class ZEL_API zelFileDesc {
public:
    /// Splits `fullname` as zelFile::parseFileName does. A non-null `format` wins, and a format
    /// name in the text is then not looked up.
    zelFileDesc(const char* fullname, zelFormat* format);

    /// Takes the pieces as they are: `fileName` is not split. A null `formatName` leaves the format
    /// open. An `index` of -1 means none.
    zelFileDesc(const char* fileName, int index, const char* formatName,
                const char* formatSpecific);

    /// The same with the format itself, which may be null.
    zelFileDesc(const char* fileName, int index, zelFormat* format, const char* formatSpecific);

    ~zelFileDesc();
    zelFileDesc(const zelFileDesc&) = delete;
    zelFileDesc& operator=(const zelFileDesc&) = delete;

    /// Stores an open descriptor, which stays the caller's. Any negative one means none. A
    /// descriptor makes up for a missing name, and if no format is known the file's first bytes are
    /// read to find one; the descriptor's position is not kept.
    void setFileDesc(int fd);

    /// zelOKAY, zelBADIMGFMT if the named format is unknown or does not load, zelBADPARAMS if there
    /// is neither a name nor a descriptor, or zelMALLOCFAILED (kind 1) if the texts had no room.
    zelStatus getStatus() const;

    char* getFileName() const;       ///< null if there is none; owned by this object
    int getFileDesc() const;         ///< -1 if there is none
    int getIndex() const;            ///< -1 if there is none
    zelFormat* getFormat() const;    ///< null if not known
    char* getFormatSpecific() const; ///< null if there is none; owned by this object

    /// The name of the format, null if there is no format.
    const char* getFormatName() const;

private:
    void lookupFormat(const char* name);
    ZEL_LOCAL void copyTexts(const char* name, const char* specific);
    ZEL_LOCAL void requireName();

    char* fileName;
    int index;
    char* formatSpecific;
    zelFormat* format;
    int fd;
    zelStatus sts;
};

#endif
