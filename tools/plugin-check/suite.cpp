#include "suite.h"

#include "checks.h"

#include <algorithm>

namespace zel::check {

namespace {

constexpr const char* registration = "registration";
constexpr const char* capabilities = "capabilities";

struct Check {
    const char* name;
    void (*run)(const Subject& subject, Tally& tally);
};

constexpr Check checks[] = {
    {"round trip", checkRoundTrips},
    {"pages in random order", checkPagesInRandomOrder},
    {"parts of pages", checkPartsOfPages},
    {"several images", checkSeveralImages},
    {"read-only files", checkReadOnlyFiles},
    {"given files", checkGivenFiles},
    {"clients' descriptors", checkClientDescriptors},
    {"failed opens", checkFailedOpens},
    {"truncation", checkTruncation},
    {"damage", checkDamage},
    {"descriptors", checkDescriptors},
    {"memory", checkMemory},
};

Subject subjectOf(const Options& options, Shared& shared) {
    watchReports();
    return {options, zelFormat::findByFormatName(options.format.c_str(), 1),
            std::span(shared.kinds, shared.kindCount)};
}

void explore(const Options& options, Shared& shared, Tally& tally) {
    std::vector<Kind> kinds;
    checkCapabilities(subjectOf(options, shared), tally, kinds);
    shared.kindCount = std::min(kinds.size(), Shared::mostKinds);
    std::copy_n(kinds.begin(), shared.kindCount, shared.kinds);
}

} // namespace

const char* Row::verdict() const {
    return !outcome.held() ? "FAIL" : outcome.applicable() ? "pass" : "n/a";
}

std::vector<std::string> checkNames() {
    std::vector<std::string> names = {registration, capabilities};
    for (const Check& check : checks)
        names.emplace_back(check.name);
    return names;
}

std::vector<Row> runChecks(const Options& options, Shared& shared) {
    std::vector<Row> rows;
    Tally tally(shared.outcome);
    const auto add = [&](const char* name, const std::function<void()>& work) {
        runInChild(shared, work);
        rows.push_back({name, shared.outcome});
    };
    add(registration, [&] { checkRegistration(subjectOf(options, shared), tally); });
    if (!shared.outcome.held())
        return rows;
    add(capabilities, [&] { explore(options, shared, tally); });
    for (const Check& check : checks)
        if (options.only.empty() || std::ranges::count(options.only, check.name))
            add(check.name, [&] { check.run(subjectOf(options, shared), tally); });
    return rows;
}

bool allHeld(const std::vector<Row>& rows) {
    return std::ranges::all_of(rows, [](const Row& row) { return row.outcome.held(); });
}

} // namespace zel::check
