// path_text.cpp - fuzzes the textual path operations under both styles: decomposition,
// joining, collapsing, wildcards, the component arithmetic, the lexical full path and the
// folder lists of the search paths.
// The input is split at its first NUL into two texts.

#include "FuzzSupport.h"
#include "path/PathForms.h"
#include "path/SearchPathsDetail.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [a, b] = fuzz::SplitAtNul({reinterpret_cast<const char*>(data), size});
    namespace detail = fileio::detail;
    using fuzz::Require;

    for (auto style : {detail::PathStyle::Windows, detail::PathStyle::Posix}) {
        std::string_view folder = detail::PathOnly(a);
        std::string_view name = detail::NameOnly(a);
        Require(folder.size() + name.size() == a.size());
        Require(detail::NameOnlyWithoutSuffix(a).size() <= name.size() &&
                detail::SuffixOnly(a).size() <= name.size());
        std::string joined = detail::CombineNameToPath(a, b, style);
        std::string collapsed(a);
        std::size_t removed = detail::RemoveDoubleSeparators(collapsed);
        Require(collapsed.size() + removed == a.size());
        Require(detail::RemoveDoubleSeparators(collapsed) == 0);
        (void)detail::MatchesWildcard(a, b, style);
        (void)detail::IsWithinFolder(a, b, style);
        (void)detail::NameLess(a, b, style);
        Require(joined.size() <= a.size() + b.size() + 1);
        FullPaths* folders = detail::CreateFullPaths(a, style);
        for (const FullPaths* node = folders; node != nullptr; node = node->next)
            Require(!node->path.IsEmpty() && node->path.View().find(';') == std::string_view::npos);
        FreeFullPaths(folders);
        (void)detail::JoinFoldersToBase(a, b, style);
    }
    int depth = detail::PathDepth(a);
    int shared = detail::MatchPathDepth(a, b);
    Require(shared <= depth || b.empty());
    for (int count = -1; count <= depth + 1; ++count)
        Require(detail::ShortenPath(a, count).size() <= a.size());
    (void)fileio::platform::LexicalFullPath(b, a);
    return 0;
}
