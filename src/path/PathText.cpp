// PathText.cpp - the purely textual path operations.

#include "path/PathText.h"

namespace fileio::detail {

namespace {

bool SameChar(char a, char b, PathStyle style) noexcept {
    return style == PathStyle::Windows ? AsciiLower(a) == AsciiLower(b) : a == b;
}

std::size_t LastSeparator(std::string_view path) noexcept {
    for (std::size_t i = path.size(); i > 0; --i)
        if (IsSeparator(path[i - 1]))
            return i - 1;
    return std::string_view::npos;
}

} // namespace

char NativeSeparator(PathStyle style) noexcept {
    return style == PathStyle::Windows ? '\\' : '/';
}

char ForeignSeparator(PathStyle style) noexcept {
    return style == PathStyle::Windows ? '/' : '\\';
}

std::string_view PathOnly(std::string_view path) noexcept {
    std::size_t last = LastSeparator(path);
    return last == std::string_view::npos ? std::string_view() : path.substr(0, last + 1);
}

std::string_view NameOnly(std::string_view path) noexcept {
    std::size_t last = LastSeparator(path);
    return last == std::string_view::npos ? path : path.substr(last + 1);
}

std::string_view SuffixOnly(std::string_view path) noexcept {
    std::string_view name = NameOnly(path);
    std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

std::string_view NameOnlyWithoutSuffix(std::string_view path) noexcept {
    std::string_view name = NameOnly(path);
    return name.substr(0, name.rfind('.'));
}

std::string CombineNameToPath(std::string_view folder, std::string_view name, PathStyle style) {
    if (folder.empty())
        return std::string(name);
    std::size_t end = folder.size();
    while (end > 0 && IsSeparator(folder[end - 1]))
        --end;
    std::string out;
    if (end == 0) {
        out.assign(folder);
    } else {
        out.assign(folder.substr(0, end));
        out += NativeSeparator(style);
    }
    std::size_t start = 0;
    while (start < name.size() && IsSeparator(name[start]))
        ++start;
    out.append(name.substr(start));
    return out;
}

std::size_t RemoveDoubleSeparators(std::string& text) {
    std::size_t read = 0;
    std::size_t write = 0;
    bool afterSeparator = false;
    if (text.size() >= 2 && IsSeparator(text[0]) && IsSeparator(text[1])) {
        read = write = 2;
        afterSeparator = true;
    }
    for (; read < text.size(); ++read) {
        char c = text[read];
        if (IsSeparator(c)) {
            if (afterSeparator)
                continue;
            afterSeparator = true;
        } else {
            afterSeparator = false;
        }
        text[write++] = c;
    }
    std::size_t removed = text.size() - write;
    text.resize(write);
    return removed;
}

void ToNativeSeparators(std::string& text, PathStyle style) {
    char native = NativeSeparator(style);
    for (char& c : text)
        if (IsSeparator(c))
            c = native;
}

bool EqualNoCase(std::string_view a, std::string_view b) noexcept {
    return SameName(a, b, PathStyle::Windows);
}

bool SameName(std::string_view a, std::string_view b, PathStyle style) noexcept {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!SameChar(a[i], b[i], style))
            return false;
    return true;
}

bool NameLess(std::string_view a, std::string_view b, PathStyle style) noexcept {
    if (style == PathStyle::Windows) {
        std::size_t n = a.size() < b.size() ? a.size() : b.size();
        for (std::size_t i = 0; i < n; ++i) {
            unsigned char x = static_cast<unsigned char>(AsciiLower(a[i]));
            unsigned char y = static_cast<unsigned char>(AsciiLower(b[i]));
            if (x != y)
                return x < y;
        }
        if (a.size() != b.size())
            return a.size() < b.size();
    }
    return a < b;
}

bool IsWithinFolder(std::string_view path, std::string_view folder, PathStyle style) noexcept {
    std::size_t end = folder.size();
    while (end > 0 && IsSeparator(folder[end - 1]))
        --end;
    if (end == 0 && !folder.empty())
        return !path.empty() && IsSeparator(path[0]); // the root contains every rooted path
    if (end == 0 || path.size() < end ||
        !SameName(path.substr(0, end), folder.substr(0, end), style))
        return false;
    return path.size() == end || IsSeparator(path[end]);
}

bool MatchesWildcard(std::string_view name, std::string_view pattern, PathStyle style) noexcept {
    if (pattern.empty() || pattern == "*.*")
        return true;
    // Greedy matching with one backtrack point: the last "*" seen and where it resumed.
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t starP = std::string_view::npos;
    std::size_t starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starN = n;
        } else if (p < pattern.size() &&
                   (pattern[p] == '?' || SameChar(pattern[p], name[n], style))) {
            ++p;
            ++n;
        } else if (starP != std::string_view::npos) {
            p = starP + 1;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

std::string Quote(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    out += '"';
    out.append(text);
    out += '"';
    return out;
}

} // namespace fileio::detail
