// CommandLine.cpp - the Windows command line of an argument vector. Pure text, so both
// platforms test it; the Win32 process services are its user.

#include "platform/Platform.h"

namespace fileio::platform {

namespace {

/// True when `argument` reaches the program as it is without quotes.
bool NeedsNoQuotes(std::string_view argument) {
    return !argument.empty() && argument.find_first_of(" \t\n\v\"") == std::string_view::npos;
}

void AppendQuoted(std::string_view argument, std::string& line) {
    if (NeedsNoQuotes(argument)) {
        line += argument;
        return;
    }
    line += '"';
    std::size_t backslashes = 0;
    for (const char c : argument) {
        if (c == '\\') {
            ++backslashes;
            continue;
        }
        // Backslashes before a quote are doubled and the quote escaped; elsewhere they
        // stand for themselves.
        line.append(c == '"' ? backslashes * 2 + 1 : backslashes, '\\');
        backslashes = 0;
        line += c;
    }
    line.append(backslashes * 2, '\\'); // the closing quote must stay a quote
    line += '"';
}

} // namespace

std::string WindowsCommandLine(const std::vector<std::string>& argv) {
    std::string line;
    for (const std::string& argument : argv) {
        if (!line.empty())
            line += ' ';
        AppendQuoted(argument, line);
    }
    return line;
}

} // namespace fileio::platform
