// Processes.cpp - child processes, Win32 implementation.
//
// The argument vector becomes a command line quoted by the C runtime's rules
// (WindowsCommandLine), so that each argument reaches the program as it is; no shell sees
// it. `run` gives the program pipes for its two outputs and the NUL device for its input,
// reads the pipes as data arrive until the program ends or the deadline passes, and ends a
// program still running then with TerminateProcess.

#include "platform/Platform.h"
#include "platform/win32/WideText.h"

#include <chrono>
#include <windows.h>

namespace fileio::platform {

namespace {

using Clock = std::chrono::steady_clock;

/// How long `run` waits for the program between two looks at its pipes.
constexpr DWORD kPollMilliseconds = 5;
/// Bytes read from a pipe at a time.
constexpr DWORD kReadChunk = 16384;

std::string LastError() {
    return System().lastErrorText();
}

/// A handle closed when it goes.
class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE h) : m_handle(h == INVALID_HANDLE_VALUE ? nullptr : h) {}
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    HANDLE Get() const { return m_handle; }
    HANDLE* Out() { return &m_handle; }
    void Close() {
        if (m_handle != nullptr)
            CloseHandle(m_handle);
        m_handle = nullptr;
    }

private:
    HANDLE m_handle = nullptr;
};

/// Reads what the pipe holds into `text` (up to the output limit, the rest dropped). False
/// when the pipe is closed and empty.
bool Drain(HANDLE pipe, std::string& text) {
    DWORD waiting = 0;
    if (!PeekNamedPipe(pipe, nullptr, 0, nullptr, &waiting, nullptr))
        return false;
    while (waiting > 0) {
        char buffer[kReadChunk];
        DWORD got = 0;
        if (!ReadFile(pipe, buffer, waiting < kReadChunk ? waiting : kReadChunk, &got, nullptr) ||
            got == 0)
            return false;
        const std::size_t room =
            text.size() < kProcessOutputLimit ? kProcessOutputLimit - text.size() : 0;
        text.append(buffer, got < room ? got : room);
        waiting -= got;
    }
    return true;
}

bool StartProcess(const std::vector<std::string>& argv, STARTUPINFOW& startup, bool inherit,
                  PROCESS_INFORMATION& process, std::string& why) {
    if (argv.empty() || argv[0].empty()) {
        why = "no program to run";
        return false;
    }
    std::wstring line = win32::Widen(WindowsCommandLine(argv));
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, inherit ? TRUE : FALSE,
                        CREATE_NO_WINDOW, nullptr, nullptr, &startup, &process)) {
        why = argv[0] + ": " + LastError();
        return false;
    }
    return true;
}

bool Run(const std::vector<std::string>& argv, int timeoutMs, ProcessOutcome& outcome) {
    outcome = ProcessOutcome();
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Handle outRead, outWrite, errRead, errWrite;
    if (!CreatePipe(outRead.Out(), outWrite.Out(), &inheritable, 0) ||
        !CreatePipe(errRead.Out(), errWrite.Out(), &inheritable, 0)) {
        outcome.why = LastError();
        return false;
    }
    SetHandleInformation(outRead.Get(), HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(errRead.Get(), HANDLE_FLAG_INHERIT, 0);
    Handle input(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                             OPEN_EXISTING, 0, nullptr));

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    startup.hStdOutput = outWrite.Get();
    startup.hStdError = errWrite.Get();
    PROCESS_INFORMATION process{};
    if (!StartProcess(argv, startup, true, process, outcome.why))
        return false;
    outcome.started = true;
    Handle program(process.hProcess);
    Handle thread(process.hThread);
    outWrite.Close();
    errWrite.Close();
    input.Close();

    bool outOpen = true, errOpen = true;
    for (;;) {
        const std::size_t before = outcome.output.size() + outcome.errors.size();
        outOpen = outOpen && Drain(outRead.Get(), outcome.output);
        errOpen = errOpen && Drain(errRead.Get(), outcome.errors);
        const bool ended = WaitForSingleObject(program.Get(), 0) == WAIT_OBJECT_0;
        if (ended) {
            // What the program wrote before it ended is in the pipes now.
            Drain(outRead.Get(), outcome.output);
            Drain(errRead.Get(), outcome.errors);
            DWORD code = 0;
            GetExitCodeProcess(program.Get(), &code);
            outcome.exitCode = static_cast<int>(code);
            return true;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            TerminateProcess(program.Get(), 1);
            WaitForSingleObject(program.Get(), INFINITE);
            outcome.timedOut = true;
            return true;
        }
        if (outcome.output.size() + outcome.errors.size() == before)
            WaitForSingleObject(program.Get(), left < kPollMilliseconds ? static_cast<DWORD>(left)
                                                                        : kPollMilliseconds);
    }
}

bool StartDetached(const std::vector<std::string>& argv, std::string& why) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!StartProcess(argv, startup, false, process, why))
        return false;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
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
