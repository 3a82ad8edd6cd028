// System.cpp - facts about the running program and its system, Win32 implementation.

#include "platform/Platform.h"

#include <string>
#include <windows.h>

namespace fileio::platform {

namespace {

/// The full path of the running program's executable; empty when it cannot be had.
std::string ExecutablePath() {
    std::string path(MAX_PATH, '\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0)
            return {};
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::string ApplicationFolder() {
    const std::string path = ExecutablePath();
    const std::size_t cut = path.find_last_of("\\/");
    return cut == std::string::npos ? std::string() : path.substr(0, cut);
}

std::string ApplicationName() {
    std::string name = ExecutablePath();
    name.erase(0, name.find_last_of("\\/") + 1);
    return name.substr(0, name.rfind('.'));
}

void DebugTrace(const char* text) {
    OutputDebugStringA(text);
}

void WarningSound(unsigned int kind) {
    MessageBeep(kind);
}

bool ComputerName(std::string& out) {
    char buffer[260] = {};
    DWORD size = sizeof buffer;
    if (!GetComputerNameA(buffer, &size))
        return false;
    out.assign(buffer, size);
    return true;
}

bool HostName(std::string& out) {
    char buffer[260] = {};
    DWORD size = sizeof buffer;
    if (!GetComputerNameExA(ComputerNameDnsHostname, buffer, &size) || size == 0)
        return false;
    out.assign(buffer, size);
    return true;
}

std::string LastErrorText() {
    DWORD code = GetLastError();
    char* text = nullptr;
    DWORD n = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                 FORMAT_MESSAGE_IGNORE_INSERTS,
                             nullptr, code, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string out =
        n > 0 && text != nullptr ? std::string(text, n) : "error " + std::to_string(code);
    if (text != nullptr)
        LocalFree(text);
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r' || out.back() == ' '))
        out.pop_back();
    return out;
}

void* BeginWaitCursor() {
    return SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(32514)));
}

void EndWaitCursor(void* previous) {
    SetCursor(static_cast<HCURSOR>(previous));
}

} // namespace

SystemServices& System() {
    static SystemServices table{
        .applicationFolder = ApplicationFolder,
        .applicationName = ApplicationName,
        .debugTrace = DebugTrace,
        .warningSound = WarningSound,
        .computerName = ComputerName,
        .hostName = HostName,
        .lastErrorText = LastErrorText,
        .beginWaitCursor = BeginWaitCursor,
        .endWaitCursor = EndWaitCursor,
    };
    return table;
}

} // namespace fileio::platform
