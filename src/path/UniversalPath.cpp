// UniversalPath.cpp - native and universal forms, and the component arithmetic of universal
// paths (depth, shared depth, shortening).

#include "fileio/path/UniversalPath.h"

#include "path/PathForms.h"

namespace fileio::detail {

namespace {

/// The separators of universal path components: a drive letter is a component of its own.
bool IsComponentSeparator(char c) noexcept {
    return c == ':' || c == '/';
}

int CountComponents(std::string_view path) noexcept {
    int count = 0;
    bool inComponent = false;
    for (char c : path) {
        if (IsComponentSeparator(c)) {
            inComponent = false;
        } else if (!inComponent) {
            inComponent = true;
            ++count;
        }
    }
    return count;
}

} // namespace

std::string NativeToUniversal(std::string_view path) {
    std::string out(path);
    for (char& c : out)
        if (c == '\\')
            c = '/';
    return out;
}

std::string UniversalToNative(std::string_view path, PathStyle style) {
    if (path.empty())
        return {};
    std::string out = GetServerFileName(path, style);
    char native = NativeSeparator(style);
    for (char& c : out) {
        if (c == '/' || (style == PathStyle::Posix && c == '\\'))
            c = native;
        else if (c == '\x12')
            c = '/';
    }
    return out;
}

int PathDepth(std::string_view path) {
    std::string copy(path);
    RemoveDoubleSeparators(copy);
    return CountComponents(copy);
}

int MatchPathDepth(std::string_view a, std::string_view b) {
    if (a.empty() || b.empty())
        return -1;
    std::size_t n = 0;
    while (n < a.size() && n < b.size() && AsciiLower(a[n]) == AsciiLower(b[n]))
        ++n;
    if (n == 0)
        return 0;
    auto boundary = [&](std::size_t i) {
        bool endA = i >= a.size() || IsComponentSeparator(a[i]);
        bool endB = i >= b.size() || IsComponentSeparator(b[i]);
        return endA && endB;
    };
    while (!boundary(n) && n > 0)
        --n;
    if (n < 1)
        return 0;
    return PathDepth(a.substr(0, n));
}

std::string ShortenPath(std::string_view path, int count) {
    if (count < 1)
        return {};
    int seen = 0;
    bool inComponent = false;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (IsComponentSeparator(path[i])) {
            inComponent = false;
        } else if (!inComponent) {
            inComponent = true;
            if (seen++ == count)
                return std::string(path.substr(i));
        }
    }
    return {};
}

} // namespace fileio::detail

using fileio::platform::kNativePathStyle;

String NativeToUniversal(const String& path) {
    return String(fileio::detail::NativeToUniversal(path.View()));
}

String UniversalToNative(const String& path) {
    return String(fileio::detail::UniversalToNative(path.View(), kNativePathStyle));
}

int GetPathDepth(const String& path) {
    return fileio::detail::PathDepth(path.View());
}

int MatchPathDepth(const String& a, const String& b) {
    return fileio::detail::MatchPathDepth(a.View(), b.View());
}

String ShortenPath(const String& path, int count) {
    return String(fileio::detail::ShortenPath(path.View(), count));
}
