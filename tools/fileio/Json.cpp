// Json.cpp - the JSON writer.

#include "Json.h"

#include "Text.h"

#include <charconv>
#include <cmath>
#include <type_traits>

namespace fileio::tool {

namespace {

/// The text is handed to the file in pieces of about this size.
constexpr std::size_t kFlushSize = 1 << 16;

void AppendEscape(std::string& out, unsigned char byte) {
    constexpr char kHex[] = "0123456789abcdef";
    out += "\\u00";
    out += kHex[byte >> 4];
    out += kHex[byte & 0x0F];
}

} // namespace

void AppendJsonString(std::string& out, std::string_view text) {
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            const std::size_t length = Utf8SequenceLength(text.substr(i));
            if (length == 0) {
                AppendEscape(out, c);
                ++i;
            } else {
                out.append(text.substr(i, length));
                i += length;
            }
            continue;
        }
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (c < 0x20 || c == 0x7F)
                AppendEscape(out, c);
            else
                out += static_cast<char>(c);
        }
        ++i;
    }
    out += '"';
}

void JsonWriter::Separate() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (!m_hasValue.empty()) {
        if (m_hasValue.back())
            m_text += ',';
        m_hasValue.back() = true;
    }
}

void JsonWriter::Raw(std::string_view text) {
    m_text.append(text);
    if (m_file != nullptr && m_text.size() >= kFlushSize) {
        std::fwrite(m_text.data(), 1, m_text.size(), m_file);
        m_text.clear();
    }
}

void JsonWriter::BeginObject() {
    Separate();
    m_hasValue.push_back(false);
    Raw("{");
}

void JsonWriter::EndObject() {
    m_hasValue.pop_back();
    Raw("}");
}

void JsonWriter::BeginArray() {
    Separate();
    m_hasValue.push_back(false);
    Raw("[");
}

void JsonWriter::EndArray() {
    m_hasValue.pop_back();
    Raw("]");
}

void JsonWriter::Key(std::string_view key) {
    Separate();
    std::string text;
    AppendJsonString(text, key);
    text += ':';
    Raw(text);
    m_afterKey = true;
}

void JsonWriter::String(std::string_view text) {
    Separate();
    std::string quoted;
    AppendJsonString(quoted, text);
    Raw(quoted);
}

template <class T> void JsonWriter::WriteNumber(T value) {
    Separate();
    if constexpr (std::is_floating_point_v<T>) {
        if (!std::isfinite(value)) {
            Raw("null");
            return;
        }
    }
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    Raw(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

void JsonWriter::Number(long long value) {
    WriteNumber(value);
}

void JsonWriter::Number(unsigned long long value) {
    WriteNumber(value);
}

void JsonWriter::Number(double value) {
    WriteNumber(value);
}

void JsonWriter::Number(float value) {
    WriteNumber(value);
}

void JsonWriter::Bool(bool value) {
    Separate();
    Raw(value ? "true" : "false");
}

void JsonWriter::Null() {
    Separate();
    Raw("null");
}

void JsonWriter::Finish() {
    m_text += '\n';
    if (m_file != nullptr) {
        std::fwrite(m_text.data(), 1, m_text.size(), m_file);
        m_text.clear();
    }
}

} // namespace fileio::tool
