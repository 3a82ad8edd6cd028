// Encoding.cpp - the text and binary forms of every value type.

#include "fileio/stream/VarnStream.h"

#include "core/StringAscii.h"
#include "core/StringNumbers.h"
#include "stream/StreamBytes.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

using namespace fileio::detail;

namespace {

constexpr long long kInt32Min = INT32_MIN;
constexpr long long kInt32Max = INT32_MAX;

/// A token as the C string functions see it: up to its first NUL byte.
std::string_view UpToNul(std::string_view token) {
    const std::size_t nul = token.find('\0');
    return nul == std::string_view::npos ? token : token.substr(0, nul);
}

/// The token is `word`, ignoring ASCII case.
bool IsWordNoCase(std::string_view token, std::string_view word) {
    return token.size() == word.size() && StartsWithNoCase(token, word);
}

} // namespace

// ---- scalars: the text forms --------------------------------------------------------------------
// The binary forms are the values' bytes, copied by the inline operators of the header.

void VarnStream::WriteTextSigned(long long value) {
    char text[24];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    PutBytes(text, static_cast<std::size_t>(end.ptr - text));
}

void VarnStream::WriteTextUnsigned(unsigned long long value) {
    char text[24];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    PutBytes(text, static_cast<std::size_t>(end.ptr - text));
}

void VarnStream::WriteTextFloat(float value) {
    char text[kNumberTextSize];
    PutBytes(text, FormatGeneral(text, value, 9));
}

void VarnStream::WriteTextDouble(double value) {
    char text[kNumberTextSize];
    PutBytes(text, FormatGeneral(text, value, 17));
}

// Every integer type up to 32 bits reads its token as a 32-bit strtol does; the narrower
// types keep the low bits of the result.
long long VarnStream::ReadTextInt32() {
    return ParseSigned(ScalarToken(), kInt32Min, kInt32Max);
}

long long VarnStream::ReadTextInt64() {
    return ParseSigned(ScalarToken(), INT64_MIN, INT64_MAX);
}

unsigned long long VarnStream::ReadTextUnsigned(unsigned long long max) {
    return ParseUnsigned(ScalarToken(), max);
}

float VarnStream::ReadTextFloat() {
    return ParseFloat(ScalarToken());
}

double VarnStream::ReadTextDouble() {
    return ParseDouble(ScalarToken());
}

// ---- char: the raw byte in both forms -----------------------------------------------------------

VarnStream& VarnStream::operator<<(char value) {
    PutBytes(&value, 1);
    return *this;
}

VarnStream& VarnStream::operator>>(char& value) {
    ReadC(&value, 1);
    return *this;
}

// ---- long: four bytes in a file on every platform -----------------------------------------------

VarnStream& VarnStream::operator<<(long value) {
    if (IsBinary())
        WriteBinary(static_cast<std::int32_t>(value));
    else
        WriteTextSigned(value);
    return *this;
}

VarnStream& VarnStream::operator>>(long& value) {
    if (IsBinary()) {
        std::int32_t stored = 0;
        ReadBinary(stored);
        value = stored;
    } else {
        value = static_cast<long>(ReadTextInt32());
    }
    return *this;
}

VarnStream& VarnStream::operator<<(unsigned long value) {
    if (IsBinary())
        WriteBinary(static_cast<std::uint32_t>(value));
    else
        WriteTextUnsigned(value);
    return *this;
}

VarnStream& VarnStream::operator>>(unsigned long& value) {
    if (IsBinary()) {
        std::uint32_t stored = 0;
        ReadBinary(stored);
        value = stored;
    } else {
        value = static_cast<unsigned long>(ReadTextUnsigned(UINT32_MAX));
    }
    return *this;
}

// ---- bool ---------------------------------------------------------------------------------------

VarnStream& VarnStream::operator<<(bool value) {
    if (IsBinary()) {
        const unsigned char byte = value ? 1 : 0;
        WriteBinary(byte);
    } else if (value) {
        PutBytes("TRUE", 4);
    } else {
        PutBytes("FALSE", 5);
    }
    return *this;
}

VarnStream& VarnStream::operator>>(bool& value) {
    if (IsBinary()) {
        unsigned char byte = 0;
        ReadBinary(byte);
        value = byte != 0;
    } else {
        const std::string_view token = UpToNul(ScalarToken());
        value = IsWordNoCase(token, "on") || IsWordNoCase(token, "true") || token == "1";
    }
    return *this;
}

VarnStream& VarnStream::operator<<(StreamBOOL value) {
    return *this << (value.value != 0);
}

VarnStream& VarnStream::operator>>(StreamBOOL& value) {
    bool flag = false;
    *this >> flag;
    value.value = flag ? 1 : 0;
    return *this;
}

// ---- strings ------------------------------------------------------------------------------------

void VarnStream::WriteBinaryCount(std::size_t length) {
    WriteBinary(static_cast<std::uint16_t>(length));
}

// With `escape`, every "&" is written as "&#38;".
void VarnStream::WriteCharacters(const char* text, std::size_t length, bool escape) {
    const char* rest = text;
    std::size_t left = length;
    while (escape && left != 0) {
        const auto* amp = static_cast<const char*>(std::memchr(rest, '&', left));
        if (amp == nullptr)
            break;
        const auto before = static_cast<std::size_t>(amp - rest);
        PutBytes(rest, before);
        PutBytes("&#38;", 5);
        rest = amp + 1;
        left -= before + 1;
    }
    PutBytes(rest, left);
}

VarnStream& VarnStream::operator<<(const String& value) {
    const auto length = static_cast<std::size_t>(value.GetLength());
    const bool counted = IsBinary() && m_writeStringCounts;
    if (counted)
        WriteBinaryCount(length);
    WriteCharacters(value.Get(), length, !counted);
    return *this;
}

VarnStream& VarnStream::operator<<(const char* value) {
    const std::size_t length = value != nullptr ? std::strlen(value) : 0;
    if (IsBinary() && m_writeStringCounts)
        WriteBinaryCount(length);
    PutBytes(value, length);
    return *this;
}

VarnStream& VarnStream::operator<<(const std::string& value) {
    if (IsBinary() && m_writeStringCounts)
        WriteBinaryCount(value.size());
    PutBytes(value.data(), value.size());
    return *this;
}

void VarnStream::WriteLine(const String& line) {
    const auto length = static_cast<std::size_t>(line.GetLength());
    if (IsBinary())
        WriteBinaryCount(length);
    PutBytes(line.Get(), length);
    if (IsAscii())
        PutBytes("\n", 1);
}

VarnStream& VarnStream::operator>>(String& value) {
    if (IsAscii()) {
        ParseString(value);
        if (value.Get() != nullptr && std::strchr(value.Get(), '&') != nullptr)
            value.ContractXMLEscapes();
        return *this;
    }
    std::uint16_t count = 0;
    if (ReadC(&count, sizeof count) != sizeof count) {
        value = String();
        OnFailed();
        return *this;
    }
    ReadCountedText(value, count);
    return *this;
}

// The bytes are copied once, into the String, when the window holds them all.
void VarnStream::ReadCountedText(String& value, std::size_t count) {
    std::string spill;
    std::string_view bytes;
    if (Available() >= count) {
        bytes = {reinterpret_cast<const char*>(m_window.data + m_window.position), count};
        m_window.position += count;
    } else {
        spill.resize(count);
        spill.resize(static_cast<std::size_t>(ReadC(spill.data(), count)));
        bytes = spill;
    }
    if (bytes.size() != count) {
        value = String();
        OnFailed();
    } else if (count == 0 || bytes[0] == '\0') {
        value = String();
    } else {
        value.Set(bytes.data(), static_cast<int>(count));
    }
}

// ---- composites of floats -----------------------------------------------------------------------

void VarnStream::WriteTextFloats(const float* values, int count) {
    for (int i = 0; i < count; ++i) {
        if (i != 0)
            PutBytes(" ", 1);
        WriteTextFloat(values[i]);
    }
}

void VarnStream::ReadTextFloats(float* values, int count) {
    for (int i = 0; i < count; ++i)
        values[i] = ReadTextFloat();
}

// ---- composites of integers ---------------------------------------------------------------------

namespace {

// Components in member order, one " " between them in text.
template <class T> void WriteComponents(VarnStream& stream, const T* values, int count) {
    for (int i = 0; i < count; ++i) {
        if (i != 0 && stream.IsAscii())
            stream << ' ';
        stream << values[i];
    }
}

template <class T> void ReadComponents(VarnStream& stream, T* values, int count) {
    for (int i = 0; i < count; ++i)
        stream >> values[i];
}

} // namespace

VarnStream& VarnStream::operator<<(const ColorBuf& value) {
    const unsigned char channels[4] = {value.red, value.green, value.blue, value.alpha};
    WriteComponents(*this, channels, 4);
    return *this;
}

VarnStream& VarnStream::operator>>(ColorBuf& value) {
    unsigned char channels[4] = {value.red, value.green, value.blue, value.alpha};
    ReadComponents(*this, channels, 4);
    value = ColorBuf{channels[0], channels[1], channels[2], channels[3]};
    return *this;
}

VarnStream& VarnStream::operator<<(const PatchID& value) {
    WriteComponents(*this, value.word, 4);
    return *this;
}

VarnStream& VarnStream::operator>>(PatchID& value) {
    ReadComponents(*this, value.word, 4);
    return *this;
}

// ---- times --------------------------------------------------------------------------------------

namespace {

/// The text form counts a time in frames of 30 a second.
constexpr unsigned long long kFramesPerSecond = 30;
constexpr unsigned long long kTicksPerSecond = Time::TicksPerSecond;
constexpr unsigned long long kTicksPerFrame = kTicksPerSecond / kFramesPerSecond;
constexpr unsigned long long kTicksPerMinute = kTicksPerSecond * 60;

/// The tick count a time is stored with: the two sentinels are stored as 0.
long long StoredTicks(const Time& time) {
    return time.IsMin() || time.IsMax() ? 0 : time.GetTicks();
}

char* AppendDecimal(char* out, unsigned long long value) {
    return std::to_chars(out, out + 20, value).ptr;
}

} // namespace

VarnStream& VarnStream::operator<<(const Time& value) {
    const long long ticks = StoredTicks(value);
    if (IsBinary()) {
        WriteBinary(ticks);
        return *this;
    }
    char text[96];
    char* out = text;
    unsigned long long rest = static_cast<unsigned long long>(ticks);
    if (ticks < 0) {
        *out++ = '-';
        rest = 0 - rest;
    }
    const bool minutes = rest >= kTicksPerMinute;
    if (minutes) {
        out = AppendDecimal(out, rest / kTicksPerMinute);
        *out++ = ':';
        rest %= kTicksPerMinute;
    }
    if (minutes || rest >= kTicksPerSecond) {
        out = AppendDecimal(out, rest / kTicksPerSecond);
        *out++ = ':';
        rest %= kTicksPerSecond;
    }
    out = AppendDecimal(out, rest / kTicksPerFrame);
    rest %= kTicksPerFrame;
    if (rest != 0) {
        *out++ = '.';
        out = AppendDecimal(out, rest);
    }
    PutBytes(text, static_cast<std::size_t>(out - text));
    return *this;
}

// The numbers between ":" and "." fill minutes:seconds:frames.ticks from the right.
VarnStream& VarnStream::operator>>(Time& value) {
    if (IsBinary()) {
        long long ticks = 0;
        ReadBinary(ticks);
        value = Time(ticks);
        return *this;
    }
    std::string_view text = UpToNul(ScalarToken());
    const bool negative = !text.empty() && text.front() == '-';
    if (negative)
        text.remove_prefix(1);

    // fields[0..3] = minutes, seconds, frames, ticks; filled from the right.
    unsigned long long numbers[4] = {0, 0, 0, 0};
    int count = 0;
    bool dot = false;
    for (std::size_t begin = 0;;) {
        const std::size_t end = text.find_first_of(":.", begin);
        const std::string_view piece = text.substr(begin, end - begin);
        // Only the last four numbers can land in a field.
        numbers[0] = numbers[1];
        numbers[1] = numbers[2];
        numbers[2] = numbers[3];
        numbers[3] = static_cast<unsigned long long>(ParseSigned(piece, INT64_MIN, INT64_MAX));
        ++count;
        if (end == std::string_view::npos)
            break;
        dot = dot || text[end] == '.';
        begin = end + 1;
    }
    unsigned long long minutes = 0, seconds = 0, frames = 0, ticks = 0;
    const unsigned long long* last = numbers + 3;
    if (dot) {
        ticks = *last--;
        --count;
    }
    if (count > 0)
        frames = *last--, --count;
    if (count > 0)
        seconds = *last--, --count;
    if (count > 0)
        minutes = *last;
    if (!dot && static_cast<long long>(frames) >= static_cast<long long>(kFramesPerSecond)) {
        ticks = frames;
        frames = 0;
    }
    unsigned long long total =
        ((minutes * 60 + seconds) * kFramesPerSecond + frames) * kTicksPerFrame + ticks;
    if (negative)
        total = 0 - total;
    value = Time(static_cast<long long>(total));
    return *this;
}

VarnStream& VarnStream::operator<<(const TimeRange& value) {
    *this << value.start;
    if (IsAscii())
        PutBytes(" ", 1);
    return *this << value.end;
}

VarnStream& VarnStream::operator>>(TimeRange& value) {
    return *this >> value.start >> value.end;
}

// ---- dates --------------------------------------------------------------------------------------

VarnStream& VarnStream::operator<<(const COleDateTime& value) {
    *this << static_cast<int>(value.m_status);
    if (IsAscii())
        PutBytes(" ", 1);
    return *this << value.m_dt;
}

VarnStream& VarnStream::operator>>(COleDateTime& value) {
    int status = value.m_status;
    *this >> status >> value.m_dt;
    value.m_status = static_cast<COleDateTime::DateTimeStatus>(status);
    return *this;
}

VarnStream& VarnStream::operator<<(const CTime& value) {
    if (IsBinary())
        WriteBinary(static_cast<std::uint32_t>(value.GetTime()));
    else
        WriteTextSigned(value.GetTime());
    return *this;
}

VarnStream& VarnStream::operator>>(CTime& value) {
    if (IsBinary()) {
        std::uint32_t seconds = 0;
        ReadBinary(seconds);
        value = CTime(static_cast<long long>(seconds));
    } else {
        long long seconds = 0;
        *this >> seconds;
        value = CTime(seconds);
    }
    return *this;
}
