#ifndef ZEL_PLUGINCHECK_CHILD_H
#define ZEL_PLUGINCHECK_CHILD_H

#include "kind.h"
#include "outcome.h"

#include <cstddef>
#include <functional>

namespace zel::check {

/// What the program and the children share.
struct Shared {
    static constexpr std::size_t mostKinds = 32768;
    Outcome outcome;
    std::size_t kindCount = 0;
    Kind kinds[mostKinds];
};

/// Memory for it, all zeros; null if there is none.
Shared* makeShared();

/// Runs the work in a child process whose output is kept back. An end by a signal or an exit, and
/// any words on the terminal, become failures of `shared.outcome`.
void runInChild(Shared& shared, const std::function<void()>& work);

} // namespace zel::check

#endif
