// MountTable.cpp - reading a mount table and the connection names of network mounts.
// Compiled on every platform (the text is only read on POSIX) so that its tests run
// everywhere.

#include "platform/Platform.h"

namespace fileio::platform {

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

bool IsOctal(char c) {
    return c >= '0' && c <= '7';
}

/// Decodes the octal escapes the kernel writes for blanks, newlines and backslashes.
std::string Unescape(std::string_view field) {
    std::string out;
    out.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && IsOctal(field[i + 1]) &&
            IsOctal(field[i + 2]) && IsOctal(field[i + 3])) {
            int value = (field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0');
            out += static_cast<char>(value & 0xFF);
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

} // namespace

std::vector<MountEntry> ParseMountTable(std::string_view text) {
    std::vector<MountEntry> entries;
    std::size_t lineStart = 0;
    while (lineStart < text.size()) {
        std::size_t lineEnd = text.find('\n', lineStart);
        if (lineEnd == std::string_view::npos)
            lineEnd = text.size();
        std::string_view line = text.substr(lineStart, lineEnd - lineStart);
        lineStart = lineEnd + 1;

        std::string fields[3];
        int count = 0;
        std::size_t i = 0;
        while (count < 3) {
            while (i < line.size() && IsBlank(line[i]))
                ++i;
            if (i >= line.size())
                break;
            std::size_t end = i;
            while (end < line.size() && !IsBlank(line[end]))
                ++end;
            fields[count++] = Unescape(line.substr(i, end - i));
            i = end;
        }
        if (count == 3)
            entries.push_back({std::move(fields[0]), std::move(fields[1]), std::move(fields[2])});
    }
    return entries;
}

bool IsNetworkFileSystem(std::string_view type) {
    return type == "cifs" || type == "smb3" || type == "smbfs" || type == "nfs" || type == "nfs4";
}

std::string ConnectionOfMountSource(std::string_view source) {
    std::string text(source);
    for (char& c : text)
        if (c == '\\')
            c = '/';
    std::string out;
    if (text.size() > 2 && text[0] == '/' && text[1] == '/') {
        out = std::move(text);
    } else {
        std::size_t colon = text.find(":/");
        if (colon == std::string::npos || colon == 0 || text.find('/') < colon)
            return {};
        out = "//";
        out.append(text, 0, colon);
        std::size_t rest = colon + 1;
        while (rest < text.size() && text[rest] == '/')
            ++rest;
        if (rest < text.size()) {
            out += '/';
            out.append(text, rest, std::string::npos);
        }
    }
    while (out.size() > 2 && out.back() == '/')
        out.pop_back();
    return out;
}

} // namespace fileio::platform
