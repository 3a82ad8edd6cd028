// References.h - the files a project refers to, where they resolve to, and how the search
// finds the ones that are not there.
//
// A reference's stored text (see Fields.h for its two forms) resolves against the project's
// base path (SetBasePath) to a native absolute path. A file that is not there is looked for
// in this order, the first step that finds it wins:
//   1. the same path with other letter case (a project made where case does not matter);
//   2. the library's missing-file search (FileStream::FindAlias): the folder aliases learnt
//      from --map, applied to the path as resolved and, for an absolute path, as written;
//   3. the search paths: a file of that name directly in one of the --search folders;
//   4. a name search in the --search folders and every folder below them.
// Names are compared without regard to case in every step, on every platform. A step that
// finds more than one file reports them all as ambiguous and picks none.
#pragma once

#include "ProjectReader.h"

#include <map>
#include <string>
#include <vector>

namespace fileio::tool {

enum class Found : unsigned char {
    Exists,
    Case,
    Alias,
    SearchPath,
    NameSearch,
    Ambiguous,
    Missing
};

/// "exists", "case", "alias", "search path", "name search", "ambiguous", "missing".
[[nodiscard]] const char* FoundName(Found how);
/// Whether the file was found somewhere (not missing or ambiguous).
[[nodiscard]] inline bool IsFound(Found how) {
    return how != Found::Ambiguous && how != Found::Missing;
}

/// One file reference of a project.
struct Reference {
    std::string place;
    std::string field;
    /// The value as stored, the quotes of a match name included.
    std::string stored;
    /// The label's offset and the bytes of the value in the file.
    unsigned long long offset, valueBegin, valueEnd;
};

/// Collects the references of a walked file (empty values are none).
class ReferenceCollector : public ProjectVisitor {
public:
    void Field(const FieldEvent& field, const SectionPath& path) override;
    [[nodiscard]] const std::vector<Reference>& References() const { return m_references; }

private:
    std::vector<Reference> m_references;
};

struct Resolution {
    Found how = Found::Missing;
    /// The native absolute path the stored text resolves to.
    std::string resolved;
    /// Where the file is (for a found one).
    std::string found;
    /// Every file a step found, when it found several.
    std::vector<std::string> candidates;
};

class ReferenceSearch {
public:
    /// Learns "FROM=TO" as a folder alias (FileStream::AddPathAlias, which also learns the
    /// shorter pair their common ending implies). FROM is a folder as the project stored it,
    /// in either separator; TO an existing folder here (made absolute against the current
    /// folder). False, with the reason in `why`, for a malformed mapping or a TO that is not
    /// a folder.
    static bool AddMapping(std::string_view mapping, std::string& why);
    /// Makes the search-path list of the search from existing folders (absolute).
    void SetSearchFolders(const std::vector<std::string>& folders);

    /// Where the reference is, or how the search finds it. REQUIRES: the base path is the
    /// project's.
    Resolution Resolve(const Reference& reference);

    /// The text that stores `file` for the reference in its form: the universal path
    /// relative to the base path, or that path as a match name.
    [[nodiscard]] static std::string StoredText(const Reference& reference,
                                                const std::string& file);

private:
    /// The files of a folder (with every folder below it when `below`), listed once.
    const std::vector<std::string>& Listing(const std::string& folder, bool below);
    /// The files named `name` (ignoring case) in the search folders.
    std::vector<std::string> FindByName(const std::string& name, bool below);

    std::vector<std::string> m_searchFolders;
    std::map<std::string, std::vector<std::string>> m_listings[2];
};

/// Every existing file whose path equals `path` without regard to case: the path itself
/// when it exists, else the files whose every component matches ignoring case.
[[nodiscard]] std::vector<std::string> FindIgnoringCase(const std::string& path);

/// The path made absolute against the current folder, in native form.
[[nodiscard]] std::string AbsolutePath(const std::string& path);

struct Rewrite {
    const Reference* reference;
    std::string stored;
};

/// The bytes of the file `in` holds with each rewritten reference's value replaced by its new
/// stored text, written as the file's form writes a text. False, with the reason, when a
/// text is too long for the binary form's count.
bool RewriteReferences(const MemoryStream& in, const std::vector<Rewrite>& rewrites,
                       std::string& bytes, std::string& why);

} // namespace fileio::tool
