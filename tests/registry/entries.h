#ifndef ZEL_TESTS_REGISTRY_ENTRIES_H
#define ZEL_TESTS_REGISTRY_ENTRIES_H

#include <zel/zelFormatDB.h>

#include <set>
#include <string>

namespace zel::test {

inline std::string orDash(const char* text) {
    return text == nullptr ? "-" : text;
}

/// An entry as "name|description|plug-in|subsystem|suffixes|modes" with " rule" if it has one.
inline std::string describe(const zelDatabase& base) {
    const auto& entry = static_cast<const zelFormatDB&>(base);
    std::string suffixes;
    if (entry.getSuffixes() != nullptr) {
        zelListIter<zelSuffixItem> items(*entry.getSuffixes());
        while (const zelSuffixItem* item = items.next()) {
            suffixes += (suffixes.empty() ? "" : " ") + std::string(item->suffix);
        }
    }
    std::string modes;
    for (int mode = 0; mode < 3; ++mode) {
        modes += entry.accessModeIsSupported(mode) ? std::to_string(mode) : "";
    }
    return orDash(entry.getName()) + "|" + orDash(entry.getDescription()) + "|" +
           orDash(entry.getDSOName()) + "|" + orDash(entry.getInstSubSystem()) + "|" + suffixes +
           "|" + modes + (entry.hasMatchRule() ? " rule" : "");
}

/// All entries of the table, sorted, one a line.
inline std::string describeAll() {
    std::multiset<std::string> lines;
    int index = 0;
    while (const zelDatabase* entry = zelDatabase::findNext(index)) {
        lines.insert(describe(*entry) + "\n");
    }
    std::string all;
    for (const std::string& line : lines) {
        all += line;
    }
    return all;
}

} // namespace zel::test

#endif
