#include "support/childProcess.h"

#include "support/tempDir.h"

#include <zel/zelError.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

namespace zel::test {
namespace {

// A message from the child: what it is, then its length, then its text.
enum class Kind : char {
    report,
    text
};

struct Frame {
    Kind kind;
    std::uint32_t length;
};

void writeAll(int fd, const void* data, std::size_t size) {
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = write(fd, next, size);
        if (written <= 0) {
            _exit(99);
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
}

bool readAll(int fd, void* data, std::size_t size) {
    char* next = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t got = read(fd, next, size);
        if (got <= 0) {
            return false;
        }
        next += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

void send(int fd, Kind kind, const std::string& text) {
    const Frame frame{kind, static_cast<std::uint32_t>(text.size())};
    writeAll(fd, &frame, sizeof frame);
    writeAll(fd, text.data(), text.size());
}

void recordReport(void* arg, int flags, const char* fmt, va_list args) {
    char* message = nullptr;
    if (vasprintf(&message, fmt, args) >= 0) {
        send(*static_cast<int*>(arg), Kind::report, std::to_string(flags) + " " + message);
        std::free(message);
    }
}

[[noreturn]] void runChild(int fd, const Scenario& scenario, Handler handler) {
    if (handler == Handler::recording) {
        zelSetErrorHandler(recordReport, &fd);
    }
    send(fd, Kind::text, scenario());
    // The parent's buffers and exit handlers are not the child's to run.
    _exit(0);
}

void collect(int fd, ChildResult& result) {
    Frame frame{};
    while (readAll(fd, &frame, sizeof frame)) {
        std::string text(frame.length, '\0');
        if (!readAll(fd, text.data(), text.size())) {
            return;
        }
        if (frame.kind == Kind::report) {
            result.reports.push_back(std::move(text));
        } else {
            result.text = std::move(text);
        }
    }
}

} // namespace

ChildResult runInChild(const Scenario& scenario, Handler handler) {
    std::cout.flush();
    std::fflush(nullptr);
    int ends[2];
    if (pipe(ends) != 0) {
        std::perror("pipe");
        std::abort();
    }
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        runChild(ends[1], scenario, handler);
    }
    close(ends[1]);
    ChildResult result;
    collect(ends[0], result);
    close(ends[0]);
    int status = 0;
    if (waitpid(child, &status, 0) == child) {
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return result;
}

ChildResult runWithDatabaseFile(const std::string& path, const Scenario& scenario,
                                Handler handler) {
    return runInChild(
        [&] {
            setenv("ZEL_DATABASE", path.c_str(), 1);
            return scenario();
        },
        handler);
}

ChildResult runWithDatabase(std::string_view text, const Scenario& scenario, Handler handler,
                            const std::map<std::string, std::string>& others) {
    const TempDir dir;
    dir.write("database", text);
    for (const auto& [name, content] : others) {
        dir.write(name, content);
    }
    return runWithDatabaseFile(
        "database",
        [&] { return chdir(dir.path().c_str()) == 0 ? scenario() : std::string("chdir failed"); },
        handler);
}

} // namespace zel::test
