// TestStore_win32.cpp - the registry key of the tests, removed before and after each test.

#include "settings/TestStore.h"

#include "fileio/settings/LocalRegistry.h"
#include "fileio/settings/RegistrySettings.h"

namespace fileio::test {

TestStore::TestStore() {
    ResetRegistry(String(kTestKey));
    ResetLocalRegistry(String(kTestKey));
}

TestStore::~TestStore() {
    ResetRegistry(String(kTestKey));
    ResetLocalRegistry(String(kTestKey));
}

} // namespace fileio::test
