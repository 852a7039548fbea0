#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace zel::tool {
namespace {

constexpr std::chrono::milliseconds kQuietTime{1000};
constexpr std::chrono::milliseconds kRenewal{200};

bool lineStands = false;

} // namespace

Progress::Progress(std::string workName, double amount)
    : name(std::move(workName)), total(amount), onTerminal(isatty(STDERR_FILENO) != 0),
      next(Clock::now() + kQuietTime) {}

Progress::~Progress() {
    wipeProgress();
}

void Progress::advance(double amount) {
    done += amount;
    if (!onTerminal || Clock::now() < next) {
        return;
    }
    next = Clock::now() + kRenewal;
    const int percent = total > 0 ? static_cast<int>(100 * std::min(1.0, done / total)) : 100;
    std::fprintf(stderr, "\rzel: %s: %d%%\033[K", name.c_str(), percent);
    lineStands = true;
}

void wipeProgress() {
    if (lineStands) {
        std::fputs("\r\033[K", stderr);
        lineStands = false;
    }
}

} // namespace zel::tool
