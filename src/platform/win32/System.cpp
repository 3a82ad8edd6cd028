// System.cpp - names, folders and traces of the system, Win32 implementation.

#include "platform/Platform.h"
#include "platform/win32/WideText.h"

#include <windows.h>

namespace fileio::platform {

namespace {

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

bool ApplicationFile(std::string& out) {
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        DWORD n = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (n == 0)
            return false;
        if (n < buffer.size()) {
            buffer.resize(n);
            out = win32::Narrow(buffer);
            return true;
        }
        if (buffer.size() > 32768)
            return false;
        buffer.resize(buffer.size() * 2);
    }
}

void DebugTrace([[maybe_unused]] const char* text) {
#if !defined(NDEBUG)
    OutputDebugStringA(text);
#endif
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
    static SystemServices table = {
        ComputerName,  HostName,        ApplicationFile, DebugTrace,
        LastErrorText, BeginWaitCursor, EndWaitCursor,
    };
    return table;
}

} // namespace fileio::platform
