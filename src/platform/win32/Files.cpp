// Files.cpp - files and folders, Win32 implementation (the wide calls, with the library's
// 8-bit text converted from the system code page).

#include "platform/Platform.h"
#include "platform/win32/WideText.h"

#include <windows.h>

namespace fileio::platform {

namespace {

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

bool CopyFile(const char* from, const char* to) {
    return CopyFileW(Widen(from).c_str(), Widen(to).c_str(), FALSE) != 0;
}

bool RemoveFile(const char* path) {
    return DeleteFileW(Widen(path).c_str()) != 0;
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

bool GetCurrentDirectory(std::string& out) {
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

bool SetCurrentDirectory(const char* path) {
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
    static FileServices table = {
        Exists,
        IsFolder,
        CopyFile,
        RemoveFile,
        RemoveFolder,
        RenameFile,
        CreateFolder,
        GetCurrentDirectory,
        SetCurrentDirectory,
        FullPath,
        ListFolder,
    };
    return table;
}

} // namespace fileio::platform
