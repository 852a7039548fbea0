#include "messages.h"

#include "imageName.h"
#include "progress.h"

#include <zel/zelError.h>

#include <cstdarg>
#include <cstdio>
#include <set>
#include <vector>

namespace zel::tool {
namespace {

struct Reports {
    std::pair<std::string, std::string> current; ///< the name, and the path in the reports
    std::string errors;
    std::set<std::pair<std::string, std::string>> warned;
    std::vector<std::pair<std::string, std::string>>* held = nullptr;
};

Reports& reports() {
    static Reports instance;
    return instance;
}

std::string formatReport(const char* fmt, va_list args) {
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, fmt, again);
    va_end(again);
    if (length < 0) {
        return fmt;
    }
    std::vector<char> text(static_cast<size_t>(length) + 1);
    std::vsnprintf(text.data(), text.size(), fmt, args);
    return text.data();
}

// The library breaks its longer sentences with a newline and a tab. What stands below each other on
// purpose, a line and its caret, is kept.
std::string joinLines(std::string text) {
    for (size_t at = text.find("\n\t"); at != std::string::npos; at = text.find("\n\t", at)) {
        text.replace(at, 2, " ");
    }
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

/// Takes the path out of "PATH: text" and "word: PATH: text".
std::string withoutPath(std::string text, const std::string& path) {
    if (path.empty()) {
        return text;
    }
    const std::string start = path + ": ";
    for (size_t at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
        if (at == 0 || text.compare(at - 1, 1, " ") == 0) {
            text.erase(at, start.size());
        } else {
            at += start.size();
        }
    }
    return text;
}

void keepError(const std::string& text) {
    std::string& errors = reports().errors;
    if (!errors.empty()) {
        errors += '\n';
    }
    errors += text;
}

void receive(void*, int flags, const char* fmt, va_list args) {
    const int severity = flags & 0xFF;
    if (severity == zelSevInfo) {
        return;
    }
    const auto& [name, path] = reports().current;
    const std::string text = withoutPath(joinLines(formatReport(fmt, args)), path);
    if (severity != zelSevWarning) {
        keepError(text);
        return;
    }
    if (reports().held) {
        reports().held->emplace_back(name, text);
    } else {
        printWarning(name, text);
    }
}

} // namespace

void printMessage(const std::string& name, const std::string& text) {
    wipeProgress();
    const std::string line = "zel: " + (name.empty() ? "" : name + ": ") + text + '\n';
    std::fputs(line.c_str(), stderr);
}

void printFailure(const Failure& failure) {
    printMessage(failure.name, failure.reason);
}

void printWarning(const std::string& name, const std::string& text) {
    if (reports().warned.emplace(name, text).second) {
        printMessage(name, "warning: " + text);
    }
}

HeldWarnings::HeldWarnings() {
    reports().held = &warnings;
}

HeldWarnings::~HeldWarnings() {
    reports().held = nullptr;
}

std::vector<std::pair<std::string, std::string>> HeldWarnings::take() {
    return std::exchange(warnings, {});
}

WorkingOn::WorkingOn(std::string name, const std::string& path) {
    std::string known = path.empty() ? splitImageName(name).file : path;
    former = std::exchange(reports().current, {std::move(name), std::move(known)});
}

WorkingOn::~WorkingOn() {
    reports().current = std::move(former);
}

void collectReports() {
    zelSetErrorHandler(receive, nullptr);
}

std::string takeReportedErrors() {
    return std::exchange(reports().errors, {});
}

} // namespace zel::tool
