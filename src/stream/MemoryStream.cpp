// MemoryStream.cpp - the stream over one growable block of memory.

#include "fileio/stream/MemoryStream.h"

#include "fileio/handlers/StatusMessage.h"
#include "fileio/memory/Pool.h"
#include "fileio/path/VersionControl.h"
#include "platform/Platform.h"
#include "stream/StreamBytes.h"
#include "stream/StreamState.h"

#include <algorithm>
#include <cstring>
#include <string>

using namespace fileio::detail;

namespace {

/// The least a full block grows by.
constexpr unsigned long long kGrowthStep = 32768;

} // namespace

struct MemoryStream::TokenSpan {
    const char* begin;
    std::size_t length;
};

MemoryStream::MemoryStream() = default;

MemoryStream::MemoryStream(const MemoryStream& other) : VarnStream() {
    m_mode = other.m_mode;
    m_version = other.m_version;
    Assign(other.m_block.data, other.m_block.length);
}

MemoryStream& MemoryStream::operator=(const MemoryStream& other) {
    if (this != &other) {
        m_mode = other.m_mode;
        m_version = other.m_version;
        Assign(other.m_block.data, other.m_block.length);
    }
    return *this;
}

MemoryStream::~MemoryStream() {
    ReleaseBuffer();
    DeleteInfoStream();
}

void MemoryStream::ReleaseBuffer() {
    PlatformFree(m_block.data);
    m_block.data = nullptr;
    m_block.capacity = 0;
    m_block.length = 0;
    m_block.position = 0;
}

void MemoryStream::DeleteInfoStream() {
    delete m_infoStream;
    m_infoStream = nullptr;
}

// ---- opening ------------------------------------------------------------------------------------

bool MemoryStream::Open(const String& path, FileMode mode) {
    SetMode(mode);
    std::string bytes;
    if (fileio::platform::Files().readWholeFile(path.Get() != nullptr ? path.Get() : "", bytes) !=
        fileio::platform::ReadResult::Read)
        return false;
    UnInitProgress();
    m_fileName = path;
    m_totalLength = bytes.size();
    if (!IsDontProgress())
        InitProgress(path);
    Empty();
    if (!bytes.empty()) {
        m_block.data = static_cast<unsigned char*>(PlatformAlloc(bytes.size()));
        std::memcpy(m_block.data, bytes.data(), bytes.size());
    }
    m_block.capacity = m_block.length = bytes.size();
    if (IsLoading())
        ReadVarnMarker();
    OffFailed();
    return true;
}

bool MemoryStream::Open(const void* data, unsigned long long length, FileMode mode) {
    SetMode(mode & ~FM_FAILED);
    m_nextMeterPosition = length + 1;
    if (!IsAppend()) {
        ReleaseBuffer();
        DeleteInfoStream();
        m_version = kUnknownVersion;
    }
    m_block.position = IsAppend() ? m_block.length : 0;
    Write(data, length);
    if (!IsAppend()) {
        m_block.position = 0;
        if (IsLoading())
            ReadVarnMarker();
    }
    return true;
}

bool MemoryStream::Open(FileMode mode) {
    SetMode(mode);
    if (IsLoading()) {
        m_nextMeterPosition = m_totalLength + 1;
        m_block.position = 0;
    } else if (!IsAppend()) {
        ReleaseBuffer();
    } else {
        m_block.position = m_block.length;
    }
    OffFailed();
    m_fileName = String();
    DeleteInfoStream();
    if (!IsAppend())
        ReadVarnMarker();
    return true;
}

// A memory stream keeps its marker byte: a binary image starts with "B" at position 0.
// Loading reads the marker; storing (called only without the append bit) writes it.
void MemoryStream::ReadVarnMarker() {
    if (IsVarn()) {
        HandleVarnMarker(true);
        if (IsLoading())
            m_block.position = 0;
    }
}

// ---- the block
// -------------------------------------------------------------------------------------

void MemoryStream::Reserve(unsigned long long needed) {
    if (needed <= m_block.capacity)
        return;
    const unsigned long long count = needed - std::min(needed, m_block.position);
    const unsigned long long capacity =
        std::max({m_block.capacity + std::max(count, kGrowthStep), m_block.capacity * 2, needed});
    auto* block = static_cast<unsigned char*>(PlatformAlloc(capacity));
    if (m_block.length != 0)
        std::memcpy(block, m_block.data, static_cast<std::size_t>(m_block.length));
    PlatformFree(m_block.data);
    m_block.data = block;
    m_block.capacity = capacity;
}

void MemoryStream::SetSize(unsigned long long size) {
    ReleaseBuffer();
    DeleteInfoStream();
    m_version = kUnknownVersion;
    m_block.data = size != 0 ? static_cast<unsigned char*>(PlatformAlloc(size)) : nullptr;
    m_block.capacity = size;
    m_nextMeterPosition = size + 1;
}

void MemoryStream::Empty() {
    ReleaseBuffer();
    DeleteInfoStream();
    m_version = kUnknownVersion;
}

void MemoryStream::Assign(const void* data, unsigned long long length) {
    m_block.position = 0;
    m_block.length = 0;
    Reserve(length);
    if (length != 0)
        std::memcpy(m_block.data, data, static_cast<std::size_t>(length));
    m_block.length = length;
}

// ---- the transport
// --------------------------------------------------------------------------------

unsigned long long MemoryStream::ReadC(void* buffer, unsigned long long count) {
    const unsigned long long available =
        m_block.position < m_block.length ? m_block.length - m_block.position : 0;
    const unsigned long long n = std::min(count, available);
    const unsigned char* from = m_block.data + m_block.position;
    // The values' sizes get a copy of their own size; anything else the general copy.
    switch (n) {
    case 0:
        return 0;
    case 1:
        std::memcpy(buffer, from, 1);
        break;
    case 2:
        std::memcpy(buffer, from, 2);
        break;
    case 4:
        std::memcpy(buffer, from, 4);
        break;
    case 8:
        std::memcpy(buffer, from, 8);
        break;
    default:
        std::memcpy(buffer, from, static_cast<std::size_t>(n));
        break;
    }
    m_block.position += n;
    return n;
}

void MemoryStream::Read(void* buffer, long count) {
    if (count > 0)
        ReadC(buffer, static_cast<unsigned long long>(count));
}

void MemoryStream::Write(const void* data, unsigned long long count) {
    if (count == 0)
        return;
    const unsigned long long end = m_block.position + count;
    if (end < m_block.position)
        fileio::platform::Fatal("FileIO: a memory stream cannot grow beyond the address space");
    Reserve(end);
    std::memcpy(m_block.data + m_block.position, data, static_cast<std::size_t>(count));
    m_block.position = end;
    m_block.length = std::max(m_block.length, end);
}

void MemoryStream::Flush() {}

void MemoryStream::Close() {
    UnInitProgress();
}

void MemoryStream::Seek(long long offset, SeekMode mode) {
    const auto step = static_cast<unsigned long long>(offset);
    switch (mode) {
    case SM_BEGIN:
        m_block.position = step;
        break;
    case SM_END:
        m_block.position = m_block.length - step;
        break;
    case SM_CURRENT:
        m_block.position += step;
        break;
    }
}

// ---- lines and tokens
// ----------------------------------------------------------------------------

unsigned long long MemoryStream::LineEnd() const {
    if (IsBinary())
        return std::min(m_block.position + 4, m_block.length);
    const char* begin = reinterpret_cast<const char*>(m_block.data);
    return static_cast<unsigned long long>(
        FindLineEnd(begin + m_block.position, begin + m_block.length) - begin);
}

bool MemoryStream::ReadLine(MemoryStream& line) {
    if (m_block.position >= m_block.length) {
        line.Assign(nullptr, 0);
        return false;
    }
    const unsigned long long end = LineEnd();
    line.Assign(m_block.data + m_block.position, end - m_block.position);
    m_block.position = end;
    return true;
}

bool MemoryStream::ReadLine(String& line) {
    if (m_block.position >= m_block.length) {
        line = String();
        return false;
    }
    const unsigned long long end = LineEnd();
    line = String(reinterpret_cast<const char*>(m_block.data + m_block.position),
                  static_cast<int>(end - m_block.position));
    m_block.position = end;
    return true;
}

void MemoryStream::ParseString(String& out) {
    VarnStream::ParseString(out);
}

void MemoryStream::ParseToken(char* out, char delimiter) {
    const unsigned long long start = std::min(m_block.position, m_block.length);
    const unsigned char* p = m_block.data + start;
    const auto available = static_cast<std::size_t>(m_block.length - start);
    const auto* found = static_cast<const unsigned char*>(std::memchr(p, delimiter, available));
    const std::size_t length = found != nullptr ? static_cast<std::size_t>(found - p) : available;
    const std::size_t kept = std::min(length, kTokenBufferSize - 1);
    std::memcpy(out, p, kept);
    out[kept] = '\0';
    m_block.position = start + length + (found != nullptr ? 1 : 0);
}

MemoryStream::TokenSpan MemoryStream::ScanToken() {
    const char* const data = reinterpret_cast<const char*>(m_block.data);
    const char* const end = data + m_block.length;
    const char* p = data + std::min(m_block.position, m_block.length);
    while (p != end && IsTokenSpace(*p))
        ++p;
    const char* const begin = p;
    while (p != end && !IsTokenSpace(*p))
        ++p;
    const TokenSpan span{begin, static_cast<std::size_t>(p - begin)};
    while (p != end && IsBlank(*p))
        ++p;
    const char* const lineEnd = p;
    while (p != end && IsLineEnd(*p))
        ++p;
    m_passedEOL = p != lineEnd;
    m_block.position = static_cast<unsigned long long>(p - data);
    return span;
}

void MemoryStream::ParseToken(String& out) {
    const TokenSpan span = ScanToken();
    out = span.length != 0 ? String(span.begin, static_cast<int>(span.length)) : String();
    SetStatusMeter();
}

const char* MemoryStream::ParseScalarToken(char (&scratch)[256]) {
    const TokenSpan span = ScanToken();
    const char* token = scratch;
    if (span.length < sizeof scratch) {
        std::memcpy(scratch, span.begin, span.length);
        scratch[span.length] = '\0';
    } else {
        String& shared = FileToken();
        shared = String(span.begin, static_cast<int>(span.length));
        token = shared.Get() != nullptr ? shared.Get() : "";
    }
    SetStatusMeter();
    return token;
}

// ---- peeks --------------------------------------------------------------------------------------

bool MemoryStream::IsHeaderAtByte(unsigned long long at, bool anyVersion) const {
    if (IsBinary()) {
        if (at >= m_block.length || m_block.length - at < 4)
            return false;
        unsigned int word;
        std::memcpy(&word, m_block.data + at, sizeof word);
        return (word & kHeaderTokenBit) != 0;
    }
    return at < m_block.length &&
           IsHeaderBracket(static_cast<char>(m_block.data[at]), m_version, anyVersion);
}

bool MemoryStream::IsHeader() {
    return IsHeaderAtByte(m_block.position, false);
}

bool MemoryStream::IsHeaderAt0() {
    return IsHeaderAtByte(0, false);
}

bool MemoryStream::IsHeaderFromAnyVersion() {
    if (IsAscii())
        SkipWhite();
    return IsHeaderAtByte(m_block.position, true);
}

bool MemoryStream::IsLabel() {
    if (IsBinary()) {
        if (m_block.position >= m_block.length || m_block.length - m_block.position < 4)
            return false;
        unsigned int word;
        std::memcpy(&word, m_block.data + m_block.position, sizeof word);
        return (word & kLabelTokenBit) != 0;
    }
    SkipWhite();
    for (unsigned long long at = m_block.position; at < m_block.length; ++at) {
        const char c = static_cast<char>(m_block.data[at]);
        if (c == '=')
            return true;
        if (IsLineEnd(c))
            return false;
    }
    return false;
}

bool MemoryStream::IsEndHeaderAt0() {
    if (IsBinary())
        return m_lastTokenWasHeader && m_lastTokenWasLabel;
    if (m_version < kAngleVersion)
        return m_block.length >= 4 && std::memcmp(m_block.data, "[End", 4) == 0;
    return m_block.length >= 2 && std::memcmp(m_block.data, "</", 2) == 0;
}

// ---- progress and side information
// ---------------------------------------------------------------

void MemoryStream::SetStatusMeter() {
    if (m_block.position >= m_nextMeterPosition && m_meterStep != 0) {
        StatusMessage::SetProgress(
            static_cast<int>(m_block.position / static_cast<unsigned>(m_meterStep)));
        m_nextMeterPosition += static_cast<unsigned>(m_meterStep);
    }
}

VarnStream* MemoryStream::GetInfoStream() {
    if (!SVNIsVersioned(m_fileName))
        return this;
    if (m_infoStream == nullptr)
        m_infoStream = new MemoryStream;
    if (m_infoStream->GetFileName().IsEmpty()) {
        String name = m_fileName;
        name += String(".vinfo");
        if (!m_infoStream->Open(name, m_mode | FM_DONTASK)) {
            DeleteInfoStream();
            return nullptr;
        }
    }
    m_infoStream->SetVersion(m_version);
    return m_infoStream;
}
