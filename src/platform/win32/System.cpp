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

std::string ApplicationFolder() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD n = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (n == 0)
            return {};
        if (n < path.size()) {
            path.resize(n);
            break;
        }
        if (path.size() > 32768)
            return {};
        path.resize(path.size() * 2);
    }
    std::size_t separator = path.find_last_of(L"\\/");
    if (separator == std::wstring::npos)
        return {};
    // A program in a drive's root keeps the root's separator ("C:\").
    path.resize(separator == 2 && path[1] == L':' ? 3 : separator);
    return win32::Narrow(path);
}

void DebugTrace(const char* text) { OutputDebugStringA(text); }

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
        ComputerName,  HostName,        ApplicationFolder, DebugTrace,
        LastErrorText, BeginWaitCursor, EndWaitCursor,
    };
    return table;
}

} // namespace fileio::platform
