// Text.cpp - printable forms of text and its comparison without regard to case.

#include "Text.h"

#include <algorithm>

namespace fileio::tool {

namespace {

unsigned char Lower(char c) {
    const unsigned char byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte - 'A' + 'a') : byte;
}

} // namespace

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string Concat(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (std::string_view piece : pieces)
        text.append(piece);
    return text;
}

std::size_t Utf8SequenceLength(std::string_view text) {
    if (text.empty())
        return 0;
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    std::size_t length = 0;
    unsigned int code = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0Fu;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07u;
    } else {
        return 0;
    }
    if (text.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0u) != 0x80u)
            return 0;
        code = (code << 6) | (byte(i) & 0x3Fu);
    }
    // The smallest code point each length may carry: anything below is an overlong form.
    constexpr unsigned int kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool c1Control = code >= 0x80 && code <= 0x9F;
    if (code < kSmallest[length] || code > 0x10FFFF || surrogate || c1Control)
        return 0;
    return length;
}

std::string Printable(std::string_view text, bool keepLines) {
    constexpr char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if ((c >= 0x20 && c < 0x7F) || (keepLines && (c == '\n' || c == '\t'))) {
            out += static_cast<char>(c);
            ++i;
            continue;
        }
        if (const std::size_t length = Utf8SequenceLength(text.substr(i)); length > 0) {
            out.append(text.substr(i, length));
            i += length;
            continue;
        }
        out += "\\x";
        out += kHex[c >> 4];
        out += kHex[c & 0x0F];
        ++i;
    }
    return out;
}

} // namespace fileio::tool
