// Files.cpp - files and folders, POSIX implementation.

#include "platform/Platform.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fileio::platform {

namespace {

bool Exists(const char* path) {
    struct stat st {};
    return ::stat(path, &st) == 0;
}

bool IsFolder(const char* path) {
    struct stat st {};
    return ::stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

/// Writes all of [data, data + size) to fd, retrying short writes and interruptions.
bool WriteAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool CopyFile(const char* from, const char* to) {
    int in = ::open(from, O_RDONLY | O_CLOEXEC);
    if (in < 0)
        return false;
    struct stat source {};
    struct stat target {};
    bool ok = ::fstat(in, &source) == 0 && !S_ISDIR(source.st_mode);
    if (ok && ::stat(to, &target) == 0 && target.st_dev == source.st_dev &&
        target.st_ino == source.st_ino)
        ok = false; // copying a file onto itself would truncate it first
    int out = ok ? ::open(to, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, source.st_mode & 0777) : -1;
    ok = out >= 0;
    char buffer[64 * 1024];
    while (ok) {
        ssize_t n = ::read(in, buffer, sizeof buffer);
        if (n == 0)
            break;
        if (n < 0) {
            if (errno == EINTR)
                continue;
            ok = false;
            break;
        }
        ok = WriteAll(out, buffer, static_cast<std::size_t>(n));
    }
    if (out >= 0 && ::close(out) != 0)
        ok = false;
    int saved = errno;
    ::close(in);
    errno = saved;
    return ok;
}

bool RemoveFile(const char* path) {
    return ::unlink(path) == 0;
}

bool RemoveFolder(const char* path) {
    return ::rmdir(path) == 0;
}

bool RenameFile(const char* from, const char* to) {
    if (Exists(to)) {
        errno = EEXIST;
        return false;
    }
    return ::rename(from, to) == 0;
}

bool CreateFolder(const char* path) {
    return ::mkdir(path, 0777) == 0;
}

bool GetCurrentDirectory(std::string& out) {
    std::string buffer(256, '\0');
    for (;;) {
        if (::getcwd(buffer.data(), buffer.size()) != nullptr) {
            buffer.resize(std::char_traits<char>::length(buffer.data()));
            out = std::move(buffer);
            return true;
        }
        if (errno != ERANGE || buffer.size() > (1u << 20))
            return false;
        buffer.resize(buffer.size() * 2);
    }
}

bool SetCurrentDirectory(const char* path) {
    return ::chdir(path) == 0;
}

bool FullPath(const char* path, std::string& out) {
    std::string_view text(path);
    if (text.empty()) {
        errno = ENOENT;
        return false;
    }
    std::string currentDir;
    if (!IsLexicallyAbsolute(text) && !Files().getCurrentDirectory(currentDir))
        return false;
    out = LexicalFullPath(currentDir, text);
    return true;
}

bool ListFolder(const char* folder, std::vector<FolderEntry>& out) {
    DIR* dir = ::opendir(folder);
    if (dir == nullptr)
        return false;
    int fd = ::dirfd(dir);
    while (dirent* entry = ::readdir(dir)) {
        std::string_view name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        FolderEntry item;
        item.name.assign(name);
        struct stat st {};
        if (::fstatat(fd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(st.st_mode)) {
            item.isLink = true;
            if (::fstatat(fd, entry->d_name, &st, 0) != 0)
                st.st_mode = 0; // a dangling link: neither file nor folder to follow
        }
        item.isFolder = S_ISDIR(st.st_mode);
        out.push_back(std::move(item));
    }
    ::closedir(dir);
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
