// TestStore.h - gives a test a settings store of its own for its lifetime.
//
// Linux: a fresh temporary folder becomes $XDG_CONFIG_HOME (the previous value comes back
// afterwards), so the hive file is the test's own. Windows: the registry is the user's
// real one, so tests write only below "Software\Varn, Inc.\FileIO Tests", which is
// removed before and after each test.
#pragma once

#include "support/TempFolder.h"

#include <string>
#include <string_view>

namespace fileio::test {

/// The key name below "Software\Varn, Inc.\" that tests may write (as application name,
/// local registry profile or section).
inline constexpr const char* kTestKey = "FileIO Tests";

class TestStore {
public:
    TestStore();
    ~TestStore();
    TestStore(const TestStore&) = delete;
    TestStore& operator=(const TestStore&) = delete;

    /// The configuration folder the hive file lives in (Linux: Windows keeps the settings
    /// in the registry).
    const std::string& Folder() const { return m_folder.Path(); }
    /// The hive file's full name, its bytes and a write of them (Linux).
    std::string HivePath() const { return m_folder.Join(kHive); }
    std::string ReadHive() const { return m_folder.ReadFile(kHive); }
    void WriteHive(std::string_view bytes) const { m_folder.WriteFile(kHive, bytes); }

private:
    static constexpr const char* kHive = "varn-settings.hive";
    TempFolder m_folder{"fileio-settings"};
    std::string m_savedXdg;
    bool m_hadXdg = false;
};

} // namespace fileio::test
