// ChildProcess_posix.h - child processes for the tests that need real ones (writers killed
// in the middle of a save, several writers at once). Children are made with fork and
// report through their exit status; they never return into GoogleTest.
#pragma once

#include <cerrno>
#include <cstdio>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace fileio::test {

/// Starts `body` in a child process and returns its pid. The child ends with body's result
/// as its exit status.
inline pid_t StartChild(const std::function<int()>& body) {
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid == 0)
        ::_exit(body());
    return pid;
}

/// The raw wait status of a child.
inline int Wait(pid_t pid) {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Runs `body` in a child and returns its exit code (-1 when it did not exit normally).
inline int RunChild(const std::function<int()>& body) {
    const int status = Wait(StartChild(body));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace fileio::test
