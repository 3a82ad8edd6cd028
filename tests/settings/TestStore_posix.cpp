// TestStore_posix.cpp - a temporary configuration folder as $XDG_CONFIG_HOME.

#include "settings/TestStore.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace fileio::test {

TestStore::TestStore() {
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    m_hadXdg = xdg != nullptr;
    if (m_hadXdg)
        m_savedXdg = xdg;
    std::string pattern =
        (std::filesystem::temp_directory_path() / "fileio-settings-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        ADD_FAILURE() << "cannot make a temporary folder";
    m_folder = pattern;
    ::setenv("XDG_CONFIG_HOME", m_folder.c_str(), 1);
}

TestStore::~TestStore() {
    if (m_hadXdg)
        ::setenv("XDG_CONFIG_HOME", m_savedXdg.c_str(), 1);
    else
        ::unsetenv("XDG_CONFIG_HOME");
    std::error_code ignored;
    std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(m_folder, ignored);
}

} // namespace fileio::test
