// DownloadSave.h - how a finished download replaces its file.
#pragma once

#include <string>
#include <string_view>

namespace fileio::net {

/// Replaces the file at `path` with `bytes`: a temporary file beside it is written and
/// flushed to the disk, then renamed over it. On failure the old file is untouched and the
/// temporary file is removed; false then.
bool SaveDownloadedFile(const std::string& path, std::string_view bytes);

} // namespace fileio::net
