// UrlText.cpp - percent-encoding for the browser and mail URLs, and the revision answer.

#include "net/UrlText.h"

#include <climits>
#include <initializer_list>
#include <utility>

namespace fileio::net {

namespace {

constexpr std::string_view kHttp = "http", kHttps = "https";
constexpr std::string_view kDefaultScheme = "http://";
constexpr std::string_view kMailScheme = "mailto:";
constexpr std::string_view kLineEnd = "%0D%0A";
/// Bytes a URL never holds as they are, besides blanks, controls and non-ASCII bytes.
constexpr std::string_view kNeverInUrl = "\"<>\\^`{|}";
/// Bytes an address keeps besides letters and digits.
constexpr std::string_view kAddressKeeps = "-._~@!$'*+,;=";
/// Bytes a subject or body keeps besides letters and digits.
constexpr std::string_view kFieldKeeps = "-._~";

bool IsAlpha(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsDigit(unsigned char c) {
    return c >= '0' && c <= '9';
}

bool SameLetters(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if ((a[i] | 0x20) != (b[i] | 0x20))
            return false;
    return true;
}

void AppendEscape(unsigned char c, std::string& out) {
    constexpr char kHex[] = "0123456789ABCDEF";
    out += '%';
    out += kHex[c >> 4];
    out += kHex[c & 0x0F];
}

/// Appends `text`, escaping every byte that is neither a letter, a digit nor in `keeps`,
/// and writing each line end as CR LF.
void AppendEncoded(std::string_view text, std::string_view keeps, std::string& out) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == '\r' || c == '\n') {
            out += kLineEnd;
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                ++i;
        } else if (IsAlpha(c) || IsDigit(c) || keeps.find(static_cast<char>(c)) != keeps.npos) {
            out += static_cast<char>(c);
        } else {
            AppendEscape(c, out);
        }
    }
}

/// The length of the scheme at the start of `text` (the letters before ":"), 0 for none.
std::size_t SchemeLength(std::string_view text) {
    if (text.empty() || !IsAlpha(static_cast<unsigned char>(text[0])))
        return 0;
    std::size_t n = 1;
    while (n < text.size()) {
        const auto c = static_cast<unsigned char>(text[n]);
        if (!IsAlpha(c) && !IsDigit(c) && c != '+' && c != '-' && c != '.')
            break;
        ++n;
    }
    if (n == text.size() || text[n] != ':')
        return 0;
    // "host:8080" names a port, not a scheme.
    std::size_t digits = n + 1;
    while (digits < text.size() && IsDigit(static_cast<unsigned char>(text[digits])))
        ++digits;
    const bool port = digits > n + 1 && (digits == text.size() || text[digits] == '/');
    return port ? 0 : n;
}

} // namespace

std::string BrowserUrl(std::string_view text) {
    if (text.empty())
        return {};
    const std::size_t scheme = SchemeLength(text);
    if (scheme != 0 && !SameLetters(text.substr(0, scheme), kHttp) &&
        !SameLetters(text.substr(0, scheme), kHttps))
        return {};
    std::string url(scheme == 0 ? kDefaultScheme : std::string_view());
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (c <= ' ' || c >= 0x7F || kNeverInUrl.find(ch) != kNeverInUrl.npos)
            AppendEscape(c, url);
        else
            url += ch;
    }
    return url;
}

std::string MailUrl(std::string_view address, std::string_view subject, std::string_view body) {
    std::string url(kMailScheme);
    AppendEncoded(address, kAddressKeeps, url);
    char separator = '?';
    for (const auto& [name, value] : {std::pair{"subject=", subject}, std::pair{"body=", body}}) {
        if (value.empty())
            continue;
        url += separator;
        url += name;
        AppendEncoded(value, kFieldKeeps, url);
        separator = '&';
    }
    return url;
}

int ParseRevision(std::string_view answer) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = answer.find_first_not_of(kBlanks);
    if (first == answer.npos)
        return -1;
    answer = answer.substr(first, answer.find_last_not_of(kBlanks) - first + 1);
    long long value = 0;
    for (const char c : answer) {
        if (!IsDigit(static_cast<unsigned char>(c)))
            return -1;
        value = value * 10 + (c - '0');
        if (value > INT_MAX)
            return -1;
    }
    return static_cast<int>(value);
}

} // namespace fileio::net
