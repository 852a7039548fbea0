#include "commands.h"

#include "formatList.h"
#include "messages.h"
#include "valueNames.h"

#include <zel/zelFormatDB.h>

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>

namespace zel::tool {
namespace {

/// The entries in the order in which the library tries them.
std::vector<zelFormatDB*> entriesInOrder() {
    std::vector<zelFormatDB*> entries;
    int index = 0;
    while (zelDatabase* entry = zelDatabase::findNext(index)) {
        entries.push_back(static_cast<zelFormatDB*>(entry));
    }
    return entries;
}

std::string nameOf(const zelFormatDB* entry) {
    return entry->zelDatabase::getName();
}

/// The names behind the word "format" in the text of a database, outside comments and strings.
std::vector<std::string> namesIn(std::istream& text) {
    std::vector<std::string> words(1);
    for (char c; text.get(c);) {
        if (c == '!') {
            std::string comment;
            std::getline(text, comment);
            words.emplace_back();
        } else if (c == '"') {
            std::string quoted;
            std::getline(text, quoted, '"');
            words.push_back(quoted);
            words.emplace_back();
        } else if (std::isspace(static_cast<unsigned char>(c))) {
            words.emplace_back();
        } else {
            words.back() += c;
        }
    }
    std::erase(words, "");
    std::vector<std::string> names;
    for (size_t i = 0; i + 1 < words.size(); ++i) {
        if (words[i] == "format") {
            names.push_back(words[i + 1]);
        }
    }
    return names;
}

/// The library says nothing of an entry that has a dso statement and no dll.
void reportSilentRemovals(const std::string& file, const std::string& warnings) {
    std::ifstream text(file);
    for (const std::string& name : namesIn(text)) {
        if (!zelDatabase::findByFormatName(name.c_str()) &&
            warnings.find("warning: " + name + " format removed") == std::string::npos) {
            std::cout << "warning: " << name << " names no dll and is removed\n";
        }
    }
}

/// Reads the database and prints what the library reports of it. False if it has an error.
bool loadDatabase(const std::string& file) {
    HeldWarnings held;
    entriesInOrder();
    std::string warnings;
    for (const auto& [name, text] : held.take()) {
        warnings += "warning: " + text + '\n';
    }
    std::cout << warnings;
    const std::string errors = takeReportedErrors();
    if (!errors.empty()) {
        std::cout << "error: " << errors << '\n';
    } else if (!file.empty()) {
        reportSilentRemovals(file, warnings);
    }
    return errors.empty();
}

void reportSameNames(const std::vector<zelFormatDB*>& entries) {
    for (size_t i = 0; i < entries.size(); ++i) {
        const zelDatabase* const found = zelDatabase::findByFormatName(nameOf(entries[i]).c_str());
        if (found != entries[i]) {
            std::cout << "warning: two entries of the name " << nameOf(entries[i])
                      << "; the one described as \"" << found->getDescription()
                      << "\" is found by it\n";
        }
    }
}

void reportSharedSuffixes(const std::vector<zelFormatDB*>& entries) {
    std::map<std::string, std::vector<std::string>> claims;
    for (const zelFormatDB* entry : entries) {
        if (zelList<zelSuffixItem>* list = entry->getSuffixes()) {
            zelListIter<zelSuffixItem> items(*list);
            while (const zelSuffixItem* item = items.next()) {
                claims[item->suffix].push_back(nameOf(entry));
            }
        }
    }
    for (const auto& [suffix, names] : claims) {
        if (names.size() > 1) {
            const zelDatabase* const winner =
                zelDatabase::findByFileName(("x" + suffix).c_str(), 0);
            std::cout << "warning: suffix " << suffix << " is claimed by " << joinWords(names)
                      << "; " << winner->getName() << " wins\n";
        }
    }
}

/// The first bytes of a file, as many as the rules look at.
std::string firstBytes(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::string bytes(static_cast<size_t>(zelFormatDB::getMaxNeeded()), '\0');
    const ssize_t got = fd < 0 ? -1 : read(fd, bytes.data(), bytes.size());
    const int error = errno;
    if (fd >= 0) {
        close(fd);
    }
    if (got < 0) {
        throw Failure{path, std::strerror(error)};
    }
    bytes.resize(static_cast<size_t>(got));
    return bytes;
}

void reportSample(const std::string& path, const std::vector<zelFormatDB*>& entries) {
    std::string bytes = firstBytes(path);
    std::vector<std::string> names;
    for (const zelFormatDB* entry : entries) {
        if (entry->hasMatchRule() && entry->eval(bytes.data(), static_cast<int>(bytes.size()))) {
            names.push_back(nameOf(entry));
        }
    }
    if (names.size() > 1) {
        std::cout << "warning: " << path << " is matched by the rules of " << joinWords(names)
                  << "; " << names.front() << " wins\n";
    } else {
        std::cout << path << ": " << (names.empty() ? "matched by no rule" : names.front()) << '\n';
    }
}

/// False if a plug-in does not load.
bool reportPlugins(const std::vector<zelFormatDB*>& entries) {
    bool allLoad = true;
    for (zelFormatDB* entry : entries) {
        if (!entry->getFormat(1)) {
            const std::string reason = takeExplainedErrors();
            std::cout << "error: " << nameOf(entry) << ": "
                      << (reason.empty() ? "no plug-in is named" : reason) << '\n';
            allLoad = false;
        }
    }
    return allLoad;
}

int checkDatabase(const std::string& file, const std::vector<std::string>& samples) {
    if (!file.empty()) {
        setenv("ZEL_DATABASE", file.c_str(), 1);
    }
    bool sound = loadDatabase(file);
    const std::vector<zelFormatDB*> entries = entriesInOrder();
    reportSameNames(entries);
    reportSharedSuffixes(entries);
    for (const std::string& sample : samples) {
        try {
            reportSample(sample, entries);
        } catch (const Failure& failure) {
            std::cout << "error: " << failure.name << ": " << failure.reason << '\n';
            sound = false;
        }
    }
    sound = reportPlugins(entries) && sound;
    std::cout << entries.size() << (entries.size() == 1 ? " format; " : " formats; ")
              << zelFormatDB::getMaxNeeded() << " bytes of a file are read to recognise it\n";
    return sound ? 0 : 1;
}

} // namespace

Command addCheckdbCommand(CLI::App& app) {
    struct Options {
        std::string file;
        std::vector<std::string> samples;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        app.add_subcommand("checkdb", "Tell what the library makes of a format database");
    command->add_option("FILE", options->file, "The database; without it the one in use");
    command->add_option("SAMPLE", options->samples,
                        "Files to try the rules on: which formats claim them");
    return [options] { return checkDatabase(options->file, options->samples); };
}

} // namespace zel::tool
