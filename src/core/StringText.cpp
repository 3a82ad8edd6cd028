// StringText.cpp - the text operations of String: searching, parts, tokens, replacing,
// trimming, case, XML escapes, abbreviation for display and numbered names.
//
// Every operation works on the text's view (empty for null), so the null string needs no
// case of its own, and no index ever leaves the text.

#include "fileio/core/String.h"

#include "core/StringAscii.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstring>
#include <string>
#include <unordered_set>

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
constexpr std::string_view kPathSeparators = "\\/";

/// The part of a text that int indices can address.
std::string_view Indexable(std::string_view text) {
    return text.substr(0, static_cast<std::size_t>(INT_MAX));
}

int ToIndex(std::size_t offset) {
    return offset == npos ? -1 : static_cast<int>(offset);
}

/// A start index for a forward search: negative counts as 0.
std::size_t ForwardStart(int start) {
    return static_cast<std::size_t>(std::max(start, 0));
}

/// A start index for a backward search: negative means "from the end".
std::size_t BackwardStart(int start) {
    return start < 0 ? npos : static_cast<std::size_t>(start);
}

std::string ToLowerCopy(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        c = fileio::detail::ToLower(c);
    return lower;
}

// ---- XML escapes ------------------------------------------------------------------------

struct NamedEscape {
    std::string_view text;
    char character;
};

constexpr std::array<NamedEscape, 5> kNamedEscapes = {{
    {"&amp;", '&'},
    {"&lt;", '<'},
    {"&gt;", '>'},
    {"&quot;", '"'},
    {"&apos;", '\''},
}};

constexpr int kMaxEscapeDigits = 8;

/// The length of the escape at the start of text (which begins with "&") and the
/// character it stands for; 0 when text does not begin with an escape this library reads.
std::size_t MatchEscape(std::string_view text, char& character) {
    for (const NamedEscape& escape : kNamedEscapes) {
        if (text.starts_with(escape.text)) {
            character = escape.character;
            return escape.text.size();
        }
    }
    if (!text.starts_with("&#"))
        return 0;
    const bool hex = text.size() > 2 && fileio::detail::ToLower(text[2]) == 'x';
    const std::size_t first = hex ? 3 : 2;
    // Only the first few bytes are looked at, so a long run of "&#" costs no more than that.
    const std::size_t semicolon = text.substr(0, first + kMaxEscapeDigits + 1).find(';', first);
    if (semicolon == npos || semicolon == first)
        return 0;
    unsigned value = 0;
    const std::from_chars_result result =
        std::from_chars(text.data() + first, text.data() + semicolon, value, hex ? 16 : 10);
    if (result.ptr != text.data() + semicolon || value < 1 || value > 255)
        return 0;
    character = static_cast<char>(value);
    return semicolon + 1;
}

/// The escape that stands for c, or an empty view when c needs none.
std::string_view EscapeFor(char c) {
    for (const NamedEscape& escape : kNamedEscapes)
        if (escape.character == c)
            return escape.text;
    return {};
}

// ---- numbered names -----------------------------------------------------------------------

constexpr std::size_t kMaxSuffixDigits = 9;

/// How many trailing characters of text form its number suffix (0 to 9).
std::size_t SuffixLength(std::string_view text) {
    std::size_t length = 0;
    while (length < kMaxSuffixDigits && length < text.size() &&
           fileio::detail::IsDigit(text[text.size() - 1 - length]))
        ++length;
    return length;
}

} // namespace

// ---- searching ----------------------------------------------------------------------------

int String::Find(char c, int start) const noexcept {
    return ToIndex(fileio::detail::FindText(Indexable(View()), std::string_view(&c, 1),
                                            ForwardStart(start), false));
}

int String::Find(const String& pattern, int start) const noexcept {
    return ToIndex(
        fileio::detail::FindText(Indexable(View()), pattern.View(), ForwardStart(start), false));
}

int String::ReverseFind(char c, int start) const noexcept {
    return ToIndex(fileio::detail::ReverseFindText(Indexable(View()), std::string_view(&c, 1),
                                                   BackwardStart(start)));
}

int String::ReverseFind(const String& pattern, int start) const noexcept {
    return ToIndex(
        fileio::detail::ReverseFindText(Indexable(View()), pattern.View(), BackwardStart(start)));
}

// ---- parts --------------------------------------------------------------------------------

String String::Left(int count) const {
    return Mid(0, std::max(count, 0));
}

String String::Right(int count) const {
    const std::string_view text = View();
    const std::size_t length = std::min(static_cast<std::size_t>(std::max(count, 0)), text.size());
    String part;
    part.m_str = CopyOf(text.substr(text.size() - length));
    return part;
}

String String::Mid(int first, int count) const {
    const std::string_view text = View();
    const std::size_t from = std::min(ForwardStart(first), text.size());
    String part;
    part.m_str = CopyOf(text.substr(from, count < 0 ? npos : static_cast<std::size_t>(count)));
    return part;
}

String String::Tokenize(const String& delimiters, int& position) const {
    const std::string_view text = Indexable(View());
    const std::size_t start =
        position < 0
            ? npos
            : text.find_first_not_of(delimiters.View(), static_cast<std::size_t>(position));
    if (start == npos) {
        position = -1;
        return {};
    }
    const std::size_t stop = std::min(text.find_first_of(delimiters.View(), start), text.size());
    position = static_cast<int>(std::min(stop + 1, text.size()));
    String token;
    token.m_str = CopyOf(text.substr(start, stop - start));
    return token;
}

// ---- changing the text in place ---------------------------------------------------------------

int String::Replace(const String& oldText, const String& newText) {
    const std::string_view text = View();
    const std::string_view from = oldText.View();
    std::string result;
    std::size_t done = 0;
    int count = 0;
    for (std::size_t at = fileio::detail::FindText(text, from, 0, false); at != npos;
         at = fileio::detail::FindText(text, from, done, false)) {
        result.append(text.substr(done, at - done)).append(newText.View());
        done = at + from.size();
        ++count;
    }
    if (count > 0)
        Install(CopyOf(result.append(text.substr(done))));
    return count;
}

String& String::TrimCharacters(std::string_view characters, bool left, bool right) {
    const std::string_view text = View();
    const std::size_t first = left ? text.find_first_not_of(characters) : 0;
    if (first == npos) {
        if (!text.empty())
            Install(nullptr);
        return *this;
    }
    const std::size_t end = right ? text.find_last_not_of(characters) + 1 : text.size();
    if (first != 0 || end != text.size())
        Install(CopyOf(text.substr(first, end - first)));
    return *this;
}

String& String::TrimLeft() {
    return TrimCharacters(kWhiteSpace, true, false);
}
String& String::TrimRight() {
    return TrimCharacters(kWhiteSpace, false, true);
}
String& String::Trim() {
    return TrimCharacters(kWhiteSpace, true, true);
}

String& String::TrimLeft(const String& characters) {
    return TrimCharacters(characters.View(), true, false);
}

String& String::TrimRight(const String& characters) {
    return TrimCharacters(characters.View(), false, true);
}

String& String::Trim(const String& characters) {
    return TrimCharacters(characters.View(), true, true);
}

String& String::MakeUpper() noexcept {
    for (char* p = m_str; p != nullptr && *p != '\0'; ++p)
        *p = fileio::detail::ToUpper(*p);
    return *this;
}

String& String::MakeLower() noexcept {
    for (char* p = m_str; p != nullptr && *p != '\0'; ++p)
        *p = fileio::detail::ToLower(*p);
    return *this;
}

// ---- XML escapes --------------------------------------------------------------------------------

int String::ContractXMLEscapes() {
    const std::string_view text = View();
    std::size_t read = 0;
    std::size_t write = 0;
    int count = 0;
    while (read < text.size()) {
        char character = text[read];
        const std::size_t length = character == '&' ? MatchEscape(text.substr(read), character) : 0;
        m_str[write++] = character;
        read += std::max<std::size_t>(length, 1);
        count += length > 0;
    }
    // The text only shrinks, in its own buffer; the bytes it no longer uses are zeroed.
    if (count > 0)
        std::memset(m_str + write, 0, read - write);
    return count;
}

int String::ExpandXMLEscapes() {
    const std::string_view text = View();
    std::string result;
    int count = 0;
    for (char c : text) {
        const std::string_view escape = EscapeFor(c);
        if (escape.empty()) {
            result += c;
        } else {
            result += escape;
            ++count;
        }
    }
    if (count > 0)
        Install(CopyOf(result));
    return count;
}

String String::Quote() const {
    String quoted;
    quoted.m_str = CopyOf(std::string("\"").append(View()).append("\""));
    return quoted;
}

// ---- display
// ----------------------------------------------------------------------------------------

String String::GetAbbreviated(int maxLength) const {
    constexpr std::string_view kEllipsis = "...";
    const std::string_view text = View();
    const std::size_t limit = static_cast<std::size_t>(std::max(maxLength, 0));
    if (text.size() <= limit)
        return *this;
    if (limit <= kEllipsis.size())
        return Left(maxLength);

    std::string shortened;
    // The separator in front of the file name, and the end of the first folder (leading
    // separators, as of "\\server\share" or "/home", belong to that folder).
    const std::size_t nameSeparator = text.find_last_of(kPathSeparators);
    std::size_t headEnd =
        text.find_first_of(kPathSeparators, text.find_first_not_of(kPathSeparators));
    const std::size_t tail = nameSeparator == npos ? 0 : text.size() - nameSeparator;
    for (; headEnd < nameSeparator; headEnd = text.find_first_of(kPathSeparators, headEnd + 1)) {
        if (headEnd + 1 + kEllipsis.size() + tail > limit)
            break;
        shortened.assign(text.substr(0, headEnd + 1))
            .append(kEllipsis)
            .append(text.substr(nameSeparator));
    }
    if (shortened.empty())
        shortened.assign(kEllipsis).append(text.substr(text.size() - (limit - kEllipsis.size())));
    String abbreviated;
    abbreviated.m_str = CopyOf(shortened);
    return abbreviated;
}

// ---- numbered names
// --------------------------------------------------------------------------------

int String::GetNumberSuffix() const noexcept {
    const std::string_view text = View();
    const std::size_t length = SuffixLength(text);
    int value = -1;
    if (length > 0)
        std::from_chars(text.data() + text.size() - length, text.data() + text.size(), value);
    return value;
}

String String::GetWithoutNumberSuffix() const {
    const std::string_view text = View();
    String stem;
    stem.m_str = CopyOf(text.substr(0, text.size() - SuffixLength(text)));
    return stem;
}

String String::GetNextNumberedName() const {
    const std::string_view text = View();
    const std::size_t length = SuffixLength(text);
    const int next = std::max(GetNumberSuffix(), 0) + 1;
    char digits[16];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, next);
    const std::size_t used = static_cast<std::size_t>(result.ptr - digits);
    std::string name(text.substr(0, text.size() - length));
    name.append(length > used ? length - used : 0, '0').append(digits, used);
    String numbered;
    numbered.m_str = CopyOf(name);
    return numbered;
}

String String::GetNextFreeName(std::span<const String> taken) const {
    std::unordered_set<std::string> names;
    for (const String& name : taken)
        names.insert(ToLowerCopy(name.View()));
    String candidate = GetNextNumberedName();
    while (names.count(ToLowerCopy(candidate.View())) != 0)
        candidate = candidate.GetNextNumberedName();
    return candidate;
}
