// HiveFile.cpp - parsing, editing and writing the text form of the settings hive.

#include "platform/HiveFile.h"
#include "platform/Platform.h"

#include <algorithm>
#include <optional>

namespace fileio::platform {

namespace {

constexpr std::string_view kOpeningComment =
    "; Settings of the Varn, Inc. applications, kept by FileIO.\n"
    "; [key] starts a key; name=value lines follow; %HH stands for the byte 0xHH.";

constexpr std::string_view kNameExtras = "=[];#";
constexpr std::string_view kKeyExtras = "[]";
constexpr char kHex[] = "0123456789ABCDEF";

char FoldCase(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return FoldCase(x) == FoldCase(y);
           });
}

/// `key` is `ancestor` itself or a key below it.
bool IsSameOrBelow(std::string_view key, std::string_view ancestor) {
    if (key.size() == ancestor.size())
        return EqualNoCase(key, ancestor);
    return key.size() > ancestor.size() && key[ancestor.size()] == '\\' &&
           EqualNoCase(key.substr(0, ancestor.size()), ancestor);
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view Trim(std::string_view s) {
    while (!s.empty() && IsBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && IsBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

int HexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    c = FoldCase(c);
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

/// Undoes EscapeHiveText; nothing when an escape is malformed or stands for NUL.
std::optional<std::string> Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\0')
            return std::nullopt;
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        if (i + 2 >= text.size())
            return std::nullopt;
        const int high = HexValue(text[i + 1]);
        const int low = HexValue(text[i + 2]);
        if (high < 0 || low < 0 || (high == 0 && low == 0))
            return std::nullopt;
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return out;
}

} // namespace

std::string EscapeHiveText(std::string_view text, std::string_view extra) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool atEnd = i == 0 || i + 1 == text.size();
        const bool escape = byte < 0x20 || byte >= 0x7F || byte == '%' || (atEnd && byte == ' ') ||
                            extra.find(static_cast<char>(byte)) != std::string_view::npos;
        if (escape) {
            out += '%';
            out += kHex[byte >> 4];
            out += kHex[byte & 0x0F];
        } else {
            out += static_cast<char>(byte);
        }
    }
    return out;
}

std::string NormalizeKeyPath(std::string_view key) {
    std::string out;
    while (!key.empty()) {
        const std::size_t cut = key.find('\\');
        const std::string_view part = key.substr(0, cut);
        if (!part.empty()) {
            if (!out.empty())
                out += '\\';
            out.append(part);
        }
        if (cut == std::string_view::npos)
            break;
        key.remove_prefix(cut + 1);
    }
    return out;
}

HiveDocument::HiveDocument(std::string_view text) {
    if (text.empty()) {
        for (std::string_view rest = kOpeningComment; !rest.empty();) {
            const std::size_t end = rest.find('\n');
            std::string noKey;
            m_lines.push_back(Parse(std::string(rest.substr(0, end)), noKey));
            rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        }
        return;
    }
    std::string currentKey;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        m_lines.push_back(Parse(std::string(text.substr(0, end)), currentKey));
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
}

HiveDocument::Line HiveDocument::Parse(std::string raw, std::string& currentKey) {
    Line line{Kind::Damaged, std::move(raw), {}, {}, {}};
    std::string_view text = line.raw;
    if (!text.empty() && text.back() == '\r')
        text.remove_suffix(1);
    text = Trim(text);

    if (text.empty()) {
        line.kind = Kind::Blank;
    } else if (text.front() == ';' || text.front() == '#') {
        line.kind = Kind::Comment;
    } else if (text.front() == '[') {
        // The values below a key line that cannot be read belong to no key we know.
        currentKey.clear();
        if (text.size() < 2 || text.back() != ']')
            return line;
        std::string key;
        for (std::string_view rest = text.substr(1, text.size() - 2);;) {
            const std::size_t cut = rest.find('\\');
            const std::optional<std::string> part = Unescape(Trim(rest.substr(0, cut)));
            if (!part || part->find('\\') != std::string::npos)
                return line;
            if (!part->empty()) {
                if (!key.empty())
                    key += '\\';
                key += *part;
            }
            if (cut == std::string_view::npos)
                break;
            rest.remove_prefix(cut + 1);
        }
        if (key.empty())
            return line;
        line.kind = Kind::Key;
        line.key = std::move(key);
        currentKey = line.key;
    } else {
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos || currentKey.empty())
            return line;
        std::optional<std::string> name = Unescape(Trim(text.substr(0, equals)));
        std::optional<std::string> value = Unescape(Trim(text.substr(equals + 1)));
        if (!name || !value)
            return line;
        line.kind = Kind::Value;
        line.key = currentKey;
        line.name = std::move(*name);
        line.value = std::move(*value);
    }
    return line;
}

std::string HiveDocument::FormatValueLine(std::string_view name, std::string_view value) {
    return EscapeHiveText(name, kNameExtras) + '=' + EscapeHiveText(value, {});
}

std::string HiveDocument::FormatKeyLine(std::string_view key) {
    std::string out = "[";
    for (std::string_view rest = key;;) {
        const std::size_t cut = rest.find('\\');
        out += EscapeHiveText(rest.substr(0, cut), kKeyExtras);
        if (cut == std::string_view::npos)
            break;
        out += '\\';
        rest.remove_prefix(cut + 1);
    }
    out += ']';
    return out;
}

bool HiveDocument::Find(std::string_view key, std::string_view name, std::string& value) const {
    const std::string wanted = NormalizeKeyPath(key);
    for (const Line& line : m_lines) {
        if (line.kind == Kind::Value && EqualNoCase(line.key, wanted) &&
            EqualNoCase(line.name, name)) {
            value = line.value;
            return true;
        }
    }
    return false;
}

std::size_t HiveDocument::EndOfBlock(std::size_t keyLine) const {
    // A block ends after its last line that is not blank or a comment: trailing comments
    // are more likely to introduce the next block than to belong to this one.
    std::size_t end = keyLine + 1;
    for (std::size_t i = keyLine + 1; i < m_lines.size() && m_lines[i].kind != Kind::Key; ++i) {
        if (m_lines[i].kind == Kind::Value || m_lines[i].kind == Kind::Damaged)
            end = i + 1;
    }
    return end;
}

bool HiveDocument::Set(std::string_view key, std::string_view name, std::string_view value) {
    const std::string wanted = NormalizeKeyPath(key);
    std::optional<std::size_t> firstBlock;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        Line& line = m_lines[i];
        if (line.kind == Kind::Key && !firstBlock && EqualNoCase(line.key, wanted))
            firstBlock = i;
        if (line.kind == Kind::Value && EqualNoCase(line.key, wanted) &&
            EqualNoCase(line.name, name)) {
            if (line.value == value)
                return false;
            line.value = std::string(value);
            line.raw = FormatValueLine(line.name, line.value);
            return true;
        }
    }
    Line added{Kind::Value, FormatValueLine(name, value), wanted, std::string(name),
               std::string(value)};
    if (firstBlock) {
        m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(EndOfBlock(*firstBlock)),
                       std::move(added));
        return true;
    }
    if (!m_lines.empty() && m_lines.back().kind != Kind::Blank)
        m_lines.push_back(Line{Kind::Blank, {}, {}, {}, {}});
    m_lines.push_back(Line{Kind::Key, FormatKeyLine(wanted), wanted, {}, {}});
    m_lines.push_back(std::move(added));
    return true;
}

bool HiveDocument::Remove(std::string_view key, std::string_view name) {
    const std::string wanted = NormalizeKeyPath(key);
    const auto removed = std::remove_if(m_lines.begin(), m_lines.end(), [&](const Line& line) {
        return line.kind == Kind::Value && EqualNoCase(line.key, wanted) &&
               EqualNoCase(line.name, name);
    });
    const bool any = removed != m_lines.end();
    m_lines.erase(removed, m_lines.end());
    return any;
}

bool HiveDocument::RemoveKey(std::string_view key) {
    const std::string wanted = NormalizeKeyPath(key);
    if (wanted.empty())
        return false;
    bool inRemovedBlock = false;
    bool any = false;
    std::vector<Line> kept;
    kept.reserve(m_lines.size());
    for (Line& line : m_lines) {
        if (line.kind == Kind::Key) {
            inRemovedBlock = IsSameOrBelow(line.key, wanted);
            any = any || inRemovedBlock;
        }
        if (!inRemovedBlock)
            kept.push_back(std::move(line));
    }
    m_lines = std::move(kept);
    return any;
}

std::string HiveDocument::Text() const {
    std::string out;
    for (const Line& line : m_lines) {
        out += line.raw;
        out += '\n';
    }
    return out;
}

std::vector<HiveDocument::DamagedLine> HiveDocument::Damage() const {
    std::vector<DamagedLine> damage;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (m_lines[i].kind == Kind::Damaged)
            damage.push_back(DamagedLine{i + 1, m_lines[i].raw});
    }
    return damage;
}

} // namespace fileio::platform
