// StringCompare.cpp - comparison of Strings, and the "C"-locale case-insensitive matching
// that comparison and the searching text operations share.

#include "fileio/core/String.h"

#include "core/StringAscii.h"

#include <algorithm>

namespace fileio::detail {

int CompareNoCase(const char* a, const char* b) noexcept {
    for (;; ++a, ++b) {
        const int x = ByteValue(ToLower(*a));
        const int y = ByteValue(ToLower(*b));
        if (x != y || x == 0)
            return x - y;
    }
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) noexcept {
    if (prefix.size() > text.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i)
        if (!EqualNoCase(text[i], prefix[i]))
            return false;
    return true;
}

namespace {

bool MatchesAt(std::string_view text, std::size_t at, std::string_view pattern,
               bool caseSensitive) noexcept {
    const std::string_view candidate = text.substr(at, pattern.size());
    return caseSensitive ? candidate == pattern : StartsWithNoCase(candidate, pattern);
}

} // namespace

std::size_t FindText(std::string_view text, std::string_view pattern, std::size_t from,
                     bool caseSensitive) noexcept {
    if (pattern.empty() || pattern.size() > text.size())
        return std::string_view::npos;
    const std::size_t lastStart = text.size() - pattern.size();
    for (std::size_t at = from; at <= lastStart; ++at)
        if (MatchesAt(text, at, pattern, caseSensitive))
            return at;
    return std::string_view::npos;
}

std::size_t ReverseFindText(std::string_view text, std::string_view pattern,
                            std::size_t last) noexcept {
    if (pattern.empty() || pattern.size() > text.size())
        return std::string_view::npos;
    for (std::size_t at = std::min(last, text.size() - pattern.size()) + 1; at-- > 0;)
        if (MatchesAt(text, at, pattern, false))
            return at;
    return std::string_view::npos;
}

} // namespace fileio::detail

namespace {

/// The rule every ordering operator shares: null orders before every non-null string.
/// Returns a negative, zero or positive value like _stricmp.
int Order(const String& a, const String& b) noexcept {
    if (a.Get() == nullptr || b.Get() == nullptr)
        return (a.Get() != nullptr) - (b.Get() != nullptr);
    return fileio::detail::CompareNoCase(a.Get(), b.Get());
}

} // namespace

bool operator==(const String& a, const String& b) noexcept {
    return Order(a, b) == 0;
}
bool operator!=(const String& a, const String& b) noexcept {
    return Order(a, b) != 0;
}
bool operator<(const String& a, const String& b) noexcept {
    return Order(a, b) < 0;
}
bool operator<=(const String& a, const String& b) noexcept {
    return Order(a, b) <= 0;
}
bool operator>(const String& a, const String& b) noexcept {
    return Order(a, b) > 0;
}
bool operator>=(const String& a, const String& b) noexcept {
    return Order(a, b) >= 0;
}

bool String::Compare(const String& other, bool caseSensitive) const noexcept {
    if (IsEmpty() || other.IsEmpty())
        return false;
    const std::string_view a = View();
    const std::string_view b = other.View();
    if (a.size() != b.size())
        return false;
    return caseSensitive ? a == b : fileio::detail::StartsWithNoCase(a, b);
}
