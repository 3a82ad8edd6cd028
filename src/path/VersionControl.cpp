// VersionControl.cpp - the working-copy test.

#include "fileio/path/VersionControl.h"

#include "fileio/path/FileSystem.h"
#include "path/PathText.h"
#include "platform/Platform.h"

#include <string>

using fileio::detail::IsSeparator;

bool SVNIsVersioned(const String& path) {
    if (path.IsEmpty())
        return false;
    std::string full;
    if (!fileio::platform::Files().fullPath(path.Get(), full))
        full = path.Get();
    // From the file's folder up to the root: each folder, with its trailing separator.
    std::size_t end = full.size();
    while (end != 0 && !IsSeparator(full[end - 1]))
        --end;
    while (end != 0) {
        const String folder(full.substr(0, end));
        if (DirExists(String::CombineNameToPath(folder, String(".svn"))))
            return true;
        while (end != 0 && IsSeparator(full[end - 1]))
            --end;
        while (end != 0 && !IsSeparator(full[end - 1]))
            --end;
    }
    return false;
}
