// TestStore.h - gives a test a settings store of its own for its lifetime. Linux: a fresh
// temporary folder is $XDG_CONFIG_HOME until the end. Windows: tests write only below
// "Software\Varn, Inc.\FileIO Tests" of the user's registry, removed before and after.
#pragma once

#include "support/TempFolder.h"

#include <string>
#include <string_view>

namespace fileio::test {

/// The key name below "Software\Varn, Inc.\" that tests may write (as application name,
/// local registry profile or section).
inline constexpr const char* kTestKey = "FileIO Tests";

/// Every byte a settings text can hold, 0x01 to 0xFF.
inline std::string AllBytes() {
    std::string bytes;
    for (int b = 1; b <= 255; ++b)
        bytes += static_cast<char>(b);
    return bytes;
}

class TestStore {
public:
    TestStore();
    ~TestStore();
    TestStore(const TestStore&) = delete;
    TestStore& operator=(const TestStore&) = delete;

    /// The configuration folder, the hive file's name, its bytes and a write of them (Linux).
    const std::string& Folder() const { return m_folder.Path(); }
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
