// PathTestSupport.h - guards that put the process-wide path state back, the scratch folder,
// and scripted replacements of the file, system and network services.
#pragma once

#include "fileio/path/BasePath.h"
#include "path/PathForms.h"
#include "platform/Platform.h"
#include "support/TempFolder.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace pathtest {

using fileio::platform::PathStyle;

/// Puts the base path back as it was when the guard was made.
class BasePathGuard {
public:
    BasePathGuard() : m_saved(GetBasePath().View()) {}
    ~BasePathGuard() {
        FreeBasePaths();
        if (!m_saved.empty())
            SetBasePath(String(m_saved));
    }

private:
    std::string m_saved;
};

/// Puts the process's current directory back as it was when the guard was made.
class CurrentDirectoryGuard {
public:
    CurrentDirectoryGuard() : m_saved(std::filesystem::current_path()) {}
    ~CurrentDirectoryGuard() {
        std::error_code ignored;
        std::filesystem::current_path(m_saved, ignored);
    }

private:
    std::filesystem::path m_saved;
};

/// Each test's own folder (tests/support/TempFolder.h).
using fileio::test::TempFolder;

/// The debug trace lines written while the guard lives.
class TraceCapture {
public:
    TraceCapture();
    ~TraceCapture();
    const std::vector<std::string>& Lines() const;

private:
    fileio::platform::ScopedServices<fileio::platform::SystemServices> m_guard;
};

/// A drive table, shares and names for the network services, in place of the system's
/// while the guard lives. The connection cache is emptied at both ends.
struct ScriptedDrive {
    std::string root;       // "C:\\" or a mount point
    int type;               // kRemoteDrive for a network drive
    std::string connection; // what connectionName answers for the drive's name ("" = fails)
};

class ScriptedNetwork {
public:
    explicit ScriptedNetwork(std::vector<ScriptedDrive> drives,
                             std::vector<fileio::platform::SharedFolder> shares = {},
                             std::string hostName = "WORKSTATION");
    ~ScriptedNetwork();
    /// How often connectionName was asked, and for which drive names, in order.
    static const std::vector<std::string>& ConnectionQueries();
    /// Makes computerName fail (the Macintosh server conversion needs it).
    static void SetComputerNameReadable(bool readable);

private:
    fileio::platform::ScopedServices<fileio::platform::NetworkServices> m_network;
    fileio::platform::ScopedServices<fileio::platform::SystemServices> m_system;
};

/// A file system of folders only, with a current directory, in place of the system's while
/// the guard lives. Full paths follow the lexical rule with the style's separator (for
/// Windows that models GetFullPathNameW on drive-letter and UNC paths).
class ScriptedFolders {
public:
    ScriptedFolders(PathStyle style, std::set<std::string> folders, std::string currentDir);
    ~ScriptedFolders();
    static const std::string& CurrentDirectory();
    /// Every setCurrentDirectory call, in order.
    static const std::vector<std::string>& DirectoryChanges();
    static void FailFullPath(bool fail);
    static void FailSetCurrentDirectory(bool fail);

private:
    fileio::platform::ScopedServices<fileio::platform::FileServices> m_guard;
};

} // namespace pathtest
