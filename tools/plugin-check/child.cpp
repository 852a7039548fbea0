#include "child.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zel::check {

namespace {

std::string firstLines(int fd) {
    char text[240];
    const ssize_t length = pread(fd, text, sizeof text, 0);
    return std::string(text, length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::string endText(int status) {
    if (!WIFSIGNALED(status))
        return "ends the process with exit status " + std::to_string(WEXITSTATUS(status));
    if (WTERMSIG(status) == SIGALRM)
        return "takes too long";
    return "ends the process by signal " + std::to_string(WTERMSIG(status)) + " (" +
           strsignal(WTERMSIG(status)) + ")";
}

[[noreturn]] void runAndExit(Shared& shared, const std::function<void()>& work, int output) {
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    alarm(mostSeconds);
    try {
        work();
    } catch (const Failed& failed) {
        failCaseInHand(shared.outcome, failed.why);
    } catch (const std::exception& error) {
        failCaseInHand(shared.outcome, error.what());
    }
    std::fflush(nullptr);
    shared.outcome.finished = true;
    _exit(0);
}

} // namespace

Shared* makeShared() {
    void* const memory =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) Shared;
}

void runInChild(Shared& shared, const std::function<void()>& work) {
    shared.outcome = Outcome();
    std::fflush(nullptr); // lest the child write what this process has in its buffers
    const int output = memfd_create("output", MFD_CLOEXEC);
    const pid_t child = output < 0 ? -1 : fork();
    if (child == 0)
        runAndExit(shared, work, output);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child)
        failCaseInHand(shared.outcome, "no child process");
    const std::string said = firstLines(output);
    if (child > 0 && !shared.outcome.finished)
        failCaseInHand(shared.outcome, endText(status) + (said.empty() ? "" : ": " + said));
    else if (!said.empty())
        failCaseInHand(shared.outcome, "writes to the terminal: " + said);
    close(output);
}

} // namespace zel::check
