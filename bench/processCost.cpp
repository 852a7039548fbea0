// Runs a command once and prints what it cost: processor seconds, wall seconds and peak memory in
// KiB. A child's peak counts from its parent's, so that a parent of a few hundred KiB is needed:
// hence a program of its own, linked statically.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstring>

namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: process_cost COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    if (const int error = posix_spawnp(&child, argv[1], &quiet, nullptr, argv + 1, environ)) {
        std::fprintf(stderr, "process_cost: %s: %s\n", argv[1], std::strerror(error));
        return 2;
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::printf("%.6f %.6f %ld\n", seconds(usage.ru_utime) + seconds(usage.ru_stime), wall.count(),
                usage.ru_maxrss);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : 1;
}
