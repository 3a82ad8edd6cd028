// String.cpp - construction, assignment, access, appending and removing, and the storage
// of String objects in the string pool.

#include "fileio/core/String.h"

#include "core/StringAscii.h"
#include "fileio/memory/NamedPools.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

/// A pool buffer with room for n bytes of text (n + 1 zeroed bytes).
char* AllocateText(std::size_t n) {
    return static_cast<char*>(AllocString(n));
}

/// A pool buffer holding a then b; null when both are empty.
char* Concatenate(std::string_view a, std::string_view b) {
    if (a.empty() && b.empty())
        return nullptr;
    char* buffer = AllocateText(a.size() + b.size());
    if (!a.empty())
        std::memcpy(buffer, a.data(), a.size());
    if (!b.empty())
        std::memcpy(buffer + a.size(), b.data(), b.size());
    return buffer;
}

std::string_view ViewOf(const char* text) {
    return text ? std::string_view(text) : std::string_view();
}

} // namespace

char* String::CopyOf(std::string_view text) {
    return Concatenate(text, {});
}

void String::Install(char* buffer) noexcept {
    FreeString(m_str);
    m_str = buffer;
}

// ---- construction ---------------------------------------------------------------------

String::String(const String& other) : m_str(CopyOf(other.View())) {}

String::String(String&& other) : m_str(CopyOf(other.View())) {}

String::String(const char* text) : m_str(CopyOf(ViewOf(text))) {}

String::String(const char* p, int n)
    : m_str(AllocateText(static_cast<std::size_t>(std::max(n, 0)))) {
    if (n > 0 && p != nullptr)
        std::memcpy(m_str, p, static_cast<std::size_t>(n));
}

String::String(char c) : m_str(AllocateText(1)) {
    m_str[0] = c;
}

String::String(unsigned char c) : String(static_cast<char>(c)) {}

String::String(char c, int n) : m_str(AllocateText(static_cast<std::size_t>(std::max(n, 0)))) {
    if (n > 0)
        std::memset(m_str, c, static_cast<std::size_t>(n));
}

String::String(int n, int) : m_str(AllocateText(static_cast<std::size_t>(std::max(n, 0)))) {}

String::String(const std::string& text) : m_str(CopyOf(text)) {}

String::~String() {
    Install(nullptr);
}

// ---- assignment -----------------------------------------------------------------------

String& String::operator=(const String& other) {
    if (this != &other)
        Install(CopyOf(other.View()));
    return *this;
}

String& String::operator=(String&& other) {
    return *this = static_cast<const String&>(other);
}

String& String::operator=(const char* text) {
    Install(CopyOf(ViewOf(text)));
    return *this;
}

String& String::operator=(const unsigned char* text) {
    return *this = reinterpret_cast<const char*>(text);
}

String& String::operator=(const std::string& text) {
    Install(CopyOf(text));
    return *this;
}

void String::Set(const char* p, int n) {
    Install(p != nullptr && n >= 1 ? CopyOf(std::string_view(p, static_cast<std::size_t>(n)))
                                   : nullptr);
}

// ---- access ---------------------------------------------------------------------------

unsigned long long String::GetLength() const noexcept {
    return View().size();
}

int String::GetLength_Int() const noexcept {
    return static_cast<int>(std::min<unsigned long long>(GetLength(), INT_MAX));
}

// ---- appending and removing -------------------------------------------------------------

String& String::operator+=(const String& s) {
    if (s.IsNotEmpty())
        Install(Concatenate(View(), s.View())); // built before the old buffer goes
    return *this;
}

String& String::operator+=(char c) {
    if (c != '\0')
        Install(Concatenate(View(), std::string_view(&c, 1)));
    return *this;
}

int String::RemoveAll(const String& pattern) {
    const std::string_view text = View();
    const std::string_view remove = pattern.View();
    std::size_t at = fileio::detail::FindText(text, remove, 0, true);
    if (at == std::string_view::npos)
        return 0;
    // The result is shorter than the text; its buffer keeps the text's length, as a
    // String's buffer may be larger than its text.
    char* buffer = AllocateText(text.size());
    std::size_t kept = 0;
    std::size_t from = 0;
    int count = 0;
    for (; at != std::string_view::npos; at = fileio::detail::FindText(text, remove, from, true)) {
        std::memcpy(buffer + kept, text.data() + from, at - from);
        kept += at - from;
        from = at + remove.size();
        ++count;
    }
    std::memcpy(buffer + kept, text.data() + from, text.size() - from);
    Install(buffer);
    return count;
}

// ---- storage of String objects ----------------------------------------------------------

void* String::operator new(std::size_t size) {
    return AllocString(size);
}

void String::operator delete(void* p) noexcept {
    FreeString(p);
}

// ---- concatenation --------------------------------------------------------------------

String operator+(const String& a, const String& b) {
    String result(a);
    result += b;
    return result;
}

String operator+(const String& a, const char* b) {
    return a + String(b);
}

String operator+(const char* a, const String& b) {
    return String(a) + b;
}
