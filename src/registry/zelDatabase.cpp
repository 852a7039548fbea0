#include <zel/zelDatabase.h>

#include "platform/loader.h"
#include "platform/splitPath.h"
#include "registry/entryMarker.h"
#include "registry/text.h"

#include <zel/zelError.h>
#include <zel/zelFormatDB.h>
#include <zel/zelVersion.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <unistd.h>

namespace {

constexpr int readWrite = 2;
constexpr std::size_t fileNameSize = 260;

// The entry at or behind slot `index`; null at the end of the table or without a table.
zelFormatDB* nextEntry(int& index) {
    zelDictionary* entries = zelFormatDB::getDictionary();
    zelHashElem* elem = entries == nullptr ? nullptr : entries->next(index);
    return elem == nullptr ? nullptr : static_cast<zelFormatDB*>(static_cast<zelName*>(elem));
}

// Walks the table in slot order to the first entry for which the test holds.
template <class Test>
zelDatabase* findFirst(Test test) {
    int index = 0;
    while (zelFormatDB* entry = nextEntry(index)) {
        if (test(*entry)) {
            return entry;
        }
    }
    return nullptr;
}

bool endsInSuffix(const char* fileName, std::size_t length, const zelSuffixItem& item) {
    const std::size_t suffixLength = std::strlen(item.suffix);
    return length > suffixLength && std::strcmp(fileName + length - suffixLength, item.suffix) == 0;
}

// The plug-in lies in a file whose base name has "_d" behind it. A name that does not fit is a
// failure, never cut.
bool buildFileName(const char* dsoname, std::array<char, fileNameSize>& fileName) {
    zel::platform::SplitPath parts;
    if (!zel::platform::splitPath(dsoname, parts)) {
        return false;
    }
    const int length = std::snprintf(fileName.data(), fileName.size(), "%s%s%s_d%s", parts.drive,
                                     parts.directory, parts.base, parts.extension);
    return length >= 0 && static_cast<std::size_t>(length) < fileName.size();
}

bool loadPlugin(const char* dsoname) {
    std::array<char, fileNameSize> fileName;
    std::string reason;
    return buildFileName(dsoname, fileName) &&
           zel::platform::loadSharedObject(fileName.data(), reason);
}

void reportMissing(const char* dsoname, const char* formatName, const char* subsystem) {
    if (subsystem != nullptr) {
        zelError(zelSevError,
                 "Dynamic shared object \"%s\" version %s not found\n"
                 "\tfor run-time linking %s-format-specific code.\n"
                 "\tThis file can be found in the appropriate\n"
                 "\tversion of the product %s.",
                 dsoname, libzelVersion, formatName, subsystem);
    } else {
        zelError(zelSevError,
                 "Dynamic shared object \"%s\" version %s not found\n"
                 "\tfor run-time linking %s-format-specific code.\n",
                 dsoname, libzelVersion, formatName);
    }
}

} // namespace

zelDatabase::zelDatabase(const char* entryName)
    : name(zel::registry::copyText(entryName)), description(nullptr), dsoname(nullptr),
      subsystem(nullptr), suffixes(nullptr), access(readWrite), format(nullptr) {}

zelDatabase* zelDatabase::findNext(int& index) {
    return nextEntry(index);
}

zelDatabase* zelDatabase::findByFormatName(const char* formatName) {
    zelDictionary* entries = zelFormatDB::getDictionary();
    if (entries == nullptr || formatName == nullptr) {
        return nullptr;
    }
    return static_cast<zelFormatDB*>(entries->find(formatName, 0));
}

zelDatabase* zelDatabase::findByFileName(const char* fileName, int noMatchRule) {
    if (fileName == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::strlen(fileName);
    return findFirst([=](const zelFormatDB& entry) {
        if ((noMatchRule && entry.hasMatchRule()) || entry.getSuffixes() == nullptr) {
            return false;
        }
        zelListIter<zelSuffixItem> items(*entry.getSuffixes());
        while (const zelSuffixItem* item = items.next()) {
            if (endsInSuffix(fileName, length, *item)) {
                return true;
            }
        }
        return false;
    });
}

zelDatabase* zelDatabase::findByMagic(int fd) {
    if (zelFormatDB::getDictionary() == nullptr) {
        return nullptr;
    }
    lseek(fd, 0, SEEK_SET);
    const auto wanted = static_cast<std::size_t>(zelFormatDB::getMaxNeeded());
    const std::unique_ptr<char[]> start(new (std::nothrow) char[wanted]);
    const int length = start ? static_cast<int>(read(fd, start.get(), wanted)) : -1;
    return findFirst([&](const zelFormatDB& entry) {
        return entry.hasMatchRule() && entry.eval(start.get(), length);
    });
}

const char* zelDatabase::getName() const {
    return name;
}

const char* zelDatabase::getDescription() const {
    return description;
}

const char* zelDatabase::getDSOName() const {
    return zel::registry::isNamed(dsoname) ? dsoname : nullptr;
}

const char* zelDatabase::getInstSubSystem() const {
    return subsystem;
}

const char* zelDatabase::getDefaultSuffix() const {
    const zelSuffixItem* first = suffixes == nullptr ? nullptr : suffixes->head();
    return first == nullptr ? nullptr : first->suffix;
}

int zelDatabase::accessModeIsSupported(int mode) const {
    return access == mode || access == readWrite;
}

zelFormat* zelDatabase::getFormat(int openDSOifNecessary) {
    // An entry without a plug-in's name is left only by a database that failed to parse.
    if (format != nullptr || !openDSOifNecessary || !zel::registry::isNamed(dsoname)) {
        return format;
    }
    // The plug-in registers itself while it is loaded, and so sets `format`.
    if (!loadPlugin(dsoname)) {
        reportMissing(dsoname, name, subsystem);
        return nullptr;
    }
    if (format == nullptr) {
        zelError(zelSevError,
                 "The dynamic shared object %s failed to register\n"
                 "\ta file format called \"%s\"",
                 dsoname, name);
    }
    return format;
}
