#ifndef ZEL_TOOL_INTERRUPTS_H
#define ZEL_TOOL_INTERRUPTS_H

#include <csignal>
#include <string>

namespace zel::tool {

/// Makes an interrupt (SIGINT, SIGTERM, SIGHUP) remove the file that is being written and then end
/// the process as it would have, and makes a file size limit an ordinary failure. To be called
/// once.
void handleInterrupts();

/// Names the file that an interrupt removes; empty for none. False if the name is too long.
bool removeOnInterrupt(const std::string& path);

/// Holds interrupts back for as long as it lives.
class InterruptsBlocked {
public:
    InterruptsBlocked();
    ~InterruptsBlocked();
    InterruptsBlocked(const InterruptsBlocked&) = delete;
    InterruptsBlocked& operator=(const InterruptsBlocked&) = delete;

private:
    sigset_t former;
};

} // namespace zel::tool

#endif
