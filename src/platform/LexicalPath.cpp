// LexicalPath.cpp - the POSIX full-path rule, purely textual. Compiled on every platform so
// that its tests run everywhere; the POSIX file services use it for full-path resolution.

#include "platform/Platform.h"

namespace fileio::platform {

namespace {

bool IsSeparator(char c) {
    return c == '/' || c == '\\';
}

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// The root of an absolute path ("/", "//" or "C:/") and how many bytes of `text` it spans
/// (all separators that follow it included); an empty root for a relative path.
std::string_view RootOf(std::string_view text, std::string& root) {
    std::size_t skip = 0;
    if (text.size() >= 2 && IsSeparator(text[0]) && IsSeparator(text[1])) {
        root = "//";
        skip = 2;
    } else if (!text.empty() && IsSeparator(text[0])) {
        root = "/";
        skip = 1;
    } else if (text.size() >= 3 && IsLetter(text[0]) && text[1] == ':' && IsSeparator(text[2])) {
        root.assign(text.substr(0, 2));
        root += '/';
        skip = 3;
    } else {
        root.clear();
    }
    while (skip < text.size() && IsSeparator(text[skip]))
        ++skip;
    return text.substr(skip);
}

/// Adds the components of `rest` to `parts`, folding "." and "..".
void Fold(std::string_view rest, bool rooted, std::vector<std::string_view>& parts) {
    std::size_t i = 0;
    while (i < rest.size()) {
        std::size_t end = i;
        while (end < rest.size() && !IsSeparator(rest[end]))
            ++end;
        std::string_view part = rest.substr(i, end - i);
        if (part.empty() || part == ".") {
            // nothing
        } else if (part == "..") {
            if (!parts.empty() && parts.back() != "..")
                parts.pop_back();
            else if (!rooted)
                parts.push_back(part); // a relative path keeps what it cannot fold
        } else {
            parts.push_back(part);
        }
        i = end + 1;
    }
}

} // namespace

bool IsLexicallyAbsolute(std::string_view path) {
    std::string root;
    RootOf(path, root);
    return !root.empty();
}

std::string LexicalFullPath(std::string_view currentDir, std::string_view path) {
    if (path.empty())
        return {};
    std::string root;
    std::vector<std::string_view> parts;
    std::string_view rest = RootOf(path, root);
    if (root.empty()) {
        std::string_view dirRest = RootOf(currentDir, root);
        Fold(dirRest, !root.empty(), parts);
    }
    Fold(rest, !root.empty(), parts);

    std::string out = root;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            out += '/';
        out += parts[i];
    }
    if (IsSeparator(path.back()) && !parts.empty())
        out += '/';
    return out;
}

} // namespace fileio::platform
