// SearchPathsDetail.h - the folder-list texts of the search paths, with the path style as a
// parameter so that the Windows rules are tested on POSIX and the other way round.
#pragma once

#include "fileio/path/SearchPaths.h"
#include "path/PathText.h"

#include <string>
#include <string_view>

namespace fileio::detail {

/// CreateFullPaths by the separator rules of `style`.
FullPaths* CreateFullPaths(std::string_view text, PathStyle style);

/// The items of a ";"-separated text of folders, each joined to `baseFolder`, joined again
/// by ";" (the folders of AddSearchPathString).
std::string JoinFoldersToBase(std::string_view folders, std::string_view baseFolder,
                              PathStyle style);

} // namespace fileio::detail
