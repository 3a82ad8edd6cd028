// Terminal_win32.cpp - the standard streams on Windows: binary mode, consoles that take
// colour sequences.

#include "Terminal.h"

#include <fcntl.h>
#include <initializer_list>
#include <io.h>
#include <windows.h>

namespace fileio::tool {

namespace {

/// The console handle behind `stream`, or null when it is not a console.
HANDLE ConsoleOf(std::FILE* stream) {
    const HANDLE handle = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
    DWORD mode = 0;
    if (handle == INVALID_HANDLE_VALUE || !::GetConsoleMode(handle, &mode))
        return nullptr;
    return handle;
}

} // namespace

void PrepareStandardStreams() {
    for (std::FILE* stream : {stdout, stderr}) {
        ::_setmode(::_fileno(stream), _O_BINARY);
        if (const HANDLE console = ConsoleOf(stream)) {
            DWORD mode = 0;
            ::GetConsoleMode(console, &mode);
            ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
        }
    }
}

bool IsTerminal(std::FILE* stream) {
    return ConsoleOf(stream) != nullptr;
}

int TerminalColumns(std::FILE* stream) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const HANDLE console = ConsoleOf(stream);
    if (console == nullptr || !::GetConsoleScreenBufferInfo(console, &info))
        return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

} // namespace fileio::tool
