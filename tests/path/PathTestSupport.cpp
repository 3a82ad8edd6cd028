// PathTestSupport.cpp - the scripted services of the path tests.

#include "PathTestSupport.h"

#include <fstream>
#include <random>
#include <sstream>

namespace pathtest {

namespace fs = std::filesystem;
using namespace fileio::platform;

// ---- trace -----------------------------------------------------------------------------

namespace {
std::vector<std::string> g_traceLines;
void CaptureTrace(const char* text) {
    g_traceLines.emplace_back(text);
}
} // namespace

TraceCapture::TraceCapture() : m_guard(System()) {
    g_traceLines.clear();
    System().debugTrace = CaptureTrace;
}

TraceCapture::~TraceCapture() = default;

const std::vector<std::string>& TraceCapture::Lines() const {
    return g_traceLines;
}

// ---- scripted network ------------------------------------------------------------------

namespace {

struct NetworkScript {
    std::vector<ScriptedDrive> drives;
    std::vector<SharedFolder> shares;
    std::string hostName;
    bool computerNameReadable = true;
    std::vector<std::string> queries;
};
NetworkScript g_network;

std::vector<std::string> ScriptedLogicalDrives() {
    std::vector<std::string> roots;
    for (const ScriptedDrive& drive : g_network.drives)
        roots.push_back(drive.root);
    return roots;
}

int ScriptedDriveType(const char* root) {
    for (const ScriptedDrive& drive : g_network.drives)
        if (drive.root == root)
            return drive.type;
    return 1;
}

/// The drive's name as the library asks for it: "X:" for a Windows root, the root itself
/// otherwise.
bool MatchesDriveName(const ScriptedDrive& drive, std::string_view name) {
    if (drive.root.size() == 3 && drive.root[1] == ':')
        return name.size() == 2 && name[1] == ':' &&
               std::toupper(static_cast<unsigned char>(drive.root[0])) == name[0];
    return drive.root == name;
}

bool ScriptedConnectionName(const char* name, std::string& out) {
    g_network.queries.emplace_back(name);
    for (const ScriptedDrive& drive : g_network.drives)
        if (MatchesDriveName(drive, name) && !drive.connection.empty()) {
            out = drive.connection;
            return true;
        }
    return false;
}

std::vector<SharedFolder> ScriptedShares() {
    return g_network.shares;
}

bool ScriptedHostName(std::string& out) {
    out = g_network.hostName;
    return !out.empty();
}

bool ScriptedComputerName(std::string& out) {
    out = "COMPUTER";
    return g_network.computerNameReadable;
}

} // namespace

ScriptedNetwork::ScriptedNetwork(std::vector<ScriptedDrive> drives,
                                 std::vector<SharedFolder> shares, std::string hostName)
    : m_network(Network()), m_system(System()) {
    g_network = NetworkScript{std::move(drives), std::move(shares), std::move(hostName), true, {}};
    Network().logicalDrives = ScriptedLogicalDrives;
    Network().driveType = ScriptedDriveType;
    Network().connectionName = ScriptedConnectionName;
    Network().sharedFolders = ScriptedShares;
    System().hostName = ScriptedHostName;
    System().computerName = ScriptedComputerName;
    fileio::detail::ClearConnectionCache();
}

ScriptedNetwork::~ScriptedNetwork() {
    fileio::detail::ClearConnectionCache();
}

const std::vector<std::string>& ScriptedNetwork::ConnectionQueries() {
    return g_network.queries;
}

void ScriptedNetwork::SetComputerNameReadable(bool readable) {
    g_network.computerNameReadable = readable;
}

// ---- scripted folders ------------------------------------------------------------------

namespace {

struct FolderScript {
    PathStyle style = PathStyle::Windows;
    std::set<std::string> folders;
    std::string currentDir;
    std::vector<std::string> changes;
    bool failFullPath = false;
    bool failSetCurrentDirectory = false;
};
FolderScript g_folders;

std::string WithoutTrailingSeparator(std::string path) {
    while (path.size() > 1 && (path.back() == '\\' || path.back() == '/') &&
           !(path.size() == 3 && path[1] == ':'))
        path.pop_back();
    return path;
}

bool ScriptedIsFolder(const char* path) {
    return g_folders.folders.count(WithoutTrailingSeparator(path)) > 0;
}

bool ScriptedGetCurrentDirectory(std::string& out) {
    out = g_folders.currentDir;
    return true;
}

bool ScriptedSetCurrentDirectory(const char* path) {
    g_folders.changes.emplace_back(path);
    if (g_folders.failSetCurrentDirectory || !ScriptedIsFolder(path))
        return false;
    g_folders.currentDir = WithoutTrailingSeparator(path);
    return true;
}

bool ScriptedFullPath(const char* path, std::string& out) {
    if (g_folders.failFullPath)
        return false;
    out = LexicalFullPath(g_folders.currentDir, path);
    if (g_folders.style == PathStyle::Windows)
        for (char& c : out)
            if (c == '/')
                c = '\\';
    return !out.empty();
}

} // namespace

ScriptedFolders::ScriptedFolders(PathStyle style, std::set<std::string> folders,
                                 std::string currentDir)
    : m_guard(Files()) {
    g_folders = FolderScript{style, std::move(folders), std::move(currentDir), {}, false, false};
    Files().isFolder = ScriptedIsFolder;
    Files().exists = ScriptedIsFolder;
    Files().getCurrentDirectory = ScriptedGetCurrentDirectory;
    Files().setCurrentDirectory = ScriptedSetCurrentDirectory;
    Files().fullPath = ScriptedFullPath;
}

ScriptedFolders::~ScriptedFolders() = default;

const std::string& ScriptedFolders::CurrentDirectory() {
    return g_folders.currentDir;
}

const std::vector<std::string>& ScriptedFolders::DirectoryChanges() {
    return g_folders.changes;
}

void ScriptedFolders::FailFullPath(bool fail) {
    g_folders.failFullPath = fail;
}

void ScriptedFolders::FailSetCurrentDirectory(bool fail) {
    g_folders.failSetCurrentDirectory = fail;
}

} // namespace pathtest
