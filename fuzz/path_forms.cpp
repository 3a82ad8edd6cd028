// path_forms.cpp - fuzzes the forms of a path against a base path: universal and native
// forms, relative and absolute conversion, the Macintosh server and network forms, with a
// scripted drive table, shares and current directory so that nothing reaches the system.
// The input is split at NULs into the base file name, a path, and a style byte.

#include "FuzzSupport.h"
#include "path/PathForms.h"

#include "fileio/path/BasePath.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

namespace platform = fileio::platform;
namespace detail = fileio::detail;

std::string g_currentDir = "C:\\cwd";

void Script() {
    auto& files = platform::Files();
    files.exists = [](const char*) { return true; };
    files.isFolder = [](const char*) { return true; };
    files.getCurrentDirectory = [](std::string& out) {
        out = g_currentDir;
        return true;
    };
    files.setCurrentDirectory = [](const char* path) {
        g_currentDir = path;
        return true;
    };
    files.fullPath = [](const char* path, std::string& out) {
        out = platform::LexicalFullPath(g_currentDir, path);
        return !out.empty();
    };
    auto& network = platform::Network();
    network.logicalDrives = [] { return std::vector<std::string>{"C:\\", "M:\\", "/mnt/art"}; };
    network.driveType = [](const char* root) {
        return root[0] == 'C' ? 3 : platform::kRemoteDrive;
    };
    network.connectionName = [](const char* drive, std::string& out) {
        out = drive[0] == '/' ? "//fileserver/ART" : "\\\\macsrv\\ART";
        return true;
    };
    network.sharedFolders = [] {
        return std::vector<platform::SharedFolder>{{"Data", "C:\\Data"}, {"pub", "/srv/pub"}};
    };
    auto& system = platform::System();
    system.computerName = [](std::string& out) {
        out = "COMPUTER";
        return true;
    };
    system.hostName = [](std::string& out) {
        out = "host";
        return true;
    };
    system.debugTrace = [](const char*) {};
    system.beginWaitCursor = []() -> void* { return nullptr; };
    system.endWaitCursor = [](void*) {};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static bool scripted = (Script(), true);
    (void)scripted;
    const auto [base, rest] = fuzz::SplitAtNul({reinterpret_cast<const char*>(data), size});
    const auto [path, styleByte] = fuzz::SplitAtNul(rest);
    const bool posix = !styleByte.empty() && (styleByte[0] & 1) != 0;
    auto style = posix ? detail::PathStyle::Posix : detail::PathStyle::Windows;

    if (!base.empty())
        SetBasePath(String(std::string(base)));
    else
        FreeBasePaths();
    detail::ClearConnectionCache();
    g_currentDir = posix ? "/cwd" : "C:\\cwd";

    std::string universal = detail::NativeToUniversal(path);
    fuzz::Require(universal.size() == path.size());
    std::string relative = detail::GetRelativePath(path, style);
    (void)detail::GetAbsolutePath(relative, true, style);
    (void)detail::GetAbsolutePathQuiet(relative, style);
    (void)detail::GetNonRelativePath(path, style);
    (void)detail::GetServerFileName(universal, style);
    (void)detail::UniversalToNative(universal, style);
    std::string out;
    fuzz::Require(!detail::MappedDriveToUNC(path, style, out) || out.size() < detail::kMaxPath);
    (void)detail::LocalPathToShare(path, style, out);
    (void)detail::GetMatchNameRelativeForFile(path, style);
    (void)detail::GetMatchNameAbsoluteFromFile(path, style);
    return 0;
}
