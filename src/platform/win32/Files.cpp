// Files.cpp - files and folders, Win32 implementation. The path services use the wide
// calls, with the library's 8-bit text converted from the system code page.

#include "platform/Platform.h"
#include "platform/win32/WideText.h"

#include <string>
#include <windows.h>

namespace fileio::platform {

namespace {

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

bool WriteFileDurably(const char* path, const void* data, std::size_t size) {
    HANDLE file =
        CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const char* bytes = static_cast<const char*>(data);
    bool ok = true;
    while (ok && size > 0) {
        const DWORD chunk = size > 0x40000000u ? 0x40000000u : static_cast<DWORD>(size);
        DWORD put = 0;
        ok = WriteFile(file, bytes, chunk, &put, nullptr) && put == chunk;
        bytes += put;
        size -= put;
    }
    ok = ok && FlushFileBuffers(file);
    ok = CloseHandle(file) && ok;
    return ok;
}

bool ReplaceByRename(const char* from, const char* to) {
    return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
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

using win32::Narrow;
using win32::Widen;

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

} // namespace

FileServices& Files() {
    static FileServices table{
        .readWholeFile = ReadWholeFile,
        .writeFileDurably = WriteFileDurably,
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
    };
    return table;
}

} // namespace fileio::platform
