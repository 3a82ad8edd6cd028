// FileSystem.cpp - existence tests, copying, renaming, removing and creating folders,
// through the platform's file services.

#include "fileio/path/FileSystem.h"

#include "path/PathText.h"

namespace {

using fileio::platform::Files;

} // namespace

bool FileExists(const String& path) {
    return path.IsNotEmpty() && Files().exists(path.Get());
}

bool DirExists(const String& path) {
    return path.IsNotEmpty() && Files().isFolder(path.Get());
}

bool Remove(const String& path) {
    if (path.IsEmpty())
        return false;
    return Files().isFolder(path.Get()) ? Files().removeFolder(path.Get())
                                        : Files().removeFile(path.Get());
}

bool VarnCopyFile(const String& from, const String& to) {
    return from.IsNotEmpty() && to.IsNotEmpty() && Files().copyFile(from.Get(), to.Get());
}

bool RenameFile(const String& from, const String& to) {
    return from.IsNotEmpty() && to.IsNotEmpty() && Files().renameFile(from.Get(), to.Get());
}

bool CreateFolder(const String& path) {
    if (path.IsEmpty())
        return false;
    // Every level, from the top: a level that exists, or that cannot be made (a drive, a
    // server name), is passed over; the answer is whether the whole path exists at the end.
    std::string text(path.View());
    for (std::size_t i = 1; i <= text.size(); ++i) {
        bool levelEnds = i == text.size() || fileio::detail::IsSeparator(text[i]);
        if (!levelEnds || fileio::detail::IsSeparator(text[i - 1]))
            continue;
        std::string level = text.substr(0, i);
        if (!Files().isFolder(level.c_str()))
            Files().createFolder(level.c_str());
    }
    return Files().isFolder(text.c_str());
}
