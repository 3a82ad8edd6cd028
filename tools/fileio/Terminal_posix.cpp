// Terminal_posix.cpp - the standard streams on Linux and other POSIX systems.

#include "Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace fileio::tool {

void PrepareStandardStreams() {}

bool IsTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) != 0;
}

int TerminalColumns(std::FILE* stream) {
    winsize size{};
    if (::ioctl(::fileno(stream), TIOCGWINSZ, &size) != 0)
        return 0;
    return size.ws_col;
}

} // namespace fileio::tool
