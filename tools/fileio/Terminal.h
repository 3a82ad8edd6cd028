// Terminal.h - what the tool needs to know about its standard streams, one small source per
// operating system (Terminal_posix.cpp, Terminal_win32.cpp), chosen by the build.
#pragma once

#include <cstdio>

namespace fileio::tool {

/// Puts standard output and standard error into the state the tool writes them in: bytes
/// pass as they are (no "\n" to "\r\n" translation on Windows, so that a dump piped to a
/// file is the same file on every platform), and a Windows console takes the terminal's
/// colour sequences.
void PrepareStandardStreams();

/// Whether `stream` (stdout or stderr) is a terminal.
bool IsTerminal(std::FILE* stream);

/// The width of the terminal behind `stream` in columns; 0 when it cannot be told.
int TerminalColumns(std::FILE* stream);

} // namespace fileio::tool
