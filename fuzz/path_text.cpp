// path_text.cpp - fuzzes the textual path operations under both styles: decomposition,
// joining, collapsing, wildcards, the component arithmetic, the lexical full path and the
// folder lists of the search paths.
// The input is split at its first NUL into two texts.

#include "path/PathForms.h"
#include "path/SearchPathsDetail.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    std::size_t split = input.find('\0');
    std::string_view a = input.substr(0, split);
    std::string_view b =
        split == std::string_view::npos ? std::string_view() : input.substr(split + 1);
    namespace detail = fileio::detail;

    for (auto style : {detail::PathStyle::Windows, detail::PathStyle::Posix}) {
        std::string_view folder = detail::PathOnly(a);
        std::string_view name = detail::NameOnly(a);
        if (folder.size() + name.size() != a.size())
            __builtin_trap();
        if (detail::NameOnlyWithoutSuffix(a).size() > name.size() ||
            detail::SuffixOnly(a).size() > name.size())
            __builtin_trap();
        std::string joined = detail::CombineNameToPath(a, b, style);
        std::string collapsed(a);
        std::size_t removed = detail::RemoveDoubleSeparators(collapsed);
        if (collapsed.size() + removed != a.size())
            __builtin_trap();
        std::string twice = collapsed;
        if (detail::RemoveDoubleSeparators(twice) != 0)
            __builtin_trap();
        (void)detail::MatchesWildcard(a, b, style);
        (void)detail::IsWithinFolder(a, b, style);
        (void)detail::NameLess(a, b, style);
        if (joined.size() > a.size() + b.size() + 1)
            __builtin_trap();
        FullPaths* folders = detail::CreateFullPaths(a, style);
        for (const FullPaths* node = folders; node != nullptr; node = node->next)
            if (node->path.IsEmpty() || node->path.View().find(';') != std::string_view::npos)
                __builtin_trap();
        FreeFullPaths(folders);
        (void)detail::JoinFoldersToBase(a, b, style);
    }
    int depth = detail::PathDepth(a);
    int shared = detail::MatchPathDepth(a, b);
    if (shared > depth && !b.empty())
        __builtin_trap();
    for (int count = -1; count <= depth + 1; ++count)
        if (detail::ShortenPath(a, count).size() > a.size())
            __builtin_trap();
    (void)fileio::platform::LexicalFullPath(b, a);
    return 0;
}
