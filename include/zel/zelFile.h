#ifndef ZEL_FILE_H
#define ZEL_FILE_H

#include <cstdarg>

#include <zel/zelClassList.h>
#include <zel/zelColor.h>
#include <zel/zelConfig.h>
#include <zel/zelCoord.h>
#include <zel/zelDataSize.h>
#include <zel/zelError.h>
#include <zel/zelExport.h>
#include <zel/zelOrientation.h>

class zelColormap;
class zelFileConfig;
class zelFileDesc;
class zelFormat;

/// One argument of a format, as zelFile::parseArguments finds it.
struct zelParameterDesc {
    char* name;
    char* value; ///< null if the argument has no value
};

/// One row of a table of names. The last row has a null name; its id answers for unknown names.
struct zelNameDesc {
    const char* name;
    int id;
};

/// An image file of any format, and the base class of every plug-in's file class.
///
/// A client calls open or create, asks for attributes, moves tiles, and ends with close, which is
/// the only way to destroy the object. A file with several images shows one at a time, which
/// setCurrentImg selects. Operations that a format does not offer answer zelUNSUPPORTEDBYFORMAT and
/// change nothing.
///
/// A file belongs to one thread at a time. open and create also use what the process has only once
/// (the table of formats, the loader, the error handler) without a lock: one thread at a time in
/// the whole process calls them.
///
/// A plug-in's class implements openFile and closeFile, and what its format can do beside them. It
/// has a static zelClassList of its own and overrides the four operations of class identity.
class ZEL_API zelFile {
public:
    /// The root of the chain of class identities.
    static zelClassList classList;

    /// Opens `fullname`, which may hold an image index, a format name and format arguments beside
    /// the file's name (see parseFileName). `mode` is 0 to read and 2 to read and write.
    ///
    /// Null on failure, with the reason in `status` (which may be null):
    /// - zelBADPARAMS: neither name nor descriptor, or another mode;
    /// - zelBADIMGFMT: the named format is unknown or its plug-in does not load;
    /// - zelOPENFAILED: no regular file (kind 0), or the system refused it (kind 1 and errno);
    /// - zelBADMAGIC: no format recognises the file;
    /// - zelUNSUPPORTEDBYFORMAT: the format does not allow the mode;
    /// - zelFILEINDEXOOB: there is no image of that index;
    /// - zelMALLOCFAILED (kind 1): no memory for the file object;
    /// - whatever the plug-in says.
    ///
    /// A database that cannot be read and a plug-in that does not load are also reported at
    /// severity 0, by which the handler that is chosen by default ends the process.
    static zelFile* open(const char* fullname, int mode, zelStatus* status = nullptr);

    /// The same with an open descriptor (any negative one means none) and a format (null means that
    /// it is to be found). On success the file owns the descriptor and close closes it; on failure
    /// it stays open and the caller's.
    static zelFile* open(int fd, const char* fullname, int mode, zelFormat* format,
                         zelStatus* status = nullptr);

    /// The same from a record, whose descriptor and format may be changed by the call. A descriptor
    /// that the call itself opened is closed again on failure. On success the record tells the
    /// descriptor that the file owns: a record serves one open only.
    static zelFile* open(zelFileDesc& fileDesc, int mode, zelStatus* status = nullptr);

    /// Makes a new file, open for reading and writing. What `cfg` (which may be null) leaves open
    /// is taken from `source` (which may be null) as far as the format can take it, and otherwise
    /// from the format's preferences. Scale and statistics values of `source` are copied. A null
    /// `format` is settled by the format name in `fullname`, the name's suffix, or "TIFF".
    ///
    /// Null on failure, with the reason in `status` (which may be null): as for open, and
    /// - zelSYSTEM_CONFIGURATION_ERROR: no format can be found, not even the default one;
    /// - zelUNSUPPORTEDBYFORMAT: the format cannot write, or cannot take the attributes.
    static zelFile* create(const char* fullname, zelFile* source, const zelFileConfig* cfg,
                           zelFormat* format, zelStatus* status = nullptr);

    /// The same with an open descriptor for the plug-in to write to; any negative one means none.
    /// If no format is given or named, the first bytes behind the descriptor are tried before the
    /// suffix. On success the file owns the descriptor; on failure it stays open and the caller's.
    static zelFile* create(int fd, const char* fullname, zelFile* source, const zelFileConfig* cfg,
                           zelFormat* format, zelStatus* status = nullptr);

    /// The same from a record.
    static zelFile* create(zelFileDesc& fileDesc, zelFile* source, const zelFileConfig* cfg,
                           zelStatus* status = nullptr);

    /// Flushes (unless bit 0 of `flags` is set), closes and destroys the file, whatever fails on
    /// the way. Returns the status of the flush if that failed, else that of the closing.
    zelStatus close(int flags);

    /// Splits a full name into file name, format name (behind '#'), image index (behind ':') and
    /// format arguments (behind '%'). A doubled delimiter stands for the character itself, and a
    /// colon without an index behind it is an ordinary character.
    ///
    /// Returns a block with the file name, to be freed with free; null if `fullname` is null or
    /// memory ran out. Format name and arguments point into that block and are null if missing; the
    /// index is -1 if missing, and the largest int if it does not fit one. Each of the three
    /// out-pointers may be null.
    static char* parseFileName(const char* fullname, char** formatName, int* index,
                               char** formatArgs);

    /// Reads the box at x, y, z of extent nx, ny, nz into `data`, which holds exactly that box
    /// at an address that suits its element type. `config` tells the layout of `data`, the channels
    /// that are wanted and the orientation in which the box is given; null means the file's own
    /// layout and all channels. Elements whose channel list entry is below 0 stay as they were.
    ///
    /// An empty box reads nothing and is zelOKAY. zelBADPARAMS, before anything is read: null data,
    /// a box not wholly inside the image, a channel that the file lacks, an element type, an
    /// orientation or (with several channels) an order that does not exist, a box or a page of 2^31
    /// elements or more, a page of no extent. zelMALLOCFAILED (kind 1): no memory for a page, which
    /// is also reported. Any other failure is the plug-in's; what was read before it stays in
    /// `data`.
    zelStatus getTile(int x, int y, int z, int nx, int ny, int nz, void* data,
                      const zelConfig* config);

    /// Writes the box from `data`; otherwise as getTile. What the box or its channels leave out of
    /// a page is read from the file first, so it keeps its value. Pages written before a failure
    /// stay written.
    zelStatus setTile(int x, int y, int z, int nx, int ny, int nz, const void* data,
                      const zelConfig* config);

    char* getFileName() const; ///< null if only a descriptor was given; owned by the file
    int getFileDesc() const;   ///< -1 if there is none
    int getFileMode() const;   ///< 0 read only, 2 read and write
    zelFormat* getFormat() const;
    zelColorModel getColorModel() const;
    int* getChannelPermutation() const; ///< null unless set; owned by the file
    zelDataType getDataType() const;
    zelOrder getOrder() const;
    zelOrientation getOrientation() const;
    zelCompression getCompression() const;
    int getZsize() const;
    int getCsize() const;

    /// The image's size with x horizontal and y vertical, as zelFileConfig holds it.
    void getDimensions(zelSize& s) const;
    /// The image's size as counted in orientation `o`.
    void getSize(zelSize& s, zelOrientation o) const;
    /// The size of a page, in the same two forms.
    void getPageDimensions(zelSize& s) const;
    void getPageSize(zelSize& s, zelOrientation o) const;

    /// Attributes that only the format knows, by a number and with arguments that the format
    /// defines. getTag and getItem are one operation under two names, as are setTag and setItem.
    /// A list handed to the V forms stays the caller's to end. What the format answers for a number
    /// that it does not know is its own choice.
    zelStatus getTag(int tag, ...);
    zelStatus getItem(int tag, ...);
    zelStatus setTag(int tag, ...);
    zelStatus setItem(int tag, ...);
    zelStatus getTagV(int tag, va_list args);
    zelStatus setTagV(int tag, va_list args);

    /// Nonzero if attributes changed since the last call, as after setCurrentImg.
    int haveAttributesChanged();

    /// Callbacks that a plug-in may run around its own file I/O; null for none. The argument is
    /// passed on and must outlive its use.
    void setBeginFileIO_CB(zelStatus (*cb)(void*), void* arg);
    void setEndFileIO_CB(zelStatus (*cb)(void*), void* arg);

    /// The image's ICC profile. A profile that getICCProfile gave is freed with freeICCProfile. All
    /// five answer zelUNSUPPORTEDBYFORMAT for a plug-in that registered with a version below 2.1.
    zelStatus getICCProfile(int& size, void*& profile);
    zelStatus freeICCProfile(void* profile);
    zelStatus setICCProfile(int size, const void* profile);
    /// Direct I/O on the file, and the alignment in bytes that it asks of memory.
    zelStatus enableDirectIO(int enab);
    zelStatus getDirectIOMemAlignment(unsigned& align);

    /// The name of this file's class (0) or of a base class that many steps up; null above zelFile.
    virtual char* getClassName(int parentIdx) const;
    /// The identity of this file's class.
    virtual const zelClassList* getClassId() const;
    /// Nonzero if this file's class is `className` (1) or derives from it (steps up, plus 1).
    virtual int derivesFrom(const zelClassList* className) const;

protected:
    /// A few words on the class.
    virtual char* getDefaultDescription() const;

public:
    /// Writes what the plug-in still holds back.
    virtual zelStatus flush();

    /// Moves one page between the file and `data`. x, y, z, c is the page's origin, a multiple of
    /// the page size in each direction; nx, ny, nz, nc its extent, cut at the image's edge. `data`
    /// always has the layout of a full page in the file's type and order: at an edge the elements
    /// still lie where they lie in a full page. Nobody looks at accessmode before: a file opened to
    /// be read answers setPage itself, with zelREADONLY.
    virtual zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                              int nc);
    virtual zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                              int nc);

    /// Pages in compressed form; the arguments are a matter between a plug-in and its clients.
    virtual zelStatus getCompressedPage(...);
    virtual zelStatus decompressPage(...);
    virtual zelStatus compressPage(...);
    virtual zelStatus setCompressedPage(...);

    /// The images in the file, and the one that is shown, counted from 0.
    virtual int getNumImgs();
    virtual int getCurrentImg();
    /// Shows image `i`. zelFILEINDEXOOB if there is none of that number.
    virtual zelStatus setCurrentImg(int i);
    /// Adds an image to the file, settled from `config` and `source` as in create.
    virtual zelStatus appendImg(zelFile* source, zelFileConfig* config);

    /// The colour map, which stays the file's.
    virtual zelStatus getColormap(const zelColormap*& colormap);
    /// The range of values in the image, and the range to show it by.
    virtual zelStatus getStatMinMax(double& min, double& max);
    virtual zelStatus getScaleMinMax(double& min, double& max);
    /// The map is read within the call and stays the caller's.
    virtual zelStatus setColormap(const zelColormap* colormap);
    virtual zelStatus setStatMinMax(double min, double max);
    virtual zelStatus setScaleMinMax(double min, double max);

    /// What getTag and setTag come to.
    virtual zelStatus getItem(int tag, va_list args);
    virtual zelStatus setItem(int tag, va_list args);

protected:
    /// Frees what the base fields own. Runs without closeFile if open or create fails.
    virtual ~zelFile();

    /// Starts on an existing file. Finds filename, fd, accessmode, format and formatArgs set, and
    /// fd at any position; fills size, dtype, order, pageSize, cm, orientation and compression. On
    /// failure it leaves fd open. One that can work only from a name answers
    /// zelUNSUPPORTEDBYLIBRARY while fd is valid, and is called again with fd -1 if the library may
    /// close the descriptor.
    virtual zelStatus openFile() = 0;
    /// Makes the file, with all attributes set, and fd -1 unless the client gave a descriptor.
    virtual zelStatus createFile();
    /// Ends the work on the file and closes fd, or whatever the plug-in opened.
    virtual zelStatus closeFile() = 0;

    /// Behind the public calls of the same names.
    virtual zelStatus _getICCProfile(int& size, void*& profile);
    virtual zelStatus _freeICCProfile(void* profile);
    virtual zelStatus _setICCProfile(int size, const void* profile);
    virtual zelStatus _enableDirectIO(int enab);
    virtual zelStatus _getDirectIOMemAlignment(unsigned& align);

    zelFile();
    zelFile(const zelFile&) = delete;
    zelFile& operator=(const zelFile&) = delete;

    /// To be called when the attributes change while the file is open.
    void markAttributesChanged();

    /// Splits formatArgs into at most `maxParams` rows and returns how many there are. The rows
    /// point into formatArgs, which the call cuts up in place: they live as long as the object, and
    /// the split can be done only once.
    int parseArguments(zelParameterDesc* params, int maxParams);

    /// The id of the first row whose name begins with `name`, ASCII case ignored; the id of the
    /// last row if there is none.
    static int lookupName(const char* name, const zelNameDesc* names);

    /// Run the client's callbacks; zelOKAY if there is none.
    zelStatus beginFileIO();
    zelStatus endFileIO();

    char* filename; ///< without index, format and arguments; null if only a descriptor was given
    int fd;         ///< -1 if there is none
    int accessmode; ///< 0 read only, 2 read and write
    zelFormat* format;
    char* formatArgs; ///< null if there are none
    zelSize size;     ///< along the axes of the stored data
    zelDataType dtype;
    zelOrder order;
    zelSize pageSize; ///< along the axes of the stored data; every extent is at least 1
    zelColorModel cm;
    zelOrientation orientation;
    zelCompression compression;

private:
    /// The steps of open and create. `file` may be an unfinished object when they fail.
    ZEL_LOCAL static zelStatus makeObject(zelFile*& file, zelFormat& fmt, const zelFileDesc& desc,
                                          int mode);
    ZEL_LOCAL static zelStatus openInto(zelFile*& file, zelFileDesc& desc, int mode, int& openedFd);
    ZEL_LOCAL static zelStatus createInto(zelFile*& file, const zelFileDesc& desc, zelFile* source,
                                          const zelFileConfig* cfg);

    int* channelPermutation;
    int attrChanged;
    zelStatus (*beginFileIO_CB)(void*);
    void* beginFileIO_arg;
    zelStatus (*endFileIO_CB)(void*);
    void* endFileIO_arg;
};

/// The direction of a transfer; getTile and setTile pass it.
enum Op : int;

/// The work behind zelFile::getTile and zelFile::setTile.
ZEL_API zelStatus zelFileGetOrSetTile(zelFile* it, Op op, int x, int y, int z, int nx, int ny,
                                      int nz, void* data, const zelConfig* config);

#endif
