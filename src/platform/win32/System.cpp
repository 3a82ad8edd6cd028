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

} // namespace

SystemServices& System() {
    static SystemServices table{ApplicationFolder, ApplicationName, DebugTrace, WarningSound};
    return table;
}

} // namespace fileio::platform
