// VarnStream.cpp - the stream base: mode, the byte-by-byte token readers, white space and
// lines, the suite-file marker, manipulators, class identities and object storage.

#include "fileio/stream/VarnStream.h"

#include "fileio/memory/Pool.h"
#include "fileio/stream/MemoryStream.h"
#include "stream/StreamBytes.h"
#include "stream/StreamState.h"

#include <cstring>
#include <string>

using namespace fileio::detail;

VarnStream::VarnStream() = default;

VarnStream::~VarnStream() {
    UnInitProgress();
}

bool VarnStream::IsFailed() {
    const bool failed = (m_mode & FM_FAILED) != 0;
    OffFailed();
    return failed;
}

void* VarnStream::operator new(std::size_t size) {
    return PlatformAlloc(size);
}

void VarnStream::operator delete(void* p) noexcept {
    PlatformFree(p);
}

VarnStream* VarnStream::GetInfoStream() {
    return this;
}

// ---- the byte-by-byte token readers -------------------------------------------------------------
// Written with ReadC, Seek and GetPos only, for transports without a faster way.

namespace {

bool ReadByte(VarnStream& stream, char& c) {
    return stream.ReadC(&c, 1) == 1;
}

/// Skips the bytes for which `skip` holds; the first other byte is read again next.
template <class Predicate> unsigned long long SkipBytes(VarnStream& stream, Predicate skip) {
    unsigned long long skipped = 0;
    for (;;) {
        const unsigned long long at = stream.GetPos();
        char c;
        if (!ReadByte(stream, c))
            return skipped;
        if (!skip(c)) {
            stream.Seek(static_cast<long long>(at), SM_BEGIN);
            return skipped;
        }
        ++skipped;
    }
}

/// Reads the next line's bytes (see ReadLine) into `line`; false at the end.
bool ReadLineBytes(VarnStream& stream, std::string& line) {
    line.clear();
    if (stream.IsBinary()) {
        char word[4];
        const unsigned long long n = stream.ReadC(word, sizeof word);
        line.assign(word, static_cast<std::size_t>(n));
        return n != 0;
    }
    char c;
    while (ReadByte(stream, c)) {
        line += c;
        if (c == '\n')
            break;
        if (c == '\r') {
            const unsigned long long at = stream.GetPos();
            if (ReadByte(stream, c) && c == '\n')
                line += c;
            else
                stream.Seek(static_cast<long long>(at), SM_BEGIN);
            break;
        }
    }
    return !line.empty();
}

} // namespace

bool VarnStream::ReadLine(MemoryStream& line) {
    std::string bytes;
    const bool found = ReadLineBytes(*this, bytes);
    line.Assign(bytes.data(), bytes.size());
    return found;
}

bool VarnStream::ReadLine(String& line) {
    std::string bytes;
    const bool found = ReadLineBytes(*this, bytes);
    line = String(bytes.c_str());
    return found;
}

void VarnStream::ParseString(String& out) {
    if (IsAscii()) {
        ParseToken(out);
        return;
    }
    unsigned char count = 0;
    if (ReadC(&count, 1) != 1) {
        out = String();
        OnFailed();
        return;
    }
    ReadCountedText(out, count);
}

void VarnStream::ParseToken(char* out, char delimiter) {
    std::size_t kept = 0;
    char c;
    while (ReadByte(*this, c) && c != delimiter) {
        if (kept < kTokenBufferSize - 1)
            out[kept++] = c;
    }
    out[kept] = '\0';
}

void VarnStream::ParseToken(String& out) {
    std::string token;
    SkipBytes(*this, IsTokenSpace);
    char c;
    while (ReadByte(*this, c)) {
        if (IsTokenSpace(c)) {
            Seek(-1, SM_CURRENT);
            break;
        }
        token += c;
    }
    out = String(token.c_str());
    SkipBytes(*this, IsBlank);
    m_passedEOL = SkipBytes(*this, IsLineEnd) != 0;
    SetStatusMeter();
}

const char* VarnStream::ParseScalarToken(char (&scratch)[256]) {
    (void)scratch;
    String& token = FileToken();
    ParseToken(token);
    return token.Get() != nullptr ? token.Get() : "";
}

void VarnStream::ParseToken(String& out, char delimiter) {
    char buffer[kTokenBufferSize] = {};
    ParseToken(buffer, delimiter);
    out = String(buffer);
}

String VarnStream::ReadString(char delimiter) {
    std::string text;
    char c;
    while (ReadByte(*this, c) && c != delimiter)
        text += c;
    return String(text.c_str());
}

// ---- looking ahead ------------------------------------------------------------------------------

std::string_view VarnStream::Peek(char* scratch, std::size_t count) {
    if (m_block.data != nullptr) {
        const unsigned long long available =
            m_block.position < m_block.length ? m_block.length - m_block.position : 0;
        return std::string_view(reinterpret_cast<const char*>(m_block.data + m_block.position),
                                static_cast<std::size_t>(available < count ? available : count));
    }
    const unsigned long long at = GetPos();
    const unsigned long long n = ReadC(scratch, count);
    Seek(static_cast<long long>(at), SM_BEGIN);
    return std::string_view(scratch, static_cast<std::size_t>(n));
}

void VarnStream::Advance(std::size_t count) {
    if (m_block.data != nullptr)
        m_block.position += count;
    else
        Seek(static_cast<long long>(count), SM_CURRENT);
}

// ---- white space and lines ----------------------------------------------------------------------

void VarnStream::SkipWhite() {
    char scratch[kTokenBufferSize];
    const std::string_view bytes = Peek(scratch, kTokenBufferSize);
    std::size_t skip = 0;
    while (skip < bytes.size() && IsTokenSpace(bytes[skip]))
        ++skip;
    // After 255 white bytes the scan stops and the last of them is read again.
    Advance(skip == kTokenBufferSize ? skip - 1 : skip);
}

void VarnStream::ReadPastEOL() {
    char scratch[kTokenBufferSize];
    const std::string_view bytes = Peek(scratch, kTokenBufferSize);
    std::size_t end = 0;
    while (end < bytes.size() && !IsLineEnd(bytes[end]))
        ++end;
    if (end == bytes.size()) {
        // No line end within the bytes looked at: the stream stays after them.
        Advance(end);
        return;
    }
    // Any run of CR and LF is one line end; the limit counts both runs together.
    while (end < bytes.size() && IsLineEnd(bytes[end]))
        ++end;
    Advance(end);
}

void VarnStream::WriteLine(const String& line) {
    const std::size_t length = static_cast<std::size_t>(line.GetLength());
    if (IsBinary())
        WriteBinaryCount(length);
    PutBytes(line.Get(), length);
    if (IsAscii())
        PutBytes("\n", 1);
}

// ---- the suite-file marker ----------------------------------------------------------------------

void VarnStream::HandleVarnMarker(bool markerStaysInData) {
    if (IsLoading()) {
        const unsigned long long start = GetPos();
        char marker;
        if (ReadByte(*this, marker)) {
            if (marker == 'B')
                OnBinary();
            else if (marker == '<')
                m_version = kAngleVersion;
            if (marker != 'B' || markerStaysInData)
                Seek(static_cast<long long>(start), SM_BEGIN);
        }
    } else if (IsBinary()) {
        PutBytes("B", 1);
    }
    OffFailed();
    if (IsAppend())
        Seek(0, SM_END);
}

// ---- manipulators -------------------------------------------------------------------------------

namespace {

VarnStream& WriteSeparator(VarnStream& stream, char separator, bool alsoBinary) {
    if (stream.IsAscii() || alsoBinary)
        stream << separator;
    return stream;
}

} // namespace

VarnStream& nl(VarnStream& stream) {
    return WriteSeparator(stream, '\n', false);
}
VarnStream& nlb(VarnStream& stream) {
    return nl(stream);
}
VarnStream& sp(VarnStream& stream) {
    return WriteSeparator(stream, ' ', false);
}
VarnStream& spb(VarnStream& stream) {
    return WriteSeparator(stream, ' ', true);
}
VarnStream& tab(VarnStream& stream) {
    return WriteSeparator(stream, '\t', false);
}
VarnStream& tabb(VarnStream& stream) {
    return WriteSeparator(stream, '\t', true);
}

// ---- class identities ---------------------------------------------------------------------------

namespace {

/// The longest class name LoadRuntimeClass accepts, plus one.
constexpr unsigned short kClassNameLimit = 64;

} // namespace

const RuntimeClass* VarnStream::LoadRuntimeClass(unsigned int* schema) {
    unsigned short schemaNumber = 0;
    unsigned short length = 0;
    *this >> schemaNumber;
    if (schema != nullptr)
        *schema = schemaNumber;
    *this >> length;
    if (length >= kClassNameLimit)
        return nullptr;
    char name[kClassNameLimit];
    if (ReadC(name, length) != length)
        return nullptr;
    return FindRuntimeClass(name, length);
}

void VarnStream::StoreRuntimeClass(const RuntimeClass& runtimeClass) {
    const std::size_t length = runtimeClass.name != nullptr ? std::strlen(runtimeClass.name) : 0;
    const auto counted = static_cast<unsigned short>(length);
    *this << static_cast<unsigned short>(runtimeClass.schema) << counted;
    PutBytes(runtimeClass.name, counted);
}

// ---- the shared scratch token
// ---------------------------------------------------------------------

String& fileio::detail::FileToken() {
    static String token;
    return token;
}

void FreeVarnFileToken() {
    FileToken() = String();
}
