// JsonParser.h - a strict JSON parser for the tests: it checks that a text is exactly one
// JSON document (RFC 8259: UTF-8, no trailing commas, no control bytes in strings, numbers
// in the JSON grammar), gives its values as a tree, and prints a tree back in one stable,
// indented form for expected outputs.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fileio::test {

struct JsonValue {
    enum class Type { Null, Bool, Number, String, Array, Object };
    Type type = Type::Null;
    bool boolean = false;
    double number = 0;
    /// A string's value (escapes resolved), or a number's text as written.
    std::string text;
    std::vector<JsonValue> items;
    std::vector<std::pair<std::string, JsonValue>> members;

    /// The member `key` of an object; null when there is none.
    [[nodiscard]] const JsonValue* Find(std::string_view key) const {
        for (const auto& [name, value] : members) {
            if (name == key)
                return &value;
        }
        return nullptr;
    }
};

namespace detail {

class JsonReader {
public:
    explicit JsonReader(std::string_view text) : m_text(text) {}

    std::optional<JsonValue> Document(std::string& error) {
        JsonValue value;
        SkipSpace();
        if (!Value(value, 0) || (SkipSpace(), m_at != m_text.size())) {
            error = m_error.empty() ? "text after the document" : m_error;
            error += " at byte " + std::to_string(m_at);
            return std::nullopt;
        }
        return value;
    }

private:
    static constexpr int kMaxDepth = 200;

    bool Fail(const char* why) {
        if (m_error.empty())
            m_error = why;
        return false;
    }
    void SkipSpace() {
        while (m_at < m_text.size() && (m_text[m_at] == ' ' || m_text[m_at] == '\t' ||
                                        m_text[m_at] == '\n' || m_text[m_at] == '\r'))
            ++m_at;
    }
    bool Take(char c) {
        if (m_at < m_text.size() && m_text[m_at] == c) {
            ++m_at;
            return true;
        }
        return false;
    }
    bool Word(std::string_view word) {
        if (m_text.substr(m_at, word.size()) != word)
            return Fail("unknown word");
        m_at += word.size();
        return true;
    }

    bool Value(JsonValue& value, int depth) {
        if (depth > kMaxDepth)
            return Fail("too deep");
        if (m_at >= m_text.size())
            return Fail("end of text where a value belongs");
        switch (m_text[m_at]) {
        case '{':
            return Object(value, depth);
        case '[':
            return Array(value, depth);
        case '"':
            value.type = JsonValue::Type::String;
            return String(value.text);
        case 't':
            value.type = JsonValue::Type::Bool;
            value.boolean = true;
            return Word("true");
        case 'f':
            value.type = JsonValue::Type::Bool;
            return Word("false");
        case 'n':
            return Word("null");
        default:
            return Number(value);
        }
    }

    bool Object(JsonValue& value, int depth) {
        value.type = JsonValue::Type::Object;
        ++m_at;
        SkipSpace();
        if (Take('}'))
            return true;
        for (;;) {
            std::pair<std::string, JsonValue> member;
            SkipSpace();
            if (m_at >= m_text.size() || m_text[m_at] != '"' || !String(member.first))
                return Fail("a member without a string key");
            SkipSpace();
            if (!Take(':'))
                return Fail("a key without ':'");
            SkipSpace();
            if (!Value(member.second, depth + 1))
                return false;
            value.members.push_back(std::move(member));
            SkipSpace();
            if (Take('}'))
                return true;
            if (!Take(','))
                return Fail("members without ','");
        }
    }

    bool Array(JsonValue& value, int depth) {
        value.type = JsonValue::Type::Array;
        ++m_at;
        SkipSpace();
        if (Take(']'))
            return true;
        for (;;) {
            JsonValue item;
            SkipSpace();
            if (!Value(item, depth + 1))
                return false;
            value.items.push_back(std::move(item));
            SkipSpace();
            if (Take(']'))
                return true;
            if (!Take(','))
                return Fail("items without ','");
        }
    }

    static void AppendUtf8(std::string& out, std::uint32_t code) {
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }

    bool Hex4(std::uint32_t& code) {
        if (m_text.size() - m_at < 4)
            return Fail("a cut \\u escape");
        code = 0;
        for (int i = 0; i < 4; ++i) {
            const char c = m_text[m_at++];
            const int digit = c >= '0' && c <= '9'   ? c - '0'
                              : c >= 'a' && c <= 'f' ? c - 'a' + 10
                              : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                     : -1;
            if (digit < 0)
                return Fail("a bad \\u escape");
            code = code * 16 + static_cast<std::uint32_t>(digit);
        }
        return true;
    }

    /// The length of the valid UTF-8 sequence at m_at, or 0.
    std::size_t Utf8Length() const {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(m_text[i]); };
        const unsigned char lead = byte(m_at);
        const std::size_t length = lead >= 0xF0 && lead <= 0xF4   ? 4
                                   : lead >= 0xE0 && lead <= 0xEF ? 3
                                   : lead >= 0xC2 && lead <= 0xDF ? 2
                                                                  : 0;
        if (length == 0 || m_text.size() - m_at < length)
            return 0;
        std::uint32_t code = lead & (0xFF >> (length + 1));
        for (std::size_t i = 1; i < length; ++i) {
            if ((byte(m_at + i) & 0xC0) != 0x80)
                return 0;
            code = (code << 6) | (byte(m_at + i) & 0x3F);
        }
        const std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (code < smallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return 0;
        return length;
    }

    bool String(std::string& out) {
        ++m_at;
        while (m_at < m_text.size()) {
            const unsigned char c = static_cast<unsigned char>(m_text[m_at]);
            if (c == '"') {
                ++m_at;
                return true;
            }
            if (c < 0x20)
                return Fail("a control byte in a string");
            if (c >= 0x80) {
                const std::size_t length = Utf8Length();
                if (length == 0)
                    return Fail("a string that is not UTF-8");
                out.append(m_text.substr(m_at, length));
                m_at += length;
                continue;
            }
            ++m_at;
            if (c != '\\') {
                out += static_cast<char>(c);
                continue;
            }
            if (m_at >= m_text.size())
                return Fail("a cut escape");
            const char escape = m_text[m_at++];
            const std::string_view simple = "\"\\/bfnrt";
            const std::string_view meaning = "\"\\/\b\f\n\r\t";
            if (const std::size_t which = simple.find(escape); which != std::string_view::npos) {
                out += meaning[which];
                continue;
            }
            if (escape != 'u')
                return Fail("an unknown escape");
            std::uint32_t code = 0;
            if (!Hex4(code))
                return false;
            if (code >= 0xD800 && code <= 0xDBFF) {
                std::uint32_t low = 0;
                if (!Take('\\') || !Take('u') || !Hex4(low) || low < 0xDC00 || low > 0xDFFF)
                    return Fail("a lone surrogate");
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            } else if (code >= 0xDC00 && code <= 0xDFFF) {
                return Fail("a lone surrogate");
            }
            AppendUtf8(out, code);
        }
        return Fail("a string without its end");
    }

    bool Number(JsonValue& value) {
        const std::size_t start = m_at;
        const auto digits = [&] {
            const std::size_t first = m_at;
            while (m_at < m_text.size() && m_text[m_at] >= '0' && m_text[m_at] <= '9')
                ++m_at;
            return m_at - first;
        };
        Take('-');
        if (Take('0')) {
            if (m_at < m_text.size() && m_text[m_at] >= '0' && m_text[m_at] <= '9')
                return Fail("a number with a leading zero");
        } else if (digits() == 0) {
            return Fail("not a value");
        }
        if (Take('.') && digits() == 0)
            return Fail("a number without digits after its point");
        if (Take('e') || Take('E')) {
            if (!Take('+'))
                Take('-');
            if (digits() == 0)
                return Fail("a number without exponent digits");
        }
        value.type = JsonValue::Type::Number;
        value.text = std::string(m_text.substr(start, m_at - start));
        std::from_chars(value.text.data(), value.text.data() + value.text.size(), value.number);
        return true;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::string m_error;
};

inline void Indent(std::string& out, int depth) {
    out.append(static_cast<std::size_t>(depth) * 2, ' ');
}

} // namespace detail

/// The document `text` holds, or nothing (with the reason in `error`) when it is not
/// exactly one valid JSON document.
inline std::optional<JsonValue> ParseJson(std::string_view text, std::string* error = nullptr) {
    std::string why;
    auto value = detail::JsonReader(text).Document(why);
    if (error != nullptr)
        *error = why;
    return value;
}

/// The value written back as JSON, one member or item to a line, indented by two spaces;
/// numbers as they were written, strings with only the escapes JSON requires.
inline std::string PrettyJson(const JsonValue& value, int depth = 0) {
    using Type = JsonValue::Type;
    std::string out;
    const auto quote = [](std::string_view text) {
        std::string quoted = "\"";
        for (const char c : text) {
            const unsigned char byte = static_cast<unsigned char>(c);
            if (c == '"' || c == '\\') {
                quoted += '\\';
                quoted += c;
            } else if (byte < 0x20) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04x", byte);
                quoted += escape;
            } else {
                quoted += c;
            }
        }
        return quoted + "\"";
    };
    switch (value.type) {
    case Type::Null:
        return "null";
    case Type::Bool:
        return value.boolean ? "true" : "false";
    case Type::Number:
        return value.text;
    case Type::String:
        return quote(value.text);
    case Type::Array:
        if (value.items.empty())
            return "[]";
        out = "[\n";
        for (std::size_t i = 0; i < value.items.size(); ++i) {
            detail::Indent(out, depth + 1);
            out += PrettyJson(value.items[i], depth + 1);
            out += i + 1 < value.items.size() ? ",\n" : "\n";
        }
        detail::Indent(out, depth);
        return out + "]";
    case Type::Object:
        if (value.members.empty())
            return "{}";
        out = "{\n";
        for (std::size_t i = 0; i < value.members.size(); ++i) {
            detail::Indent(out, depth + 1);
            out += quote(value.members[i].first) + ": " +
                   PrettyJson(value.members[i].second, depth + 1);
            out += i + 1 < value.members.size() ? ",\n" : "\n";
        }
        detail::Indent(out, depth);
        return out + "}";
    }
    return out;
}

} // namespace fileio::test
