// Files.cpp - whole-file services, POSIX implementation.

#include "platform/Platform.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fileio::platform {

namespace {

int OpenRetrying(const char* path, int flags, mode_t mode = 0) {
    int fd;
    do {
        fd = ::open(path, flags | O_CLOEXEC, mode);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

ReadResult ReadWholeFile(const char* path, std::string& bytes) {
    bytes.clear();
    const int fd = OpenRetrying(path, O_RDONLY);
    if (fd < 0)
        return (errno == ENOENT || errno == ENOTDIR) ? ReadResult::Missing : ReadResult::Failed;
    char buffer[16384];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            ::close(fd);
            bytes.clear();
            return ReadResult::Failed;
        }
        if (got == 0)
            break;
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return ReadResult::Read;
}

bool WriteAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t put = ::write(fd, data, size);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        data += put;
        size -= static_cast<std::size_t>(put);
    }
    return true;
}

bool WriteFileDurably(const char* path, const void* data, std::size_t size) {
    const int fd = OpenRetrying(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (fd < 0)
        return false;
    bool ok = WriteAll(fd, static_cast<const char*>(data), size) && ::fsync(fd) == 0;
    ok = (::close(fd) == 0) && ok;
    return ok;
}

void FlushFolderOf(const char* path) {
    std::string folder(path);
    const std::size_t slash = folder.rfind('/');
    folder = slash == std::string::npos ? std::string(".") : folder.substr(0, slash + 1);
    const int fd = OpenRetrying(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd >= 0) {
        ::fsync(fd); // a folder that cannot be flushed still holds the renamed file
        ::close(fd);
    }
}

bool ReplaceByRename(const char* from, const char* to) {
    if (::rename(from, to) != 0)
        return false;
    FlushFolderOf(to);
    return true;
}

bool RemoveFile(const char* path) {
    return ::unlink(path) == 0;
}

FileLockToken TakeFileLock(const char* path) {
    const int fd = OpenRetrying(path, O_RDWR | O_CREAT, 0600);
    if (fd < 0)
        return kNoFileLock;
    int locked;
    do {
        locked = ::flock(fd, LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    if (locked != 0) {
        ::close(fd);
        return kNoFileLock;
    }
    return fd;
}

void ReleaseFileLock(FileLockToken token) {
    if (token == kNoFileLock)
        return;
    const int fd = static_cast<int>(token);
    ::flock(fd, LOCK_UN);
    ::close(fd);
}

} // namespace

char NativeSeparator() noexcept {
    return '/';
}

FileServices& Files() {
    static FileServices table{ReadWholeFile, WriteFileDurably, ReplaceByRename,
                              RemoveFile,    TakeFileLock,     ReleaseFileLock};
    return table;
}

} // namespace fileio::platform
