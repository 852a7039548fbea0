#include <zel/zelFormatDB.h>

#include "platform/databaseDirectory.h"
#include "registry/entryMarker.h"
#include "registry/lasting.h"
#include "registry/zelFormatLex.h"

#include <zel/zelDbMatch.h>
#include <zel/zelError.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

using namespace zel::registry;

namespace {

constexpr int byNameMajor = 1;
constexpr int byNameMinor = 3;
constexpr int databaseNumber = 0;
constexpr int maxFiles = 8;
constexpr int lineSize = 256;
constexpr int statusTextSize = 1024;

zelDictionary* fmtDict = nullptr;

// Where the reading of the database stands.
struct Reader {
    // The main file, and one more for each level of include that is open.
    FILE* dbFile[maxFiles] = {};
    int incLevel = 0;
    // The current piece of a line, with its newline if it has one.
    char line[lineSize] = "";
    int lineLen = 0;
    int lineIndex = 0;
    // Counts the lines of all files together.
    int lineNo = 1;
    bool atEnd = false;
};

constinit Reader reader;

// Null, with errno set, if the file cannot be opened, or can be opened and not be read, as a
// folder.
FILE* openText(const char* path) {
    FILE* file = std::fopen(path, "r");
    if (file == nullptr) {
        return nullptr;
    }
    const int first = std::getc(file);
    if (std::ferror(file)) {
        const int reason = errno;
        std::fclose(file);
        errno = reason;
        return nullptr;
    }
    std::ungetc(first, file);
    return file;
}

// There is no file once the database has been read.
bool readLine(FILE* file) {
    return file != nullptr && std::fgets(reader.line, lineSize, file) != nullptr;
}

// Puts the next piece of a line into the reader. False at the end of all input.
bool readPiece() {
    if (!reader.atEnd && reader.lineLen > 0 && reader.line[reader.lineLen - 1] == '\n') {
        ++reader.lineNo;
    }
    while (!readLine(reader.dbFile[reader.incLevel])) {
        if (reader.incLevel == 0) {
            reader.atEnd = true;
            return false;
        }
        std::fclose(reader.dbFile[reader.incLevel--]);
    }
    reader.lineLen = static_cast<int>(std::strlen(reader.line));
    reader.lineIndex = 0;
    return true;
}

const char* openFailure(char (&text)[statusTextSize], int systemError) {
    return zelStatusToString(zelStatusEncode(zelDBOPENFAILED, 1, systemError), text,
                             statusTextSize);
}

zelFormatDB* entryOf(zelHashElem* elem) {
    return static_cast<zelFormatDB*>(static_cast<zelName*>(elem));
}

// All entries in table order. Removing one can move others, so that who removes as he goes walks
// over such a list and not over the table.
std::vector<zelFormatDB*> listEntries() {
    std::vector<zelFormatDB*> entries;
    int index = 0;
    while (zelHashElem* elem = fmtDict->next(index)) {
        entries.push_back(entryOf(elem));
    }
    return entries;
}

std::string databasePath() {
    if (const char* chosen = std::getenv("ZEL_DATABASE")) {
        return chosen;
    }
    return zel::platform::databaseDirectory() + "/zel_database" + std::to_string(databaseNumber);
}

} // namespace

int zelFormatDB::maxNeed = 0;

zelFormatDB::zelFormatDB(const char* entryName)
    : zelDatabase(entryName), zelName(entryName), match(nullptr), major(0), minor(0) {
    fmtDict->insert(this);
}

zelFormatDB::~zelFormatDB() = default;

zelDictionary* zelFormatDB::getDictionary() {
    if (fmtDict == nullptr) {
        // The table is there before anything is read: a search by an error handler finds it in its
        // present state and does not start a second reading.
        fmtDict = new zelDictionary(0, 0);
        const std::string path = databasePath();
        if (!load(path.c_str())) {
            return nullptr;
        }
    }
    return fmtDict;
}

bool zelFormatDB::load(const char* path) {
    reader.dbFile[0] = openText(path);
    if (reader.dbFile[0] == nullptr) {
        char reason[statusTextSize];
        zelError(zelSevError, "Couldn't open file format database %s:\n\t%s", path,
                 openFailure(reason, errno));
        return false;
    }
    if (parse() == 0) {
        for (zelFormatDB* entry : listEntries()) {
            entry->validate(path);
        }
    }
    std::fclose(reader.dbFile[0]);
    reader.dbFile[0] = nullptr;
    return true;
}

// Fills in what the entry lacks; an entry without a plug-in leaves the table.
void zelFormatDB::validate(const char* path) {
    int errs = 0;
    if (description == nullptr) {
        zelError(zelSevWarning, "%s missing description for %s", path, getName());
        description = copyLasting(getName());
    }
    if (dsoname == nullptr) {
        zelError(zelSevWarning, "%s missing required DSO name for %s", path, getName());
        ++errs;
    }
    if (subsystem == nullptr) {
        zelError(zelSevWarning, "%s missing inst sub-system name for %s", path, getName());
        subsystem = copyLasting("unknown");
    }
    if (errs > 0) {
        zelError(zelSevWarning, "%s format removed from ZEL database", getName());
        fmtDict->remove(this);
    } else if (!isNamed(dsoname)) {
        fmtDict->remove(this);
    } else if (match != nullptr) {
        maxNeed = std::max(maxNeed, match->need);
    }
}

void zelFormatDB::error(const char* msg) {
    // The scanner has normally read one byte past the token.
    const int behind = static_cast<int>(std::strlen(zeltext)) + 1;
    const int off = std::max(reader.lineIndex - behind, 0);
    char space[lineSize];
    std::transform(reader.line, reader.line + off, space,
                   [](char c) { return c == '\t' ? '\t' : ' '; });
    space[off] = '\0';
    zelError(zelSevError, "%s in ZEL database file, line %d:\n%s\n%s^", msg, reader.lineNo,
             reader.line, space);
}

int zelFormatDB::getInput(char* buf, int) {
    if (reader.lineIndex >= reader.lineLen && !readPiece()) {
        return 0;
    }
    *buf = reader.line[reader.lineIndex++];
    return 1;
}

void zelFormatDB::processInclude(char* line) {
    constexpr char word[] = "include";
    char* rest = std::strstr(line, word);
    const char* name =
        rest == nullptr ? nullptr : std::strtok(rest + std::strlen(word), " \t<>'\"");
    if (name == nullptr) {
        zelError(zelSevWarning, "Malformed include statement in ZEL database");
        return;
    }
    if (reader.incLevel + 1 == maxFiles) {
        zelError(zelSevWarning, "Include files nested too deep in ZEL database");
        return;
    }
    FILE* file = openText(name);
    if (file == nullptr) {
        char reason[statusTextSize];
        zelError(zelSevError, "Couldn't open file format database include file: %s\n\t%s", name,
                 openFailure(reason, errno));
        return;
    }
    reader.dbFile[++reader.incLevel] = file;
    reader.lineLen = reader.lineIndex = 0;
    reader.atEnd = false;
}

int zelFormatDB::getMaxNeeded() {
    return maxNeed;
}

void zelFormatDB::setMatch(zelDbMatch* rule) {
    match = rule;
}

void zelFormatDB::setDescription(char* text) {
    description = text;
}

void zelFormatDB::setDso(char*) {
    if (dsoname == nullptr) {
        dsoname = undisclosedName();
    }
}

void zelFormatDB::setDll(char* text) {
    dsoname = text;
}

void zelFormatDB::setSubSystem(char* text) {
    subsystem = text;
}

void zelFormatDB::setSuffixes(zelList<zelSuffixItem>* list) {
    suffixes = list;
}

void zelFormatDB::setAccess(int mode) {
    switch (mode) {
    case tokenReadWrite:
        access = 2;
        break;
    case tokenReadOnly:
        access = 0;
        break;
    case tokenWriteOnly:
        access = 1;
        break;
    default:
        break;
    }
}

zelList<zelSuffixItem>* zelFormatDB::getSuffixes() const {
    return suffixes;
}

int zelFormatDB::hasMatchRule() const {
    return match != nullptr;
}

int zelFormatDB::eval(void* data, int len) const {
    return match->need >= 0 && match->need <= len && match->eval(data).i != 0;
}

void zelFormatDB::setFormat(zelFormat* newFormat) {
    setFormat(newFormat, byNameMajor, byNameMinor);
}

void zelFormatDB::setFormat(zelFormat* newFormat, int newMajor, int newMinor) {
    format = newFormat;
    major = newMajor;
    minor = newMinor;
}

int zelFormatDB::haveDSOVersion(int wantMajor, int wantMinor) const {
    return major > wantMajor || (major == wantMajor && minor >= wantMinor);
}
