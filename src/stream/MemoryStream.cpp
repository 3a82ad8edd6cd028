// MemoryStream.cpp - the stream over one growable block of memory.

#include "fileio/stream/MemoryStream.h"

#include "fileio/handlers/StatusMessage.h"
#include "fileio/memory/Pool.h"
#include "fileio/path/VersionControl.h"
#include "path/MissingFiles.h"
#include "platform/Platform.h"
#include "stream/StreamBytes.h"

#include <algorithm>
#include <cstring>
#include <string>

using namespace fileio::detail;

namespace {

/// The least a full block grows by.
constexpr unsigned long long kGrowthStep = 32768;

/// The suffix of a versioned file's companion information file.
constexpr const char* kInfoSuffix = ".vinfo";

} // namespace

/// One column of the opening table (MemoryStream.h).
struct MemoryStream::Opening {
    FileMode mode = FM_STORING;
    /// The bytes that become the data, or with FM_APPEND are added to them.
    std::string_view bytes{};
    /// The bytes are a file's image: they replace the data in a block of their exact size,
    /// the file's path becomes the file name, and the progress display starts.
    const String* file = nullptr;
    /// The data stay until the new bytes come (else they are dropped first).
    bool keepData = false;
    /// The version goes back to 5.0 first.
    bool resetVersion = false;
    /// A storing stream with the Varn bit writes the marker.
    bool writesMarker = false;
    /// The file name is dropped.
    bool dropsFileName = false;
};

MemoryStream::MemoryStream() = default;

MemoryStream::MemoryStream(const MemoryStream& other) : VarnStream() {
    *this = other;
}

MemoryStream& MemoryStream::operator=(const MemoryStream& other) {
    if (this != &other) {
        SetMode(other.GetMode());
        SetVersion(other.GetVersion());
        Assign(other.GetData(), other.GetLength());
    }
    return *this;
}

MemoryStream::~MemoryStream() {
    ReleaseBuffer();
    DeleteInfoStream();
}

void MemoryStream::ReleaseBuffer() {
    Window& window = TransportWindow();
    PlatformFree(window.data);
    window = Window{};
}

void MemoryStream::DeleteInfoStream() {
    delete m_infoStream;
    m_infoStream = nullptr;
}

// ---- opening ------------------------------------------------------------------------------------

bool MemoryStream::Open(const String& path, FileMode mode) {
    SetMode(mode);
    String name = path;
    std::string bytes;
    if (!fileio::detail::LocateFileToLoad(name, IsDontAsk()) ||
        fileio::platform::Files().readWholeFile(name.Get() != nullptr ? name.Get() : "", bytes) !=
            fileio::platform::ReadResult::Read) {
        OnFailed();
        return false;
    }
    OpenWith({.mode = mode, .bytes = bytes, .file = &name, .resetVersion = true});
    return true;
}

bool MemoryStream::Open(const void* data, unsigned long long length, FileMode mode) {
    const bool append = (mode & FM_APPEND) != 0;
    OpenWith({.mode = mode,
              .bytes = {static_cast<const char*>(data), static_cast<std::size_t>(length)},
              .keepData = append,
              .resetVersion = !append});
    return true;
}

bool MemoryStream::Open(FileMode mode) {
    const bool keep = (mode & (FM_LOADING | FM_APPEND)) != 0;
    OpenWith({.mode = mode, .keepData = keep, .writesMarker = true, .dropsFileName = true});
    return true;
}

void MemoryStream::OpenWith(const Opening& opening) {
    UnInitProgress();
    SetMode(opening.mode & ~FM_FAILED);
    DeleteInfoStream();
    if (!opening.keepData)
        ReleaseBuffer();
    if (opening.resetVersion)
        SetVersion(kUnknownVersion);
    Window& window = TransportWindow();
    if (opening.file != nullptr && !opening.bytes.empty()) {
        window.data = static_cast<unsigned char*>(PlatformAlloc(opening.bytes.size()));
        std::memcpy(window.data, opening.bytes.data(), opening.bytes.size());
        window.length = window.capacity = opening.bytes.size();
    } else if (!opening.bytes.empty()) {
        window.position = window.length;
        Write(opening.bytes.data(), opening.bytes.size());
    }
    if (opening.file != nullptr)
        SetFileName(*opening.file);
    else if (opening.dropsFileName)
        SetFileName(String());
    if (opening.file != nullptr) {
        SetTotalLength(window.length);
        if (!IsDontProgress())
            InitProgress(*opening.file);
    } else {
        SetNextMeterPosition(window.length + 1);
    }
    window.position = 0;
    if (IsVarn() && !IsAppend() && (IsLoading() || opening.writesMarker))
        ApplySuiteFileMarker();
    OffFailed();
    if (IsAppend())
        window.position = window.length;
}

// ---- the block ----------------------------------------------------------------------------------

void MemoryStream::Reserve(unsigned long long needed) {
    Window& window = TransportWindow();
    if (needed <= window.capacity)
        return;
    const unsigned long long count = needed - std::min(needed, window.position);
    const unsigned long long capacity =
        std::max({window.capacity + std::max(count, kGrowthStep), window.capacity * 2, needed});
    auto* block = static_cast<unsigned char*>(PlatformAlloc(capacity));
    if (window.length != 0)
        std::memcpy(block, window.data, static_cast<std::size_t>(window.length));
    PlatformFree(window.data);
    window.data = block;
    window.capacity = capacity;
}

void MemoryStream::SetSize(unsigned long long size) {
    Empty();
    Window& window = TransportWindow();
    window.data = size != 0 ? static_cast<unsigned char*>(PlatformAlloc(size)) : nullptr;
    window.capacity = size;
    SetNextMeterPosition(size + 1);
}

void MemoryStream::Empty() {
    ReleaseBuffer();
    DeleteInfoStream();
    SetVersion(kUnknownVersion);
}

void MemoryStream::Assign(const void* data, unsigned long long length) {
    Window& window = TransportWindow();
    window.position = 0;
    window.length = 0;
    Reserve(length);
    if (length != 0)
        std::memcpy(window.data, data, static_cast<std::size_t>(length));
    window.length = length;
}

// ---- the transport ------------------------------------------------------------------------------

bool MemoryStream::Refill(Window&) {
    return false;
}

unsigned long long MemoryStream::MakeRoom(Window& window, unsigned long long count) {
    const unsigned long long end = window.position + count;
    if (end < window.position)
        fileio::platform::Fatal("FileIO: a memory stream cannot grow beyond the address space");
    Reserve(end);
    return window.capacity - window.position;
}

void MemoryStream::Reposition(Window& window, unsigned long long offset) {
    window.position = offset;
}

unsigned long long MemoryStream::DataLength(const Window& window) {
    return window.length;
}

void MemoryStream::Commit(Window&) {}

void MemoryStream::Close() {
    UnInitProgress();
}

bool MemoryStream::Eof() const {
    return TransportWindow().position >= TransportWindow().length;
}

// The member of the base that fills a memory stream lives here, so that the stream core
// does not depend on this class.
bool VarnStream::ReadLine(MemoryStream& line) {
    std::string spill;
    std::string_view bytes;
    const bool found = NextLine(spill, bytes);
    line.Assign(bytes.data(), bytes.size());
    return found;
}

// ---- peeks --------------------------------------------------------------------------------------

bool MemoryStream::IsHeaderAtByte(unsigned long long at) const {
    const Window& window = TransportWindow();
    if (IsBinary()) {
        if (at >= window.length || window.length - at < 4)
            return false;
        unsigned int word;
        std::memcpy(&word, window.data + at, sizeof word);
        return (word & kHeaderTokenBit) != 0;
    }
    return at < window.length &&
           IsHeaderBracket(window.data[at], GenerationOf(GetVersion()), false);
}

bool MemoryStream::IsHeader() {
    return IsHeaderAtByte(TransportWindow().position);
}

bool MemoryStream::IsHeaderAt0() {
    return IsHeaderAtByte(0);
}

bool MemoryStream::IsEndHeaderAt0() {
    if (IsBinary())
        return WasLastTokenHeader() && WasLastTokenLabel();
    const Window& window = TransportWindow();
    if (GenerationOf(GetVersion()) != TextGeneration::Angle)
        return window.length >= 4 && std::memcmp(window.data, "[End", 4) == 0;
    return window.length >= 2 && std::memcmp(window.data, "</", 2) == 0;
}

// ---- progress and side information --------------------------------------------------------------

void MemoryStream::SetStatusMeter() {
    AdvanceMeter();
}

VarnStream* MemoryStream::GetInfoStream() {
    if (!SVNIsVersioned(GetFileName()))
        return this;
    if (m_infoStream == nullptr)
        m_infoStream = new MemoryStream;
    if (m_infoStream->GetFileName().IsEmpty()) {
        String name = GetFileName();
        name += String(kInfoSuffix);
        if (!m_infoStream->Open(name, GetMode() | FM_DONTASK)) {
            DeleteInfoStream();
            return nullptr;
        }
    }
    m_infoStream->SetVersion(GetVersion());
    return m_infoStream;
}
