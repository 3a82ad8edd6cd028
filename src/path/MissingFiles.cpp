// MissingFiles.cpp - the search for missing files: aliases, the failed list, the "cancel
// all" choice and the locate dialog.

#include "path/MissingFiles.h"

#include "fileio/handlers/DialogProvider.h"
#include "fileio/handlers/FileHandler.h"
#include "fileio/handlers/ResourceStrings.h"
#include "fileio/path/FileSystem.h"
#include "fileio/path/UniversalPath.h"
#include "handlers/ResourceIds.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace fileio::detail {

namespace {

struct Alias {
    String from;
    String to;
};

/// The process-wide state of the search. Aliases are kept oldest first and searched from
/// the back, so the newest wins.
struct SearchState {
    std::vector<Alias> fileAliases;
    std::vector<Alias> pathAliases;
    std::vector<String> failed;
    bool cancelAll = false;
};

SearchState& State() {
    static SearchState state;
    return state;
}

/// The title's room for the name: the title may be this long, the resource text counted.
constexpr int kTitleRoom = 112;
/// The filter of a name without a suffix, and the end of every filter.
constexpr const char* kAllFilesFilter = "All Files (*.*)|*.*|****||";

bool IsSeparator(char c, platform::PathStyle style) {
    return c == '\\' || (c == '/' && style == platform::PathStyle::Posix);
}

/// "\\server" or "//server": a network name, whose folder is used only when it exists.
bool IsNetworkName(std::string_view path) {
    return path.size() >= 2 && (path[0] == '\\' || path[0] == '/') && path[1] == path[0];
}

/// The dialog's filter for a file of this name: its type first, then all files.
String FilterFor(const String& name) {
    const String suffix = name.GetSuffixOnly();
    if (suffix.IsEmpty())
        return String(kAllFilesFilter);
    String upper = suffix;
    upper.MakeUpper();
    return upper + String(" Files (*.") + suffix + String(")|*.") + suffix + String("|****|") +
           String(kAllFilesFilter);
}

/// The folder the locate dialog starts in: the name's folder, or the nearest existing one
/// above it; empty when none is found. A network folder only when it exists.
String StartFolder(const String& name) {
    String folder = name.GetPathOnly();
    if (folder.IsEmpty())
        return folder;
    if (IsNetworkName(folder.View()))
        return DirExists(folder) ? folder : String();
    while (!DirExists(folder)) {
        String above = folder;
        const std::string_view text = above.View();
        if (!text.empty() && (text.back() == '\\' || text.back() == '/'))
            above = String(text.data(), static_cast<int>(text.size() - 1));
        above = above.GetPathOnly();
        if (above.IsEmpty())
            return above;
        if (above == folder) // a root that does not exist: used all the same
            break;
        folder = above;
    }
    return folder;
}

} // namespace

// ---- aliases ------------------------------------------------------------------------------------

void AddFileAlias(const String& from, const String& to) {
    State().fileAliases.push_back({from, to});
}

int DerivedAliasLevels(std::string_view from, std::string_view to, platform::PathStyle style) {
    std::size_t shared = 0;
    while (shared < from.size() && shared < to.size() &&
           from[from.size() - 1 - shared] == to[to.size() - 1 - shared])
        ++shared;
    // The positions looked at end at the NUL after the text, so the shared ending's first
    // character is left out.
    int levels = 0;
    for (std::size_t i = to.size() + 1 - shared; i < to.size(); ++i)
        levels += IsSeparator(to[i], style) ? 1 : 0;
    return levels;
}

String RemoveFolderLevels(const String& path, int levels) {
    std::string text(path.View());
    for (int level = 0; level < levels && !text.empty(); ++level) {
        if (text.back() == '\\' || text.back() == '/')
            text.pop_back();
        const std::size_t separator = text.find_last_of("\\/");
        text.resize(separator == std::string::npos ? 0 : separator + 1);
    }
    return String(text);
}

void AddPathAlias(const String& from, const String& to) {
    State().pathAliases.push_back({from, to});
    const int levels = DerivedAliasLevels(from.View(), to.View());
    if (levels < 1)
        return;
    String shorterFrom = RemoveFolderLevels(from, levels);
    String shorterTo = RemoveFolderLevels(to, levels);
    if (shorterFrom.IsNotEmpty() && shorterTo.IsNotEmpty())
        State().pathAliases.push_back({shorterFrom, shorterTo});
}

bool FindFileAlias(String& name) {
    const auto& aliases = State().fileAliases;
    for (auto alias = aliases.rbegin(); alias != aliases.rend(); ++alias) {
        if (alias->from == name) {
            name = alias->to;
            return true;
        }
    }
    return false;
}

bool FindFileAliasNameOnly(String& name) {
    const auto& aliases = State().fileAliases;
    for (auto alias = aliases.rbegin(); alias != aliases.rend(); ++alias) {
        if (alias->from.GetNameOnlyWithoutSuffix() == name) {
            name = alias->to;
            return true;
        }
    }
    return false;
}

bool FindPathAlias(String& folder) {
    const String universal = NativeToUniversal(folder);
    const auto& aliases = State().pathAliases;
    for (auto alias = aliases.rbegin(); alias != aliases.rend(); ++alias) {
        if (folder == alias->from) {
            folder = alias->to;
            return true;
        }
        const String from = NativeToUniversal(alias->from);
        const int shared = MatchPathDepth(universal, from);
        if (shared >= 1 && shared == GetPathDepth(from)) {
            folder = String::CombineNameToPath(alias->to,
                                               UniversalToNative(ShortenPath(universal, shared)));
            return true;
        }
    }
    return false;
}

bool HasFileAliases() {
    return !State().fileAliases.empty();
}

void FreeFileAliases() {
    State().fileAliases = {};
}

void FreePathAliases() {
    State().pathAliases = {};
}

// ---- the failed list and "cancel all" -----------------------------------------------------------

bool IsInFailedList(const String& name) {
    const auto& failed = State().failed;
    return std::find(failed.begin(), failed.end(), name) != failed.end();
}

void ClearFailedList() {
    State().failed = {};
}

void ResetCancelAll() {
    State().cancelAll = false;
}

// ---- the searches -------------------------------------------------------------------------------

bool FindAlias(String& name) {
    if (IsInFailedList(name))
        return false;
    if (FileExists(name))
        return true;
    if (FindFileAlias(name))
        return true; // a file alias is trusted
    String folder = name.GetPathOnly();
    if (!FindPathAlias(folder))
        return false;
    name = String::CombineNameToPath(folder, name.GetNameOnly());
    return FileExists(name);
}

bool FindAliasAsk(String& name) {
    if (FindAlias(name))
        return true;
    if (IsInFailedList(name))
        return false;
    const String missing = name;
    auto refuse = [&] {
        State().failed.push_back(missing);
        return false;
    };
    if (FileHandler* handler = GetFileHandler()) {
        handler->MissingFile(missing);
        if (!handler->IsPrompt())
            return refuse();
    }
    String title = GetResourceString(resource::kLocateFileTitle);
    title.Replace(String("%1"), missing.GetAbbreviated(kTitleRoom - title.GetLength()));
    const String filter = FilterFor(missing);
    const String folder = StartFolder(missing);
    const String proposed = folder.IsEmpty()
                                ? missing.GetNameOnly()
                                : String::CombineNameToPath(folder, missing.GetNameOnly());
    if (State().cancelAll)
        return refuse();
    bool cancelAll = State().cancelAll;
    String chosen;
    const bool picked =
        GetDialogProvider()->LocateFile(title, filter, folder, proposed, cancelAll, chosen);
    State().cancelAll = cancelAll;
    if (!picked)
        return refuse();
    name = chosen;
    if (!(chosen.GetNameOnly() == missing.GetNameOnly()))
        AddFileAlias(missing, chosen);
    const String missingFolder = missing.GetPathOnly();
    if (missingFolder.IsNotEmpty() && !(missingFolder == chosen.GetPathOnly()))
        AddPathAlias(missingFolder, chosen.GetPathOnly());
    return true;
}

bool LocateFileToLoad(String& name, bool dontAsk) {
    if (FileExists(name))
        return true;
    if (dontAsk)
        return false;
    std::set<std::string> given;
    while (!FileExists(name)) {
        if (!FindAliasAsk(name))
            return false;
        if (!given.insert(std::string(name.View())).second)
            return false;
    }
    return true;
}

} // namespace fileio::detail
