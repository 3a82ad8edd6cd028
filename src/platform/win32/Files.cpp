// Files.cpp - files and folders, Win32 implementation. The path services use the wide
// calls, with the library's 8-bit text converted from the system code page.

#include "platform/Platform.h"
#include "platform/win32/WideText.h"

#include <random>
#include <string>
#include <string_view>
#include <windows.h>

namespace fileio::platform {

namespace {

using win32::Narrow;
using win32::Widen;

ReadResult ReadWholeFile(const char* path, std::string& bytes) {
    bytes.clear();
    HANDLE file =
        CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        return (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
                   ? ReadResult::Missing
                   : ReadResult::Failed;
    }
    char buffer[16384];
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(file, buffer, sizeof buffer, &got, nullptr)) {
            CloseHandle(file);
            bytes.clear();
            return ReadResult::Failed;
        }
        if (got == 0)
            break;
        bytes.append(buffer, got);
    }
    CloseHandle(file);
    return ReadResult::Read;
}

/// How often a replacement is tried while another program (an indexer, a virus scanner)
/// holds the file, and how long to wait between tries.
constexpr int kReplaceAttempts = 5;
constexpr DWORD kReplaceWaitMs = 100;

/// A failure that another program's open handle causes and that may pass.
bool IsPassing(DWORD error) {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
           error == ERROR_ACCESS_DENIED || error == ERROR_UNABLE_TO_REMOVE_REPLACED;
}

/// Whether the target may be replaced now: another program's handle that does not share
/// deletion forbids it. Asked first, so that a replacement that cannot succeed is not begun
/// (some implementations of ReplaceFileW leave files of their own behind when it fails).
bool MayReplace(const std::wstring& to) {
    HANDLE probe =
        CreateFileW(to.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (probe == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(probe);
    return true;
}

bool ReplaceOnce(const std::wstring& from, const std::wstring& to) {
    if (GetFileAttributesW(to.c_str()) != INVALID_FILE_ATTRIBUTES)
        return MayReplace(to) &&
               ReplaceFileW(to.c_str(), from.c_str(), nullptr,
                            REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS,
                            nullptr, nullptr) != 0;
    return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
}

bool ReplaceByRename(const char* from, const char* to) {
    const std::wstring source = Widen(from);
    const std::wstring target = Widen(to);
    for (int attempt = 1;; ++attempt) {
        if (ReplaceOnce(source, target))
            return true;
        const DWORD error = GetLastError();
        if (attempt == kReplaceAttempts || !IsPassing(error))
            return false;
        Sleep(kReplaceWaitMs);
        SetLastError(error);
    }
}

bool RemoveFile(const char* path) {
    return DeleteFileA(path) != 0;
}

FileLockToken TakeFileLock(const char* path) {
    HANDLE file = CreateFileA(path, GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return kNoFileLock;
    OVERLAPPED whole{};
    if (!LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, MAXDWORD, MAXDWORD, &whole)) {
        CloseHandle(file);
        return kNoFileLock;
    }
    return reinterpret_cast<FileLockToken>(file);
}

void ReleaseFileLock(FileLockToken token) {
    if (token == kNoFileLock)
        return;
    HANDLE file = reinterpret_cast<HANDLE>(token);
    OVERLAPPED whole{};
    UnlockFileEx(file, 0, MAXDWORD, MAXDWORD, &whole);
    CloseHandle(file);
}

DWORD Attributes(const char* path) {
    return GetFileAttributesW(Widen(path).c_str());
}

bool Exists(const char* path) {
    return Attributes(path) != INVALID_FILE_ATTRIBUTES;
}

bool IsFolder(const char* path) {
    DWORD attributes = Attributes(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool CopyOneFile(const char* from, const char* to) {
    return CopyFileW(Widen(from).c_str(), Widen(to).c_str(), FALSE) != 0;
}

bool RemoveFolder(const char* path) {
    return RemoveDirectoryW(Widen(path).c_str()) != 0;
}

bool RenameFile(const char* from, const char* to) {
    return MoveFileExW(Widen(from).c_str(), Widen(to).c_str(), 0) != 0;
}

bool CreateFolder(const char* path) {
    return CreateDirectoryW(Widen(path).c_str(), nullptr) != 0;
}

bool ReadCurrentDirectory(std::string& out) {
    DWORD size = GetCurrentDirectoryW(0, nullptr);
    if (size == 0)
        return false;
    std::wstring buffer(size, L'\0');
    DWORD n = GetCurrentDirectoryW(size, buffer.data());
    if (n == 0 || n >= size)
        return false;
    buffer.resize(n);
    out = Narrow(buffer);
    return true;
}

bool ChangeCurrentDirectory(const char* path) {
    return SetCurrentDirectoryW(Widen(path).c_str()) != 0;
}

bool FullPath(const char* path, std::string& out) {
    std::wstring wide = Widen(path);
    if (wide.empty()) {
        SetLastError(ERROR_INVALID_NAME);
        return false;
    }
    DWORD size = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    if (size == 0)
        return false;
    std::wstring buffer(size, L'\0');
    DWORD n = GetFullPathNameW(wide.c_str(), size, buffer.data(), nullptr);
    if (n == 0 || n >= size)
        return false;
    buffer.resize(n);
    out = Narrow(buffer);
    return true;
}

bool ListFolder(const char* folder, std::vector<FolderEntry>& out) {
    std::wstring pattern = Widen(folder);
    if (!pattern.empty() && pattern.back() != L'\\' && pattern.back() != L'/')
        pattern += L'\\';
    pattern += L'*';
    WIN32_FIND_DATAW data;
    HANDLE find = FindFirstFileW(pattern.c_str(), &data);
    if (find == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_NOT_FOUND; // an empty drive root has no entries
    do {
        std::wstring_view name(data.cFileName);
        if (name == L"." || name == L"..")
            continue;
        FolderEntry item;
        item.name = Narrow(name);
        item.isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        item.isLink = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        out.push_back(std::move(item));
    } while (FindNextFileW(find, &data));
    FindClose(find);
    return true;
}

// ---- open files -------------------------------------------------------------------------

/// The temporary name's ending: ".vrn" and this many random letters.
constexpr int kUniqueLetters = 8;
/// How many unique names CreateBeside tries before it gives up.
constexpr int kNameAttempts = 100;
/// The prefix GetFinalPathNameByHandleW puts before a drive path.
constexpr std::wstring_view kLongPathPrefix = L"\\\\?\\";

FileAccess Access(const char* path) {
    const DWORD attributes = Attributes(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        return (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
                   ? FileAccess::Missing
                   : FileAccess::Unknown;
    }
    if ((attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0)
        return FileAccess::ReadOnly;
    return FileAccess::Writable;
}

std::string FinalPath(const char* path) {
    const DWORD attributes = Attributes(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return path;
    HANDLE file =
        CreateFileW(Widen(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return path;
    std::wstring final(MAX_PATH, L'\0');
    DWORD n = GetFinalPathNameByHandleW(file, final.data(), static_cast<DWORD>(final.size()),
                                        FILE_NAME_NORMALIZED);
    if (n >= final.size()) {
        final.resize(n);
        n = GetFinalPathNameByHandleW(file, final.data(), static_cast<DWORD>(final.size()),
                                      FILE_NAME_NORMALIZED);
    }
    CloseHandle(file);
    if (n == 0 || n >= final.size())
        return path;
    final.resize(n);
    if (final.compare(0, kLongPathPrefix.size(), kLongPathPrefix) == 0)
        final.erase(0, kLongPathPrefix.size());
    return Narrow(final);
}

FileHandle OpenForReading(const char* path) {
    HANDLE file = CreateFileW(Widen(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file == INVALID_HANDLE_VALUE ? kNoFile : reinterpret_cast<FileHandle>(file);
}

FileHandle CreateBeside(const char* target, std::string& temporaryPath) {
    static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        std::string name = std::string(target) + ".vrn";
        for (int i = 0; i < kUniqueLetters; ++i)
            name += kLetters[random() % (sizeof kLetters - 1)];
        HANDLE file = CreateFileW(Widen(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS)
            continue;
        if (file == INVALID_HANDLE_VALUE)
            return kNoFile;
        temporaryPath = std::move(name);
        return reinterpret_cast<FileHandle>(file);
    }
    SetLastError(ERROR_FILE_EXISTS);
    return kNoFile;
}

HANDLE HandleOf(FileHandle file) {
    return reinterpret_cast<HANDLE>(file);
}

long long ReadFromFile(FileHandle file, void* buffer, std::size_t size) {
    const DWORD chunk = size > 0x40000000u ? 0x40000000u : static_cast<DWORD>(size);
    DWORD got = 0;
    if (!ReadFile(HandleOf(file), buffer, chunk, &got, nullptr))
        return -1;
    return got;
}

bool WriteToFile(FileHandle file, const void* data, std::size_t size) {
    const char* bytes = static_cast<const char*>(data);
    while (size > 0) {
        const DWORD chunk = size > 0x40000000u ? 0x40000000u : static_cast<DWORD>(size);
        DWORD put = 0;
        if (!WriteFile(HandleOf(file), bytes, chunk, &put, nullptr) || put != chunk)
            return false;
        bytes += put;
        size -= put;
    }
    return true;
}

bool SeekFile(FileHandle file, unsigned long long offset) {
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(offset);
    return SetFilePointerEx(HandleOf(file), to, nullptr, FILE_BEGIN) != 0;
}

long long FileLength(FileHandle file) {
    LARGE_INTEGER size;
    return GetFileSizeEx(HandleOf(file), &size) ? size.QuadPart : -1;
}

bool FlushFile(FileHandle file) {
    return FlushFileBuffers(HandleOf(file)) != 0;
}

bool CloseFile(FileHandle file) {
    return CloseHandle(HandleOf(file)) != 0;
}

} // namespace

FileServices& Files() {
    static FileServices table{
        .readWholeFile = ReadWholeFile,
        .replaceFile = ReplaceByRename,
        .removeFile = RemoveFile,
        .lockFile = TakeFileLock,
        .unlockFile = ReleaseFileLock,
        .exists = Exists,
        .isFolder = IsFolder,
        .copyFile = CopyOneFile,
        .removeFolder = RemoveFolder,
        .renameFile = RenameFile,
        .createFolder = CreateFolder,
        .getCurrentDirectory = ReadCurrentDirectory,
        .setCurrentDirectory = ChangeCurrentDirectory,
        .fullPath = FullPath,
        .listFolder = ListFolder,
        .access = Access,
        .finalPath = FinalPath,
        .openForReading = OpenForReading,
        .createBeside = CreateBeside,
        .readFile = ReadFromFile,
        .writeFile = WriteToFile,
        .seekFile = SeekFile,
        .fileLength = FileLength,
        .flushFile = FlushFile,
        .closeFile = CloseFile,
    };
    return table;
}

} // namespace fileio::platform
