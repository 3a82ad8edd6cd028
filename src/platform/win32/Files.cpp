// Files.cpp - whole-file services, Win32 implementation.

#include "platform/Platform.h"

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

} // namespace

char NativeSeparator() noexcept {
    return '\\';
}

FileServices& Files() {
    static FileServices table{ReadWholeFile, WriteFileDurably, ReplaceByRename,
                              RemoveFile,    TakeFileLock,     ReleaseFileLock};
    return table;
}

} // namespace fileio::platform
