// A shared object whose static constructor leaves a trace in the process that loads it.

#include <cstdlib>

namespace {

struct Trace {
    Trace() {
        const char* before = std::getenv("PROBE_LOADED");
        setenv("PROBE_LOADED", before ? "again" : "once", 1);
    }
} trace;

} // namespace
