// DirectorySearchDetail.h - directory search with the path style as a parameter, so that
// the Windows name rules can be tested with a scripted folder listing on any platform.
#pragma once

#include "path/PathText.h"

#include <string>
#include <string_view>
#include <vector>

namespace fileio::detail {

/// FindFilesInFolder by the name rules of `style`.
std::vector<std::string> FindFilesInFolder(std::string_view folder, std::string_view wildcard,
                                           bool recursive, PathStyle style);

} // namespace fileio::detail
