// FileStream.cpp - the stream over a disk file: a buffer as the transport's window, the
// atomic save, the side-information stream, and the file-type tests.

#include "fileio/stream/FileStream.h"

#include "fileio/handlers/MessageRequest.h"
#include "fileio/handlers/ResourceStrings.h"
#include "fileio/path/VersionControl.h"
#include "fileio/stream/MemoryStream.h"
#include "handlers/ResourceIds.h"
#include "path/MissingFiles.h"
#include "platform/Platform.h"

#include <algorithm>
#include <vector>

using fileio::platform::AtomicSave;
using fileio::platform::FileAccess;
using fileio::platform::FileHandle;
using fileio::platform::Files;
using fileio::platform::kNoFile;

namespace {

/// The bytes the stream holds of its file at a time.
constexpr std::size_t kBufferSize = 256 * 1024;
/// The message types of a read-only target and of a failure the system explains.
constexpr unsigned int kReadOnlyMessage = 7;
constexpr unsigned int kFailureMessage = 10;
/// How often a found file that cannot be opened is tried.
constexpr int kOpenAttempts = 2;
/// The suffix of a versioned file's companion information file.
constexpr const char* kInfoSuffix = ".vinfo";
/// The room a file-type test gives the first line.
constexpr unsigned long long kFirstLineRoom = 512;

/// Tells the user why the file `name` could not be saved or opened.
void TellFailure(const String& name, const std::string& reason) {
    MessageRequest(name + String(": ") + String(reason), kFailureMessage,
                   fileio::detail::resource::kApplicationCaption);
}

} // namespace

/// The open file: read through the buffer when loading; written into the buffer and from
/// it into the atomic save's temporary file when storing.
struct FileStream::File {
    bool storing = false;
    FileHandle handle = kNoFile;
    AtomicSave save;
    std::vector<unsigned char> buffer = std::vector<unsigned char>(kBufferSize);
    /// Loading: the file's length. Storing: the end of what was handed to the file.
    unsigned long long length = 0;
    /// Where the system's file position stands.
    unsigned long long position = 0;
    /// The reason of the first failed write, empty while none failed.
    std::string error;

    bool MoveTo(unsigned long long offset) {
        if (offset == position)
            return true;
        if (!Files().seekFile(storing ? save.File() : handle, offset))
            return false;
        position = offset;
        return true;
    }
};

FileStream::FileStream() = default;

FileStream::~FileStream() {
    Close();
    FileStream::ClearFailedList();
    delete m_infoStream;
}

// ---- opening and closing ------------------------------------------------------------------------

bool FileStream::Open(const String& name, FileMode mode) {
    String copy = name;
    return Open(copy, mode);
}

bool FileStream::Open(String& name, FileMode mode) {
    Close();
    SetMode(mode);
    m_file = new File;
    const bool opened = IsLoading() ? OpenForLoading(name) : OpenForStoring(name);
    if (!opened) {
        delete m_file;
        m_file = nullptr;
        TransportWindow() = Window{};
        OnFailed();
        return false;
    }
    SetFileName(name);
    if (IsLoading()) {
        SetTotalLength(m_file->length);
        if (!IsDontProgress())
            InitProgress(name);
    }
    // An appended file keeps the marker it has; a new one gets its own.
    if (IsVarn() && (IsLoading() || !IsAppend() || m_file->length == 0))
        ApplySuiteFileMarker();
    OffFailed();
    if (IsAppend())
        Seek(0, SM_END);
    return true;
}

bool FileStream::OpenForLoading(String& name) {
    if (!fileio::detail::LocateFileToLoad(name, IsDontAsk()))
        return false;
    for (int attempt = 0; attempt < kOpenAttempts && m_file->handle == kNoFile; ++attempt)
        m_file->handle = Files().openForReading(name.Get());
    if (m_file->handle == kNoFile)
        return false;
    const long long length = Files().fileLength(m_file->handle);
    m_file->length = length > 0 ? static_cast<unsigned long long>(length) : 0;
    Window& window = TransportWindow();
    window = Window{};
    window.data = m_file->buffer.data();
    return true;
}

bool FileStream::OpenForStoring(const String& name) {
    const FileAccess access = Files().access(name.Get() != nullptr ? name.Get() : "");
    if (access == FileAccess::ReadOnly || access == FileAccess::Unknown) {
        String text = GetResourceString(fileio::detail::resource::kReadOnlyFile);
        text.Replace(String("%1"), name);
        MessageRequest(text, kReadOnlyMessage, fileio::detail::resource::kApplicationCaption);
        return false;
    }
    File& file = *m_file;
    file.storing = true;
    std::string error;
    if (!file.save.Begin(name.Get() != nullptr ? name.Get() : "", error)) {
        TellFailure(name, error);
        return false;
    }
    m_temporaryName = String(file.save.TemporaryPath());
    if (IsAppend() && access == FileAccess::Writable) {
        // The old contents first, so that the stream goes on after them.
        const FileHandle old = Files().openForReading(file.save.FinalTarget().c_str());
        bool copied = old != kNoFile;
        for (long long got; copied && (got = Files().readFile(old, file.buffer.data(),
                                                              file.buffer.size())) != 0;) {
            copied = got > 0 && Files().writeFile(file.save.File(), file.buffer.data(),
                                                  static_cast<std::size_t>(got));
            file.length += got > 0 ? static_cast<unsigned long long>(got) : 0;
        }
        if (!copied)
            error = fileio::platform::System().lastErrorText();
        if (old != kNoFile)
            Files().closeFile(old);
        if (!copied) {
            file.save.Abandon();
            m_temporaryName = String();
            TellFailure(name, error);
            return false;
        }
        file.position = file.length;
    }
    Window& window = TransportWindow();
    window = Window{};
    window.data = file.buffer.data();
    window.capacity = file.buffer.size();
    return true;
}

void FileStream::Close() {
    if (m_file == nullptr)
        return;
    UnInitProgress();
    CloseInfoStream();
    File& file = *m_file;
    if (file.storing) {
        Commit(TransportWindow());
        std::string error = file.error;
        const bool saved = error.empty() ? file.save.Commit(error) : (file.save.Abandon(), false);
        if (!saved) {
            OnFailed();
            TellFailure(GetFileName(), error);
        }
    } else {
        Files().closeFile(file.handle);
    }
    delete m_file;
    m_file = nullptr;
    m_temporaryName = String();
    TransportWindow() = Window{};
}

void FileStream::WriteFailed() {
    if (m_file->error.empty())
        m_file->error = fileio::platform::System().lastErrorText();
    OnFailed();
}

// ---- the transport ------------------------------------------------------------------------------

bool FileStream::Refill(Window& window) {
    if (m_file == nullptr || m_file->storing)
        return false;
    File& file = *m_file;
    const unsigned long long offset = window.origin + window.position;
    if (offset >= file.length || !file.MoveTo(offset))
        return false;
    const long long got = Files().readFile(file.handle, file.buffer.data(), file.buffer.size());
    if (got <= 0) {
        if (got < 0)
            OnFailed();
        return false;
    }
    file.position = offset + static_cast<unsigned long long>(got);
    window.data = file.buffer.data();
    window.origin = offset;
    window.position = 0;
    window.length = static_cast<unsigned long long>(got);
    return true;
}

unsigned long long FileStream::MakeRoom(Window& window, unsigned long long) {
    if (m_file == nullptr || !m_file->storing || !m_file->error.empty())
        return 0;
    Commit(window);
    window.origin += window.position;
    window.position = 0;
    window.length = 0;
    return m_file->error.empty() ? window.capacity : 0;
}

void FileStream::Reposition(Window& window, unsigned long long offset) {
    Commit(window);
    window.origin = offset;
    window.position = 0;
    window.length = 0;
}

unsigned long long FileStream::DataLength(const Window& window) {
    const unsigned long long held = m_file != nullptr ? m_file->length : 0;
    return std::max(held, window.origin + window.length);
}

void FileStream::Commit(Window& window) {
    if (m_file == nullptr || !m_file->storing || !window.dirty || window.length == 0)
        return;
    File& file = *m_file;
    window.dirty = false;
    if (!file.error.empty())
        return;
    if (!file.MoveTo(window.origin) ||
        !Files().writeFile(file.save.File(), window.data,
                           static_cast<std::size_t>(window.length))) {
        WriteFailed();
        return;
    }
    file.position = window.origin + window.length;
    file.length = std::max(file.length, file.position);
}

// ---- side information ---------------------------------------------------------------------------

VarnStream* FileStream::GetInfoStream() {
    if (!SVNIsVersioned(GetFileName()))
        return this;
    if (m_file == nullptr)
        return nullptr;
    if (m_infoStream == nullptr) {
        m_infoStream = new FileStream;
        if (!m_infoStream->Open(GetFileName() + String(kInfoSuffix), GetMode() | FM_DONTASK)) {
            delete m_infoStream;
            m_infoStream = nullptr;
            return nullptr;
        }
    }
    return m_infoStream;
}

void FileStream::CloseInfoStream() {
    if (m_infoStream != nullptr)
        m_infoStream->Close();
}

// ---- missing files ------------------------------------------------------------------------------

void FileStream::AddFileAlias(const String& from, const String& to) {
    fileio::detail::AddFileAlias(from, to);
}
void FileStream::AddPathAlias(const String& from, const String& to) {
    fileio::detail::AddPathAlias(from, to);
}
bool FileStream::FindFileAlias(String& name) {
    return fileio::detail::FindFileAlias(name);
}
bool FileStream::FindFileAliasNameOnly(String& name) {
    return fileio::detail::FindFileAliasNameOnly(name);
}
bool FileStream::FindPathAlias(String& folder) {
    return fileio::detail::FindPathAlias(folder);
}
bool FileStream::FindAlias(String& name) {
    return fileio::detail::FindAlias(name);
}
bool FileStream::FindAliasAsk(String& name) {
    return fileio::detail::FindAliasAsk(name);
}
bool FileStream::IsInFailedList(const String& name) {
    return fileio::detail::IsInFailedList(name);
}
void FileStream::ClearFailedList() {
    fileio::detail::ClearFailedList();
}
void FileStream::ResetCancelAll() {
    fileio::detail::ResetCancelAll();
}
bool FileStream::HasFileAliases() {
    return fileio::detail::HasFileAliases();
}
void FileStream::FreeFileAliases() {
    fileio::detail::FreeFileAliases();
}
void FileStream::FreePathAliases() {
    fileio::detail::FreePathAliases();
}

// ---- file-type tests ----------------------------------------------------------------------------

namespace {

/// Reads the first line of the suite file at path into `line`, set up to read a header from
/// it: false when the file cannot be opened or its first token is no header.
bool FirstLineStartsWithHeader(const String& path, MemoryStream& line) {
    FileStream file;
    if (!file.Open(path, FM_LOADING | FM_VARN))
        return false;
    line.SetSize(kFirstLineRoom);
    file.ReadLine(line);
    line.SetMode(FM_LOADING | (file.IsBinary() ? FM_BINARY : FM_STORING));
    line.SetVersion(file.GetVersion());
    return line.IsHeaderAt0();
}

} // namespace

bool IsFileOfTypeVarn(const String& path) {
    MemoryStream line;
    return FirstLineStartsWithHeader(path, line);
}

bool IsFileOfType(const String& path, int headerId) {
    MemoryStream line;
    if (!FirstLineStartsWithHeader(path, line))
        return false;
    Header header;
    line >> header;
    return header.id == headerId;
}
