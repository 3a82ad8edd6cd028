// NetworkPaths.cpp - the network forms of paths: Macintosh server volumes to network
// shares, and local paths to their names on the network (this machine's shares, mapped
// drives). The drive table and the shares come from the platform layer.

#include "path/PathForms.h"

#include <map>

namespace fileio::detail {

namespace {

using platform::Network;
using platform::System;

/// Cuts a formatted result as the fixed path buffers of the system did.
void CutToPathBuffer(std::string& text) {
    if (text.size() > kMaxPath - 1)
        text.resize(kMaxPath - 1);
}

/// The name by which a drive is asked for its connection: "X:" (letter upper-cased) for a
/// Windows root "x:\\", the mount point itself on POSIX.
std::string DriveName(std::string_view root, PathStyle style) {
    if (style == PathStyle::Posix)
        return std::string(root);
    if (root.empty())
        return {};
    char letter = root[0];
    if (letter >= 'a' && letter <= 'z')
        letter = static_cast<char>(letter - 'a' + 'A');
    return std::string{letter, ':'};
}

/// The share name of a connection "\\\\server\\share...": the text after the first separator
/// that follows the leading two. False when the connection has no such separator.
bool ShareNameOf(std::string_view connection, std::string_view& share) {
    if (connection.size() < 2 || !IsSeparator(connection[0]) || !IsSeparator(connection[1]))
        return false;
    for (std::size_t i = 2; i < connection.size(); ++i)
        if (IsSeparator(connection[i])) {
            share = connection.substr(i + 1);
            return true;
        }
    return false;
}

/// The connection names already asked for, by drive name. Process-wide and unlocked, like
/// all path state: it belongs to the host's main thread.
std::map<std::string, std::string>& ConnectionCache() {
    static std::map<std::string, std::string> cache;
    return cache;
}

/// The mapped drive a path lies on: its name and where the rest of the path begins. On
/// Windows only "X:\\..." qualifies; on POSIX the deepest network mount point that
/// contains the path.
bool DriveOfPath(std::string_view path, PathStyle style, std::string& drive, std::size_t& rest) {
    if (style == PathStyle::Windows) {
        char letter = path.size() >= 3 ? path[0] : '\0';
        bool isLetter = (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
        if (!isLetter || path[1] != ':' || path[2] != '\\')
            return false;
        drive = DriveName(path, style);
        rest = 2;
        return true;
    }
    bool found = false;
    for (const std::string& root : Network().logicalDrives()) {
        if ((found && root.size() <= drive.size()) || !IsWithinFolder(path, root, style) ||
            Network().driveType(root.c_str()) != platform::kRemoteDrive)
            continue;
        drive = root;
        found = true;
    }
    if (!found)
        return false;
    rest = drive.size();
    while (rest > 0 && IsSeparator(drive[rest - 1]))
        --rest; // a mount point written with a trailing separator
    return true;
}

} // namespace

std::string GetServerFileName(std::string_view path, PathStyle style) {
    std::size_t volumes = path.find("Volumes/");
    if (path.find("MACSERVER/") == std::string_view::npos || volumes == std::string_view::npos)
        return std::string(path);
    std::string_view tail = path.substr(volumes);
    std::size_t first = tail.find('/');
    std::size_t second = tail.find('/', first + 1);
    if (second == std::string_view::npos)
        return std::string(path);
    std::string computer;
    if (!System().computerName(computer))
        return std::string(path);
    std::string volume(tail.substr(first + 1, second - first - 1));
    for (char& c : volume)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    std::string root;
    if (!FindDriveForShare(volume, style, root))
        return std::string(path);
    std::string out = root;
    out += '/';
    out.append(tail.substr(second + 1));
    CutToPathBuffer(out);
    return out;
}

bool FindDriveForShare(std::string_view share, PathStyle style, std::string& root) {
    std::vector<std::string> drives = Network().logicalDrives();
    for (std::size_t i = drives.size(); i > 0; --i) {
        const std::string& drive = drives[i - 1];
        if (Network().driveType(drive.c_str()) != platform::kRemoteDrive)
            continue;
        std::string connection;
        if (!Network().connectionName(DriveName(drive, style).c_str(), connection))
            continue;
        std::string_view name;
        if (ShareNameOf(connection, name) && name == share) {
            root = std::move(connection);
            return true;
        }
    }
    return false;
}

bool MappedDriveToUNC(std::string_view path, PathStyle style, std::string& out) {
    platform::ScopedWaitCursor waitCursor;
    std::string drive;
    std::size_t rest = 0;
    if (!DriveOfPath(path, style, drive, rest))
        return false;
    auto& cache = ConnectionCache();
    auto known = cache.find(drive);
    if (known == cache.end()) {
        std::string connection;
        if (!Network().connectionName(drive.c_str(), connection))
            return false;
        known = cache.emplace(drive, std::move(connection)).first;
    }
    out = known->second;
    out.append(path.substr(rest));
    CutToPathBuffer(out);
    return true;
}

bool LocalPathToShare(std::string_view path, PathStyle style, std::string& out) {
    const platform::SharedFolder* best = nullptr;
    std::vector<platform::SharedFolder> shares = Network().sharedFolders();
    for (const platform::SharedFolder& share : shares)
        if (IsWithinFolder(path, share.path, style) &&
            (best == nullptr || share.path.size() > best->path.size()))
            best = &share;
    std::string host;
    if (best == nullptr || !System().hostName(host))
        return false;
    std::size_t rest = best->path.size();
    while (rest < path.size() && IsSeparator(path[rest]))
        ++rest;
    char separator = NativeSeparator(style);
    out.assign(2, separator);
    out += host;
    out += separator;
    out += best->name;
    if (rest < path.size()) {
        out += separator;
        out.append(path.substr(rest));
    }
    return true;
}

void ClearConnectionCache() {
    ConnectionCache().clear();
}

std::string GetUNCFileName(std::string_view path, PathStyle style) {
    if (path.empty() || (path.size() >= 2 && path[1] == ':'))
        return std::string(path); // drive-letter paths stay as the user wrote them
    if (path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1]))
        return std::string(path);
    std::string out;
    if (LocalPathToShare(path, style, out))
        return out;
    if (MappedDriveToUNC(path, style, out) &&
        out.find(ForeignSeparator(style)) == std::string::npos)
        return out;
    return std::string(path);
}

} // namespace fileio::detail
