// System.cpp - facts about the running program and its system, POSIX implementation.

#include "platform/Platform.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <string>
#include <system_error>
#include <unistd.h>

namespace fileio::platform {

namespace {

/// The full path of the running program's executable; empty when it cannot be had.
std::string ExecutablePath() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0)
            return {};
        if (static_cast<std::size_t>(length) < path.size()) {
            path.resize(static_cast<std::size_t>(length));
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::string ApplicationFolder() {
    const std::string path = ExecutablePath();
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return {};
    return path.substr(0, slash == 0 ? 1 : slash);
}

std::string ApplicationName() {
    std::string name = ExecutablePath();
    name.erase(0, name.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    return dot == 0 || dot == std::string::npos ? name : name.substr(0, dot);
}

void DebugTrace(const char* text) {
    std::fputs(text, stderr);
    std::fflush(stderr);
}

void WarningSound(unsigned int) {
    if (::isatty(STDERR_FILENO) == 1) {
        std::fputc('\a', stderr);
        std::fflush(stderr);
    }
}

bool HostName(std::string& out) {
    char buffer[HOST_NAME_MAX + 1] = {};
    if (::gethostname(buffer, sizeof buffer - 1) != 0 || buffer[0] == '\0')
        return false;
    out = buffer;
    return true;
}

bool ComputerName(std::string& out) {
    if (!HostName(out))
        return false;
    out.erase(std::min(out.find('.'), out.size()));
    return !out.empty();
}

std::string LastErrorText() {
    return std::generic_category().message(errno);
}

void* BeginWaitCursor() {
    return nullptr;
}

void EndWaitCursor(void*) {}

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
