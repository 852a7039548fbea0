#ifndef ZEL_DATABASE_H
#define ZEL_DATABASE_H

#include <zel/zelExport.h>
#include <zel/zelList.h>

class zelFormat;
class zelFormatDB;

/// An entry of the format database: what the text file says about one format. Entries are made when
/// the database is read, at the first search, and live as long as the process; so do the texts that
/// they hand out. Searches return null if the database cannot be opened. Not safe for use by
/// several threads at a time.
class ZEL_API zelDatabase {
public:
    zelDatabase(const zelDatabase&) = delete;
    zelDatabase& operator=(const zelDatabase&) = delete;

    /// Walks all entries: `index` starts at 0 and is advanced. Null at the end. The order is that
    /// of the table, not that of the file.
    static zelDatabase* findNext(int& index);
    /// The entry of this name, in any mix of upper and lower case, or null.
    static zelDatabase* findByFormatName(const char* formatName);
    /// The first entry with a suffix that `fileName` ends in and is longer than; case counts. With
    /// `noMatchRule` nonzero, entries that have a match rule are passed over. Null if there is
    /// none.
    static zelDatabase* findByFileName(const char* fileName, int noMatchRule);
    /// The first entry whose match rule holds for the file's first bytes, or null. Leaves the
    /// position of `fd` behind the bytes that were read.
    static zelDatabase* findByMagic(int fd);

    const char* getName() const;
    const char* getDescription() const;
    /// The plug-in's file name as the database gives it.
    const char* getDSOName() const;
    /// The product that holds the plug-in.
    const char* getInstSubSystem() const;
    /// The first suffix of the database, or null if the entry has none.
    const char* getDefaultSuffix() const;
    /// Nonzero if files can be opened in this mode: 0 to read, 1 to write, 2 for both.
    int accessModeIsSupported(int mode) const;
    /// The format object that the plug-in registered, or null. With `openDSOifNecessary` nonzero a
    /// plug-in that is not loaded yet is loaded; a failure is reported at severity 0, gives null,
    /// and is tried again by the next call.
    zelFormat* getFormat(int openDSOifNecessary);

private:
    friend class zelFormatDB;

    ZEL_LOCAL explicit zelDatabase(const char* name);

    char* name;
    char* description;
    char* dsoname;
    char* subsystem;
    zelList<zelSuffixItem>* suffixes;
    int access;
    zelFormat* format;
};

#endif
