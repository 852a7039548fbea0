#include "interrupts.h"

#include <unistd.h>

#include <array>
#include <climits>
#include <cstring>

namespace zel::tool {
namespace {

constexpr std::array kInterrupts{SIGINT, SIGTERM, SIGHUP};

// A plain array, because a signal handler may touch nothing that allocates.
char fileToRemove[PATH_MAX];

void removeAndDie(int signal) {
    if (fileToRemove[0] != '\0') {
        unlink(fileToRemove);
    }
    // The disposition went back to the default when the handler was entered.
    raise(signal);
}

} // namespace

void handleInterrupts() {
    struct sigaction action {};
    action.sa_handler = removeAndDie;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int signal : kInterrupts) {
        struct sigaction former {};
        // A process that was told to ignore an interrupt, as by nohup, goes on doing so.
        if (sigaction(signal, nullptr, &former) == 0 && former.sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
        }
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

bool removeOnInterrupt(const std::string& path) {
    if (path.size() >= sizeof fileToRemove) {
        return false;
    }
    const InterruptsBlocked blocked;
    std::memcpy(fileToRemove, path.c_str(), path.size() + 1);
    return true;
}

InterruptsBlocked::InterruptsBlocked() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kInterrupts) {
        sigaddset(&set, signal);
    }
    sigprocmask(SIG_BLOCK, &set, &former);
}

InterruptsBlocked::~InterruptsBlocked() {
    sigprocmask(SIG_SETMASK, &former, nullptr);
}

} // namespace zel::tool
