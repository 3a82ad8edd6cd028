// TestStore_posix.cpp - a temporary configuration folder as $XDG_CONFIG_HOME.

#include "settings/TestStore.h"

#include <cstdlib>

namespace fileio::test {

TestStore::TestStore() {
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    m_hadXdg = xdg != nullptr;
    if (m_hadXdg)
        m_savedXdg = xdg;
    ::setenv("XDG_CONFIG_HOME", m_folder.Path().c_str(), 1);
}

TestStore::~TestStore() {
    if (m_hadXdg)
        ::setenv("XDG_CONFIG_HOME", m_savedXdg.c_str(), 1);
    else
        ::unsetenv("XDG_CONFIG_HOME");
}

} // namespace fileio::test
