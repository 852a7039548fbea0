#ifndef ZEL_FORMAT_DB_H
#define ZEL_FORMAT_DB_H

#include <zel/zelDatabase.h>
#include <zel/zelDictionary.h>
#include <zel/zelExport.h>

class zelDbMatch;
class zelFormat;

/// The loader's side of a database entry: the match rule, the plug-in's version, and the table of
/// all entries. Clients use zelDatabase. The database is read once in a process; what the reader
/// calls during that (parse, error, getInput, processInclude) is of no use afterwards.
class ZEL_API zelFormatDB : public zelDatabase, public zelName {
public:
    /// Makes an entry and puts it in the table, which must exist. Entries are never destroyed.
    explicit zelFormatDB(const char* name);
    ~zelFormatDB() override;

    /// The table of all entries, read at the first call. Null only from the call that could not
    /// open the file, under an error handler that returns; later calls give the empty table.
    static zelDictionary* getDictionary();
    /// Reads the opened database into the table: 0, or 1 after a syntax error and 2 after a stack
    /// overflow, both reported through error().
    static int parse();
    /// Reports `msg` with the current line and a caret under the current token, at severity 0.
    static void error(const char* msg);
    /// Writes the next byte of the database to `buf` and returns 1; returns 0 at its end.
    static int getInput(char* buf, int maxSize);
    /// Carries out an include directive. Changes the text that it is given.
    static void processInclude(char* line);
    /// The most bytes that a match rule in the table needs.
    static int getMaxNeeded();

    /// The setters take over the pointer without a copy; what it points to is never freed.
    void setMatch(zelDbMatch* rule);
    void setDescription(char* text);
    /// Notes that the entry declares a plug-in; the name itself is not used.
    void setDso(char* text);
    void setDll(char* text);
    void setSubSystem(char* text);
    void setSuffixes(zelList<zelSuffixItem>* list);
    /// Takes the token code of an access word; any other code changes nothing.
    void setAccess(int mode);

    zelList<zelSuffixItem>* getSuffixes() const;
    int hasMatchRule() const;
    /// Nonzero if the entry's rule holds for `data`, the first `len` bytes of a file. A rule that
    /// needs more bytes does not hold. Only for entries that have a rule.
    int eval(void* data, int len) const;

    /// Stores the format object of a plug-in, with version 1.3 or the version given.
    void setFormat(zelFormat* newFormat);
    void setFormat(zelFormat* newFormat, int newMajor, int newMinor);
    /// Nonzero if the plug-in's version is the one wanted or a later one.
    int haveDSOVersion(int wantMajor, int wantMinor) const;

private:
    ZEL_LOCAL static bool load(const char* path);
    ZEL_LOCAL void validate(const char* path);

    zelDbMatch* match;
    ZEL_LOCAL static int maxNeed;
    int major;
    int minor;
};

#endif
