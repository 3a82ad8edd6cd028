// DownloadSave.cpp - the crash-safe replacement of a downloaded file.

#include "net/DownloadSave.h"

#include "platform/Platform.h"

#include <random>

namespace fileio::net {

namespace {

/// The temporary file's name: the target's, a random number and ".download", so that two
/// downloads to the same file never share one.
std::string TemporaryBeside(const std::string& path) {
    std::random_device random;
    return path + "." + std::to_string(random()) + ".download";
}

} // namespace

bool SaveDownloadedFile(const std::string& path, std::string_view bytes) {
    using fileio::platform::Files;
    const std::string temporary = TemporaryBeside(path);
    if (Files().writeFileDurably(temporary.c_str(), bytes.data(), bytes.size()) &&
        Files().replaceFile(temporary.c_str(), path.c_str()))
        return true;
    Files().removeFile(temporary.c_str());
    return false;
}

} // namespace fileio::net
