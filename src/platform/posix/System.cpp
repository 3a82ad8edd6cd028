// System.cpp - names, folders and traces of the system, POSIX implementation.

#include "platform/Platform.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <system_error>
#include <unistd.h>

namespace fileio::platform {

namespace {

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

bool ApplicationFile(std::string& out) {
    std::string buffer(256, '\0');
    for (;;) {
        ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (n < 0)
            return false;
        if (static_cast<std::size_t>(n) < buffer.size()) {
            buffer.resize(static_cast<std::size_t>(n));
            out = std::move(buffer);
            return true;
        }
        if (buffer.size() > (1u << 20))
            return false;
        buffer.resize(buffer.size() * 2);
    }
}

void DebugTrace([[maybe_unused]] const char* text) {
#if !defined(NDEBUG)
    std::fputs(text, stderr);
#endif
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
    static SystemServices table = {
        ComputerName,  HostName,        ApplicationFile, DebugTrace,
        LastErrorText, BeginWaitCursor, EndWaitCursor,
    };
    return table;
}

} // namespace fileio::platform
