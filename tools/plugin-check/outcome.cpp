#include "outcome.h"

#include <zel/zelError.h>

#include <cstdarg>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace zel::check {

namespace {

std::string severeReport;

void receive(void*, int flags, const char* format, va_list args) {
    const int severity = flags & 0xff;
    if (severity != zelSevError && severity != zelSevFatal)
        return;
    char text[400];
    std::vsnprintf(text, sizeof text, format, args);
    severeReport = text;
}

template <std::size_t size>
void copyText(char (&to)[size], const std::string& text) {
    std::snprintf(to, size, "%s", text.c_str());
}

} // namespace

void require(bool condition, const std::string& why) {
    if (!condition)
        throw Failed{why};
}

void failCaseInHand(Outcome& outcome, const std::string& why) {
    if (outcome.failures++ > 0)
        return;
    const std::string doing = outcome.doing;
    copyText(outcome.failure, doing.empty() ? why : doing + ": " + why);
}

void Tally::begin(const std::string& title, unsigned seconds) {
    copyText(outcome_.doing, title);
    outcome_.cases++;
    severeReport.clear();
    alarm(seconds);
}

void Tally::end() {
    alarm(mostSeconds);
    if (!severeReport.empty())
        fail("reports an error, at which a client would end: " + severeReport);
}

void Tally::fail(const std::string& why) {
    alarm(mostSeconds);
    failCaseInHand(outcome_, why);
}

void Tally::note(const std::string& text) {
    copyText(outcome_.note, text);
}

void watchReports() {
    zelSetErrorHandler(receive, nullptr);
}

} // namespace zel::check
