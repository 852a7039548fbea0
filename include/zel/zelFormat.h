#ifndef ZEL_FORMAT_H
#define ZEL_FORMAT_H

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelError.h>
#include <zel/zelExport.h>
#include <zel/zelList.h>
#include <zel/zelOrientation.h>

class zelDatabase;
class zelFile;
class zelFileConfig;
struct zelTagDescription;

/// What a plug-in registers for each format that it serves: it says what the format can do and
/// makes the format's file objects. A plug-in holds one static object of a derived class for each
/// format; constructing it is the whole registration. Format objects live as long as the process.
/// All queries answer 0 for no and nonzero for yes. The searches and the construction of a format
/// object use the process's one table of entries without a lock: one thread at a time calls them.
class ZEL_API zelFormat : private zelListItem {
public:
    /// The searches of zelDatabase, answered with the entry's format object. Null if no entry is
    /// found or the entry yields no format. `openDSOifNecessary` nonzero loads a plug-in that is
    /// not loaded yet; with 0 it counts as absent.
    static zelFormat* findByMagic(int fd, int openDSOifNecessary);
    static zelFormat* findByFormatName(const char* formatName, int openDSOifNecessary);
    static zelFormat* findByFileName(const char* fileName, int noMatchRule, int openDSOifNecessary);
    /// Walks the formats, passing over entries that yield none: `index` starts at 0 and is
    /// advanced. Null at the end.
    static zelFormat* findNext(int& index, int openDSOifNecessary);

    /// The name as the plug-in gave it; null if the database has no entry of that name.
    const char* getName() const;
    /// The entry's texts; null if there is no entry.
    const char* getDefaultSuffix() const;
    const char* getDescription() const;
    /// Whether files can be opened in this mode: 0 to read, 1 to write, 2 for both.
    int accessModeIsSupported(int mode) const;
    /// Whether the plug-in was registered with this version or a later one.
    int haveDSOVersion(int wantMajor, int wantMinor) const;
    /// The format's tags and their count: null and 0 if the plug-in's version is below 2.1 or it
    /// has none. The table belongs to the plug-in.
    zelTagDescription* getTagDescriptions(int& count);

    /// Settles what `fc` leaves open, first from the source and then from the format's preferences,
    /// and asks the format about the whole. `source` may be null. Returns zelUNSUPPORTEDBYFORMAT if
    /// the format cannot store such a file; `fc` then holds what was settled so far.
    zelStatus applyDefaults(zelFile* source, zelFileConfig& fc);
    zelStatus applyDefaults(zelFileConfig* source, zelFileConfig& fc);

    /// Whether the format can store this.
    virtual int typeIsSupported(zelDataType type) = 0;
    virtual int orderIsSupported(zelOrder order) = 0;
    virtual int orientationIsSupported(zelOrientation orientation) = 0;
    virtual int colorModelIsSupported(zelColorModel cm) = 0;
    virtual int compressionIsSupported(zelCompression compression) = 0;
    /// Whether the format can store an image of these extents.
    virtual int sizeIsSupported(int x, int y, int z, int c, zelOrientation orientation) = 0;
    /// Whether the format can work in pages smaller than the image.
    virtual int pagingIsSupported() = 0;
    /// Whether pages of this size fit an image of these extents.
    virtual int pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ,
                                    int pageC, zelOrientation orientation) = 0;
    /// Whether pages can be read or written in any order.
    virtual int randomAccessReadIsSupported() = 0;
    virtual int randomAccessWriteIsSupported() = 0;

    /// The format's choice for what a client leaves open. `nchans` may be 0, for not known yet.
    virtual zelDataType getPreferredType() = 0;
    virtual zelOrder getPreferredOrder() = 0;
    virtual zelOrientation getPreferredOrientation() = 0;
    virtual zelColorModel getPreferredColorModel(int nchans) = 0;
    virtual zelCompression getPreferredCompression() = 0;
    /// Writes the page size wanted for an image of these extents. On entry the page extents hold
    /// what is known so far.
    virtual void getPreferredPageSize(int x, int y, int z, int c, int& pageX, int& pageY,
                                      int& pageZ, int& pageC, zelOrientation orientation) = 0;

protected:
    /// Makes a new object of the format's file class, which the caller owns; null with errno set on
    /// failure. The base returns null.
    virtual zelFile* newfileobj();
    /// The format's static table of tags and its length. The base gives null and 0.
    virtual zelTagDescription* _getTagDescriptions(int& count);

    /// Registers the object with the database entry of this name, in any mix of upper and lower
    /// case; an object registered before under that name is replaced. A name without an entry is
    /// reported at severity 0. The plug-in counts as version 1.3.
    explicit zelFormat(const char* formatName);
    /// The same for a plug-in of version `major`.`minor`: pass ZEL_VERSION_MAJOR and
    /// ZEL_VERSION_MINOR.
    zelFormat(const char* formatName, int major, int minor);

private:
    friend class zelFile;

    char* name;
    zelDatabase* db;
};

/// The base of formats that can only be read: all queries answer 0, there are no preferences, and
/// no file can be created. The plug-in supplies newfileobj().
class ZEL_API zelReadOnlyFormat : public zelFormat {
public:
    explicit zelReadOnlyFormat(const char* formatName);
    zelReadOnlyFormat(const char* formatName, int major, int minor);

    int typeIsSupported(zelDataType type) override;
    int orderIsSupported(zelOrder order) override;
    int orientationIsSupported(zelOrientation orientation) override;
    int colorModelIsSupported(zelColorModel cm) override;
    int compressionIsSupported(zelCompression compression) override;
    int sizeIsSupported(int x, int y, int z, int c, zelOrientation orientation) override;
    int pagingIsSupported() override;
    int pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ, int pageC,
                            zelOrientation orientation) override;
    int randomAccessReadIsSupported() override;
    int randomAccessWriteIsSupported() override;

    zelDataType getPreferredType() override;
    zelOrder getPreferredOrder() override;
    zelOrientation getPreferredOrientation() override;
    zelColorModel getPreferredColorModel(int nchans) override;
    zelCompression getPreferredCompression() override;
    void getPreferredPageSize(int x, int y, int z, int c, int& pageX, int& pageY, int& pageZ,
                              int& pageC, zelOrientation orientation) override;
};

#endif
