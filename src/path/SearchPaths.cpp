// SearchPaths.cpp - the process-wide chain of named folder lists, built from the settings or
// from texts, and stored back to the settings.

#include "fileio/path/SearchPaths.h"

#include "fileio/path/FileSystem.h"
#include "fileio/settings/LocalRegistry.h"
#include "fileio/settings/SettingsLocations.h"
#include "path/SearchPathsDetail.h"

namespace fileio::detail {

namespace {

/// Calls `visit` with each non-empty item of a ";"-separated text, in order.
template <class Visit> void ForEachItem(std::string_view text, Visit visit) {
    while (!text.empty()) {
        std::size_t end = text.find(';');
        std::string_view item = text.substr(0, end);
        if (!item.empty())
            visit(item);
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
}

} // namespace

FullPaths* CreateFullPaths(std::string_view text, PathStyle style) {
    std::string native(text);
    ToNativeSeparators(native, style);
    const char separator = NativeSeparator(style);
    FullPaths* first = nullptr;
    FullPaths** last = &first;
    ForEachItem(native, [&](std::string_view item) {
        std::string folder(item);
        if (folder.find(separator) != std::string::npos && folder.back() != separator)
            folder += separator;
        *last = new FullPaths(String(folder));
        last = &(*last)->next;
    });
    return first;
}

std::string JoinFoldersToBase(std::string_view folders, std::string_view baseFolder,
                              PathStyle style) {
    std::string joined;
    ForEachItem(folders, [&](std::string_view item) {
        if (!joined.empty())
            joined += ';';
        joined += CombineNameToPath(baseFolder, item, style);
    });
    return joined;
}

} // namespace fileio::detail

namespace {

using fileio::platform::kNativePathStyle;

/// The section AddSearchPathNoDupe stores the lists in, whatever the folders location says.
constexpr const char* kStoredFoldersSection = "Folders v19.5 64bit";

SearchPaths*& ChainHead() {
    static SearchPaths* head = nullptr;
    return head;
}

SearchPaths* PushList(const String& name, const String& key) {
    auto* list = new SearchPaths;
    list->name = name;
    list->key = key;
    list->next = ChainHead();
    ChainHead() = list;
    return list;
}

/// Empties the local registry profile while it lives, so that settings go to the key
/// without a profile, and puts the profile back afterwards.
class UnprofiledSettings {
public:
    UnprofiledSettings() : m_saved(GetLocalRegistryProfile()) { SetLocalRegistryProfile(String()); }
    ~UnprofiledSettings() { SetLocalRegistryProfile(m_saved); }
    UnprofiledSettings(const UnprofiledSettings&) = delete;
    UnprofiledSettings& operator=(const UnprofiledSettings&) = delete;

private:
    String m_saved;
};

} // namespace

SearchPaths::~SearchPaths() {
    FreeFullPaths(paths);
}

FullPaths* CreateFullPaths(String text) {
    return fileio::detail::CreateFullPaths(text.View(), kNativePathStyle);
}

void FreeFullPaths(FullPaths*& list) {
    while (list != nullptr) {
        FullPaths* next = list->next;
        delete list;
        list = next;
    }
}

SearchPaths* AddSearchPath(const String& name, const String& key, const String& defaultFolder) {
    std::string folder(defaultFolder.View());
    folder += fileio::detail::NativeSeparator(kNativePathStyle);
    String fallback = String::AddNameToExeDirectory(String(folder));
    String stored;
    {
        UnprofiledSettings unprofiled;
        stored = GetLocalRegistryString(GetFoldersLocation(), key, fallback);
    }
    SearchPaths* list = PushList(name, key);
    list->paths = CreateFullPaths(stored);
    return list;
}

SearchPaths* AddSearchPathString(const String& name, const String& key, const String& folders,
                                 const String& baseFolder) {
    SearchPaths* list = PushList(name, key);
    list->paths = fileio::detail::CreateFullPaths(
        fileio::detail::JoinFoldersToBase(folders.View(), baseFolder.View(), kNativePathStyle),
        kNativePathStyle);
    return list;
}

void AddSearchPathNoDupe(const String& folder, SearchPaths* list) {
    if (list == nullptr || !FileExists(folder))
        return;
    for (FullPaths* node = list->paths; node != nullptr; node = node->next)
        if (node->path == folder)
            return;
    auto* added = new FullPaths(folder);
    added->next = list->paths;
    list->paths = added;

    std::string joined;
    for (FullPaths* node = list->paths; node != nullptr; node = node->next) {
        if (node != list->paths)
            joined += ';';
        joined.append(node->path.View());
    }
    UnprofiledSettings unprofiled;
    SetLocalRegistryString(String(kStoredFoldersSection), list->key, String(joined));
}

SearchPaths* FindSearchPath(const String& name) {
    for (SearchPaths* list = ChainHead(); list != nullptr; list = list->next)
        if (list->name == name)
            return list;
    return nullptr;
}

SearchPaths* GetSearchPaths() {
    return ChainHead();
}

void FreeAllSearchPaths() {
    SearchPaths*& head = ChainHead();
    while (head != nullptr) {
        SearchPaths* next = head->next;
        delete head;
        head = next;
    }
}
