// Processes.cpp - child processes, POSIX implementation.
//
// `run` starts the program with posix_spawnp (which reports a program that cannot be
// executed at once), reads its two output pipes with poll until they close or the deadline
// passes, and collects its exit status; a program still running at the deadline gets
// SIGKILL. `startDetached` forks twice, so that the program becomes a child of init and
// leaves nothing to collect; a close-on-exec pipe tells whether the exec succeeded.
// Children start with the default signal dispositions and an empty signal mask, whatever
// the host has set.

#include "platform/Platform.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <time.h>
#include <unistd.h>

extern char** environ;

namespace fileio::platform {

namespace {

using Clock = std::chrono::steady_clock;

/// How long `run` sleeps between two looks at a program that has closed its outputs but
/// not yet ended.
constexpr long kExitPollNanoseconds = 2'000'000;
/// The exit status of a detached child whose exec failed.
constexpr int kExecFailed = 127;
/// Bytes read from a pipe at a time.
constexpr std::size_t kReadChunk = 16384;

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

/// The arguments as the NULL-terminated array exec wants; the strings stay owned by argv.
std::vector<char*> ArgumentArray(const std::vector<std::string>& argv) {
    std::vector<char*> array;
    array.reserve(argv.size() + 1);
    for (const std::string& argument : argv)
        array.push_back(const_cast<char*>(argument.c_str()));
    array.push_back(nullptr);
    return array;
}

/// Milliseconds left until `deadline`, at least 0.
int MillisecondsLeft(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left <= 0 ? 0 : static_cast<int>(left);
}

/// Reads what is there from `fd` into `text` (up to the output limit, the rest dropped).
/// False at the end of the pipe.
bool Drain(int fd, std::string& text) {
    char buffer[kReadChunk];
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got < 0)
        return errno == EINTR || errno == EAGAIN;
    if (got == 0)
        return false;
    const std::size_t room =
        text.size() < kProcessOutputLimit ? kProcessOutputLimit - text.size() : 0;
    text.append(buffer,
                static_cast<std::size_t>(got) < room ? static_cast<std::size_t>(got) : room);
    return true;
}

/// Spawn attributes that give the child the default signal handling and an empty mask.
class SpawnAttributes {
public:
    SpawnAttributes() {
        ::posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigemptyset(&none);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        sigaddset(&defaults, SIGINT);
        sigaddset(&defaults, SIGTERM);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &defaults);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&m_attributes); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* Get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes;
};

/// A pipe whose two ends are closed when it goes.
struct Pipe {
    int ends[2] = {-1, -1};
    Pipe() {
        if (::pipe2(ends, O_CLOEXEC) != 0)
            ends[0] = ends[1] = -1;
    }
    ~Pipe() {
        CloseEnd(0);
        CloseEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    [[nodiscard]] bool Ok() const { return ends[0] >= 0; }
    void CloseEnd(int which) {
        if (ends[which] >= 0)
            ::close(ends[which]);
        ends[which] = -1;
    }
};

/// Waits for `pid` to end until `deadline`; kills it then. Fills the exit fields.
void Collect(pid_t pid, Clock::time_point deadline, ProcessOutcome& outcome) {
    int status = 0;
    for (;;) {
        const pid_t done = ::waitpid(pid, &status, WNOHANG);
        if (done == pid)
            break;
        if (done < 0 && errno != EINTR)
            return;
        if (Clock::now() >= deadline) {
            ::kill(pid, SIGKILL);
            while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
            outcome.timedOut = true;
            return;
        }
        const timespec pause{0, kExitPollNanoseconds};
        ::nanosleep(&pause, nullptr);
    }
    if (WIFEXITED(status))
        outcome.exitCode = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        outcome.why = "ended by signal " + std::to_string(WTERMSIG(status));
}

bool Run(const std::vector<std::string>& argv, int timeoutMs, ProcessOutcome& outcome) {
    outcome = ProcessOutcome();
    if (argv.empty() || argv[0].empty()) {
        outcome.why = "no program to run";
        return false;
    }
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    Pipe output, errors;
    if (!output.Ok() || !errors.Ok()) {
        outcome.why = ErrorText(errno);
        return false;
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output.ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors.ends[1], STDERR_FILENO);
    const SpawnAttributes attributes;
    std::vector<char*> arguments = ArgumentArray(argv);
    pid_t pid = 0;
    const int rc =
        ::posix_spawnp(&pid, arguments[0], &actions, attributes.Get(), arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) {
        outcome.why = argv[0] + ": " + ErrorText(rc);
        return false;
    }
    outcome.started = true;
    output.CloseEnd(1);
    errors.CloseEnd(1);

    pollfd entries[2] = {{output.ends[0], POLLIN, 0}, {errors.ends[0], POLLIN, 0}};
    std::string* texts[2] = {&outcome.output, &outcome.errors};
    while (entries[0].fd >= 0 || entries[1].fd >= 0) {
        const int left = MillisecondsLeft(deadline);
        const int ready = ::poll(entries, 2, left);
        if (ready < 0 && errno != EINTR)
            break;
        if (ready == 0 && left == 0)
            break; // the deadline: Collect kills the program
        for (int i = 0; i < 2; ++i)
            if (entries[i].fd >= 0 && entries[i].revents != 0 && !Drain(entries[i].fd, *texts[i]))
                entries[i].fd = -1; // poll skips negative descriptors
    }
    Collect(pid, deadline, outcome);
    return true;
}

bool StartDetached(const std::vector<std::string>& argv, std::string& why) {
    if (argv.empty() || argv[0].empty()) {
        why = "no program to run";
        return false;
    }
    std::vector<char*> arguments = ArgumentArray(argv);
    Pipe report;
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (!report.Ok() || nothing < 0) {
        why = ErrorText(errno);
        if (nothing >= 0)
            ::close(nothing);
        return false;
    }
    // Between fork and exec only async-signal-safe calls are made.
    const pid_t child = ::fork();
    if (child == 0) {
        const pid_t grandchild = ::fork();
        if (grandchild < 0) {
            const int error = errno;
            (void)!::write(report.ends[1], &error, sizeof error);
            ::_exit(kExecFailed);
        }
        if (grandchild != 0)
            ::_exit(0); // the grandchild is adopted by init
        ::setsid();
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::signal(SIGPIPE, SIG_DFL);
        ::dup2(nothing, STDIN_FILENO);
        ::dup2(nothing, STDOUT_FILENO);
        ::dup2(nothing, STDERR_FILENO);
        ::execvp(arguments[0], arguments.data());
        const int error = errno;
        (void)!::write(report.ends[1], &error, sizeof error);
        ::_exit(kExecFailed);
    }
    const int forkError = errno;
    ::close(nothing);
    report.CloseEnd(1);
    if (child < 0) {
        why = ErrorText(forkError);
        return false;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    // The pipe closes when the grandchild's exec succeeds; it carries errno when it fails.
    int error = 0;
    ssize_t got;
    do {
        got = ::read(report.ends[0], &error, sizeof error);
    } while (got < 0 && errno == EINTR);
    if (got == static_cast<ssize_t>(sizeof error)) {
        why = argv[0] + ": " + ErrorText(error);
        return false;
    }
    return true;
}

} // namespace

ProcessServices& Processes() {
    static ProcessServices table{
        .run = Run,
        .startDetached = StartDetached,
    };
    return table;
}

} // namespace fileio::platform
