// Files.cpp - files and folders, POSIX implementation.

#include "platform/Platform.h"

#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <random>
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

bool Exists(const char* path) {
    struct stat st {};
    return ::stat(path, &st) == 0;
}

bool IsFolder(const char* path) {
    struct stat st {};
    return ::stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

bool CopyOneFile(const char* from, const char* to) {
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

bool ReadCurrentDirectory(std::string& out) {
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

bool ChangeCurrentDirectory(const char* path) {
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

// ---- open files -------------------------------------------------------------------------

/// No write permission bit at all makes a file read-only, whoever the user is (a program
/// run by the superuser would otherwise replace files marked read-only).
constexpr mode_t kAnyWriteBit = S_IWUSR | S_IWGRP | S_IWOTH;
/// How many links finalPath follows before it gives up (a circle).
constexpr int kMostLinks = 40;
/// The temporary name's ending: ".vrn" and this many random letters.
constexpr int kUniqueLetters = 8;
/// How many unique names createBeside tries before it gives up.
constexpr int kNameAttempts = 100;

FileAccess Access(const char* path) {
    struct stat st {};
    if (::stat(path, &st) != 0)
        return (errno == ENOENT || errno == ENOTDIR) ? FileAccess::Missing : FileAccess::Unknown;
    if (S_ISDIR(st.st_mode) || (st.st_mode & kAnyWriteBit) == 0 || ::access(path, W_OK) != 0)
        return FileAccess::ReadOnly;
    return FileAccess::Writable;
}

std::string FinalPath(const char* path) {
    std::string current(path);
    for (int link = 0; link < kMostLinks; ++link) {
        std::string target(PATH_MAX, '\0');
        const ssize_t n = ::readlink(current.c_str(), target.data(), target.size());
        if (n < 0 || static_cast<std::size_t>(n) >= target.size())
            return current;
        target.resize(static_cast<std::size_t>(n));
        if (target.front() != '/') {
            const std::size_t slash = current.rfind('/');
            target = (slash == std::string::npos ? std::string() : current.substr(0, slash + 1)) +
                     target;
        }
        current = std::move(target);
    }
    return current;
}

FileHandle OpenForReading(const char* path) {
    const int fd = OpenRetrying(path, O_RDONLY);
    return fd < 0 ? kNoFile : fd;
}

FileHandle CreateBeside(const char* target, std::string& temporaryPath) {
    static constexpr char kLetters[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::random_device random;
    struct stat old {};
    const bool replacing = ::stat(target, &old) == 0 && S_ISREG(old.st_mode);
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        std::string name = std::string(target) + ".vrn";
        for (int i = 0; i < kUniqueLetters; ++i)
            name += kLetters[random() % (sizeof kLetters - 1)];
        const int fd = OpenRetrying(name.c_str(), O_RDWR | O_CREAT | O_EXCL, 0666);
        if (fd < 0 && errno == EEXIST)
            continue;
        if (fd < 0)
            return kNoFile;
        if (replacing)
            ::fchmod(fd, old.st_mode & 07777);
        temporaryPath = std::move(name);
        return fd;
    }
    errno = EEXIST;
    return kNoFile;
}

long long ReadFromFile(FileHandle file, void* buffer, std::size_t size) {
    for (;;) {
        const ssize_t got = ::read(static_cast<int>(file), buffer, size);
        if (got >= 0 || errno != EINTR)
            return got;
    }
}

bool WriteToFile(FileHandle file, const void* data, std::size_t size) {
    return WriteAll(static_cast<int>(file), static_cast<const char*>(data), size);
}

bool SeekFile(FileHandle file, unsigned long long offset) {
    return ::lseek(static_cast<int>(file), static_cast<off_t>(offset), SEEK_SET) >= 0;
}

long long FileLength(FileHandle file) {
    struct stat st {};
    return ::fstat(static_cast<int>(file), &st) == 0 ? static_cast<long long>(st.st_size) : -1;
}

bool FlushFile(FileHandle file) {
    return ::fsync(static_cast<int>(file)) == 0;
}

bool CloseFile(FileHandle file) {
    return ::close(static_cast<int>(file)) == 0;
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
