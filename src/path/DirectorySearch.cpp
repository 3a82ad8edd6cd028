// DirectorySearch.cpp - the files of a folder, and of the folders below it, whose names
// match a wildcard.

#include "fileio/path/DirectorySearch.h"

#include "path/DirectorySearchDetail.h"

#include <algorithm>

namespace fileio::detail {

std::vector<std::string> FindFilesInFolder(std::string_view folder, std::string_view wildcard,
                                           bool recursive, PathStyle style) {
    std::vector<std::string> found;
    // Folders still to read, the next one at the back; an explicit stack, so that a deep
    // tree cannot exhaust the call stack.
    std::vector<std::string> pending{std::string(folder)};
    while (!pending.empty()) {
        std::string current = std::move(pending.back());
        pending.pop_back();
        std::vector<platform::FolderEntry> entries;
        if (!platform::Files().listFolder(current.c_str(), entries))
            continue;
        std::sort(entries.begin(), entries.end(), [style](const auto& a, const auto& b) {
            return NameLess(a.name, b.name, style);
        });
        std::size_t firstSubfolder = pending.size();
        for (const platform::FolderEntry& entry : entries) {
            if (!entry.isFolder) {
                if (MatchesWildcard(entry.name, wildcard, style))
                    found.push_back(CombineNameToPath(current, entry.name, style));
            } else if (recursive && !entry.isLink) {
                pending.push_back(CombineNameToPath(current, entry.name, style));
            }
        }
        std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(firstSubfolder), pending.end());
    }
    return found;
}

} // namespace fileio::detail

std::vector<String> FindFilesInFolder(const String& folder, const String& wildcard,
                                      bool recursive) {
    std::vector<String> out;
    if (folder.IsEmpty())
        return out;
    for (std::string& path : fileio::detail::FindFilesInFolder(
             folder.View(), wildcard.View(), recursive, fileio::platform::kNativePathStyle))
        out.emplace_back(path);
    return out;
}
