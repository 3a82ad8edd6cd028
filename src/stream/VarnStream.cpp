// VarnStream.cpp - the stream base: bytes through the transport's window, the mode and
// version, the suite-file marker, manipulators, class identities and object storage.

#include "fileio/stream/VarnStream.h"

#include "fileio/memory/Pool.h"
#include "stream/StreamBytes.h"
#include "stream/StreamState.h"

#include <algorithm>
#include <cstring>

using namespace fileio::detail;

VarnStream::VarnStream()
    : m_version(kUnknownVersion), m_generation(GenerationOf(kUnknownVersion)) {}

VarnStream::~VarnStream() {
    UnInitProgress();
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

void VarnStream::SetVersion(float version) {
    m_version = version;
    m_generation = GenerationOf(version);
}

// ---- bytes through the window -------------------------------------------------------------------

bool VarnStream::RefillWindow() {
    return Refill(m_window) && Available() != 0;
}

unsigned long long VarnStream::ReadC(void* buffer, unsigned long long count) {
    auto* out = static_cast<unsigned char*>(buffer);
    unsigned long long copied = 0;
    while (copied < count && (Available() != 0 || RefillWindow())) {
        const unsigned long long n = std::min(Available(), count - copied);
        std::memcpy(out + copied, m_window.data + m_window.position, static_cast<std::size_t>(n));
        m_window.position += n;
        copied += n;
    }
    return copied;
}

void VarnStream::Read(void* buffer, long count) {
    if (count > 0)
        ReadC(buffer, static_cast<unsigned long long>(count));
}

void VarnStream::Write(const void* data, unsigned long long count) {
    const auto* in = static_cast<const unsigned char*>(data);
    while (count != 0) {
        unsigned long long room =
            m_window.position < m_window.capacity ? m_window.capacity - m_window.position : 0;
        if (room < count)
            room = MakeRoom(m_window, count);
        if (room == 0) {
            OnFailed();
            return;
        }
        const unsigned long long n = std::min(room, count);
        std::memcpy(m_window.data + m_window.position, in, static_cast<std::size_t>(n));
        m_window.position += n;
        m_window.length = std::max(m_window.length, m_window.position);
        m_window.dirty = true;
        in += n;
        count -= n;
    }
}

void VarnStream::Flush() {
    Commit(m_window);
}

void VarnStream::Seek(long long offset, SeekMode mode) {
    const auto step = static_cast<unsigned long long>(offset);
    switch (mode) {
    case SM_BEGIN:
        MoveTo(step);
        break;
    case SM_END:
        MoveTo(DataLength(m_window) - step);
        break;
    case SM_CURRENT:
        MoveTo(Position() + step);
        break;
    }
}

void VarnStream::MoveTo(unsigned long long offset) {
    if (offset >= m_window.origin && offset - m_window.origin <= m_window.length)
        m_window.position = offset - m_window.origin;
    else
        Reposition(m_window, offset);
}

unsigned long long VarnStream::GetPos() const {
    return Position();
}

bool VarnStream::IsPastData() {
    return Position() >= DataLength(m_window);
}

std::string_view VarnStream::Peek(char* scratch, std::size_t count) {
    if (Available() >= count)
        return {reinterpret_cast<const char*>(m_window.data + m_window.position), count};
    const unsigned long long at = Position();
    const unsigned long long n = ReadC(scratch, count);
    MoveTo(at);
    return {scratch, static_cast<std::size_t>(n)};
}

// ---- the suite-file marker ----------------------------------------------------------------------

namespace {

/// The first byte of a binary suite file.
constexpr char kBinaryMarker = 'B';
/// The first byte of a text suite file of the angle generation.
constexpr char kAngleMarker = '<';

} // namespace

void VarnStream::ApplySuiteFileMarker() {
    if (IsLoading()) {
        const unsigned long long start = Position();
        const int marker = NextByte();
        if (marker == kBinaryMarker) {
            OnBinary();
        } else {
            if (marker == kAngleMarker)
                SetVersion(kAngleVersion);
            MoveTo(start);
        }
    } else if (IsBinary()) {
        PutBytes(&kBinaryMarker, 1);
    }
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

// ---- the shared scratch token -------------------------------------------------------------------

String& fileio::detail::FileToken() {
    static String token;
    return token;
}

void FreeVarnFileToken() {
    FileToken() = String();
}
