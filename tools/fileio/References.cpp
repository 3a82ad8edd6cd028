// References.cpp - collecting, resolving and rewriting a project's file references.

#include "References.h"

#include "Text.h"

#include <algorithm>
#include <filesystem>

namespace fileio::tool {

namespace {

namespace fs = std::filesystem;

/// The name and settings key of the search-path list the tool makes from --search.
constexpr const char* kSearchListName = "fileio command line";
constexpr const char* kSearchListKey = "";
/// A case-insensitive walk keeps at most this many paths at each level.
constexpr std::size_t kMaxCaseVariants = 64;
/// The largest text the binary form's 16-bit count can carry.
constexpr std::size_t kMaxBinaryText = 0xFFFF;

constexpr const char* kFoundNames[] = {"exists",      "case",      "alias",  "search path",
                                       "name search", "ambiguous", "missing"};

bool IsQuoted(std::string_view text) {
    return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

std::string_view Unquoted(std::string_view text) {
    return IsQuoted(text) ? text.substr(1, text.size() - 2) : text;
}

bool IsFile(const std::string& path) {
    const String name(path);
    return FileExists(name) && !DirExists(name);
}

/// A universal path that does not depend on the base path: rooted, or on a drive.
bool IsAbsoluteText(std::string_view universal) {
    return (!universal.empty() && universal[0] == '/') ||
           (universal.size() > 1 && universal[1] == ':');
}

/// Takes what a step found: true when it found anything (one file, or several: ambiguous).
bool Settle(Resolution& resolution, std::vector<std::string> files, Found how) {
    if (files.empty())
        return false;
    if (files.size() == 1) {
        resolution.how = how;
        resolution.found = std::move(files.front());
    } else {
        resolution.how = Found::Ambiguous;
        resolution.candidates = std::move(files);
    }
    return true;
}

void SortAndMerge(std::vector<std::string>& paths) {
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
}

/// A text value in the stream's form, as its writer writes it.
std::string EncodedText(bool binary, const std::string& text) {
    MemoryStream out;
    out.Open(binary ? FM_BINARY : FM_STORING);
    out << String(text);
    return std::string(reinterpret_cast<const char*>(out.GetData()), out.GetLength());
}

} // namespace

const char* FoundName(Found how) {
    return kFoundNames[static_cast<int>(how)];
}

void ReferenceCollector::Field(const FieldEvent& field, const SectionPath& path) {
    if (field.rule == nullptr || !field.rule->reference || field.value == nullptr)
        return;
    const std::string_view text = std::get<::String>(*field.value).View();
    if (text.empty())
        return;
    m_references.push_back(Reference{path.Place(field.label.text), field.label.text,
                                     std::string(text), field.offset, field.valueBegin,
                                     field.valueEnd});
}

bool ReferenceSearch::AddMapping(std::string_view mapping, std::string& why) {
    const std::size_t equals = mapping.find('=');
    if (equals == std::string_view::npos || equals == 0 || equals + 1 == mapping.size()) {
        why = Concat({"'", mapping, "' is not FROM=TO"});
        return false;
    }
    const std::string to = AbsolutePath(std::string(mapping.substr(equals + 1)));
    if (!DirExists(String(to))) {
        why = Concat({"'", to, "' is not a folder"});
        return false;
    }
    // Both folders in the native form with one trailing separator, so that the shorter
    // alias their common ending implies is found whichever separator FROM was typed with.
    const String from =
        UniversalToNative(NativeToUniversal(String(std::string(mapping.substr(0, equals)))));
    FileStream::AddPathAlias(String::CombineNameToPath(from, String()),
                             String::CombineNameToPath(String(to), String()));
    return true;
}

void ReferenceSearch::SetSearchFolders(const std::vector<std::string>& folders) {
    m_searchFolders.clear();
    if (folders.empty())
        return;
    std::string joined;
    for (const std::string& folder : folders)
        joined += (joined.empty() ? "" : ";") + folder;
    AddSearchPathString(kSearchListName, kSearchListKey, String(joined), String());
    for (const FullPaths* entry = FindSearchPath(kSearchListName)->paths; entry != nullptr;
         entry = entry->next)
        m_searchFolders.emplace_back(entry->path.View());
}

const std::vector<std::string>& ReferenceSearch::Listing(const std::string& folder, bool below) {
    auto& listings = m_listings[below ? 1 : 0];
    auto listing = listings.find(folder);
    if (listing == listings.end()) {
        std::vector<std::string> files;
        for (const String& file : FindFilesInFolder(String(folder), String("*"), below))
            files.emplace_back(file.View());
        listing = listings.emplace(folder, std::move(files)).first;
    }
    return listing->second;
}

std::vector<std::string> ReferenceSearch::FindByName(const std::string& name, bool below) {
    std::vector<std::string> found;
    for (const std::string& folder : m_searchFolders) {
        for (const std::string& file : Listing(folder, below)) {
            if (EqualsIgnoringCase(String(file).GetNameOnly().View(), name))
                found.push_back(file);
        }
    }
    SortAndMerge(found);
    return found;
}

Resolution ReferenceSearch::Resolve(const Reference& reference) {
    Resolution resolution;
    const String universal = NativeToUniversal(String(std::string(Unquoted(reference.stored))));
    resolution.resolved = std::string(universal.GetAbsolutePath(true).View());
    if (IsFile(resolution.resolved)) {
        resolution.how = Found::Exists;
        resolution.found = resolution.resolved;
        return resolution;
    }
    if (Settle(resolution, FindIgnoringCase(resolution.resolved), Found::Case))
        return resolution;

    // The aliases apply to the path as resolved, and to an absolute path as it was written
    // (a rooted path on Windows resolves onto the current drive, where its alias is not).
    std::vector<std::string> written{resolution.resolved};
    const std::string native(UniversalToNative(universal).View());
    if (IsAbsoluteText(universal.View()) && native != resolution.resolved)
        written.push_back(native);
    for (const std::string& path : written) {
        String name(path);
        if (FileStream::FindAlias(name) && IsFile(std::string(name.View()))) {
            resolution.how = Found::Alias;
            resolution.found = std::string(name.View());
            return resolution;
        }
        if (name.View() != path &&
            Settle(resolution, FindIgnoringCase(std::string(name.View())), Found::Alias))
            return resolution;
    }

    const std::string name(universal.GetNameOnly().View());
    if (name.empty())
        return resolution;
    if (!Settle(resolution, FindByName(name, false), Found::SearchPath))
        Settle(resolution, FindByName(name, true), Found::NameSearch);
    return resolution;
}

std::string ReferenceSearch::StoredText(const Reference& reference, const std::string& file) {
    const String native(file);
    if (IsQuoted(reference.stored))
        return std::string(native.Quote().GetMatchNameRelativeForFile().View());
    return std::string(native.GetRelativePath().View());
}

std::vector<std::string> FindIgnoringCase(const std::string& path) {
    if (IsFile(path))
        return {path};
    const fs::path target(path);
    if (path.empty() || !target.is_absolute())
        return {};
    std::error_code error;
    std::vector<fs::path> reached{target.root_path()};
    for (const fs::path& part : target.relative_path()) {
        if (part.empty())
            continue;
        std::vector<fs::path> next;
        for (const fs::path& folder : reached) {
            if (fs::exists(folder / part, error)) {
                next.push_back(folder / part);
                continue;
            }
            for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
                 entry.increment(error)) {
                if (EqualsIgnoringCase(entry->path().filename().string(), part.string()))
                    next.push_back(entry->path());
            }
            error.clear();
        }
        if (next.size() > kMaxCaseVariants)
            next.resize(kMaxCaseVariants);
        reached = std::move(next);
        if (reached.empty())
            return {};
    }
    std::vector<std::string> files;
    for (const fs::path& found : reached) {
        if (IsFile(found.string()))
            files.push_back(found.string());
    }
    SortAndMerge(files);
    return files;
}

std::string AbsolutePath(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(fs::path(path), error);
    return error ? path : absolute.lexically_normal().string();
}

bool RewriteReferences(const MemoryStream& in, const std::vector<Rewrite>& rewrites,
                       std::string& bytes, std::string& why) {
    std::vector<const Rewrite*> ordered;
    for (const Rewrite& rewrite : rewrites)
        ordered.push_back(&rewrite);
    std::sort(ordered.begin(), ordered.end(), [](const Rewrite* a, const Rewrite* b) {
        return a->reference->valueBegin < b->reference->valueBegin;
    });
    const char* data = reinterpret_cast<const char*>(in.GetData());
    bytes.clear();
    unsigned long long at = 0;
    for (const Rewrite* rewrite : ordered) {
        if (in.IsBinary() && rewrite->stored.size() > kMaxBinaryText) {
            why = rewrite->reference->place + ": the path is too long for the binary form";
            return false;
        }
        bytes.append(data + at, rewrite->reference->valueBegin - at);
        bytes += EncodedText(in.IsBinary(), rewrite->stored);
        at = rewrite->reference->valueEnd;
    }
    bytes.append(data + at, in.GetLength() - at);
    return true;
}

} // namespace fileio::tool
