// StoreSettingsTest.cpp - the settings that reach the current user's store (the registry on
// Windows, the hive file on Linux): the local registry family and its keys, the library's
// ready application profile and the resets. Keys are checked by reading the store directly.

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/settings/ApplicationProfile.h"
#include "fileio/settings/LocalRegistry.h"
#include "fileio/settings/RegistryProfile.h"
#include "fileio/settings/RegistrySettings.h"
#include "fileio/settings/SettingsLocations.h"
#include "platform/Platform.h"
#include "settings/TestStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace fileio::test;

std::string Raw(const std::string& key, const std::string& name) {
    std::string value;
    return fileio::platform::Hive().readString(key.c_str(), name.c_str(), value) ? value
                                                                                 : "<absent>";
}

const std::string kCompany = "SOFTWARE\\Varn, Inc.\\";
const std::string kAppKey = kCompany + kTestKey;

class StoreSettingsTest : public ::testing::Test {
protected:
    void SetUp() override { SetLocalRegistryProfile(String(kTestKey)); }
    void TearDown() override { FreeLocalRegistryProfile(); }

    TestStore store;
};

TEST_F(StoreSettingsTest, LocalTextsAndNumbersRoundTripAndNamesIgnoreCase) {
    // The file's escaping is the hive's (HiveFileTest.cpp): here a long text comes back whole.
    const std::string text = AllBytes() + std::string(5000, 'x');
    ASSERT_EQ(SetLocalRegistryString("Texts", "All", String(text)), 1);
    EXPECT_EQ(GetLocalRegistryString("Texts", "All", "d").View(), text);
    EXPECT_EQ(SetLocalRegistryValue("Numbers", "Float", 0.1f), 1);
    EXPECT_EQ(SetLocalRegistryString("numbers", "TEXT", "abc"), 1);
    EXPECT_EQ(Raw(kAppKey + "\\Numbers", "Float"), "0.100000001");
    EXPECT_EQ(GetLocalRegistryValue("NUMBERS", "float", 5.0f), 0.1f);
    EXPECT_EQ(GetLocalRegistryValue("Numbers", "Text", 5), 0); // not a number reads as 0
    EXPECT_EQ(GetLocalRegistryValue("Numbers", "Missing", 5), 5);
}

TEST_F(StoreSettingsTest, ResetLocalRegistryRemovesAKeyWithItsSubkeys) {
    FreeLocalRegistryProfile(); // the resets ignore the profile; write the keys directly
    const std::string base = std::string(kTestKey) + "\\Tree";
    SetLocalRegistryString(String(base), "a", "1");
    SetLocalRegistryString(String(base + "\\Child\\Grandchild"), "c", "3");
    SetLocalRegistryString(String(base + "Sibling"), "d", "4");
    ResetLocalRegistry(String(base));
    EXPECT_EQ(Raw(kCompany + base, "a"), "<absent>");
    EXPECT_EQ(Raw(kCompany + base + "\\Child\\Grandchild", "c"), "<absent>");
    EXPECT_EQ(Raw(kCompany + base + "Sibling", "d"), "4");

    // The two-argument forms remove `name` below the key given, whatever its case.
    SetLocalRegistryString(String(base + "\\X"), "e", "5");
    SetLocalRegistryString(String(base + "\\Y"), "e", "6");
    ResetLocalRegistry(String(kCompany + base), "X");
    ResetRegistry(String(kCompany + base), "y");
    EXPECT_EQ(Raw(kCompany + base + "\\X", "e"), "<absent>");
    EXPECT_EQ(Raw(kCompany + base + "\\Y", "e"), "<absent>");
    // The one-argument form of the profile settings removes below the company key.
    SetLocalRegistryString(String(base + "\\Z"), "f", "7");
    ResetRegistry(String(base));
    EXPECT_EQ(Raw(kCompany + base + "\\Z", "f"), "<absent>");
    ResetRegistry(String("No\\Such\\Key"), "B"); // a key that cannot be opened: nothing
    // An empty name removes nothing (not the whole company key).
    ResetLocalRegistry(String());
    ResetLocalRegistry(String(kAppKey), String());
    EXPECT_EQ(Raw(kCompany + base + "Sibling", "d"), "4");
}

TEST_F(StoreSettingsTest, TheReadyProfileStoresUnderTheApplicationKey) {
    // Installs the current profile again now and puts it back at the end.
    ScopedHandler<ApplicationProfile> restore(&SetApplicationProfile, GetApplicationProfile());
    InstallRegistryProfile(String(kTestKey));
    ASSERT_NE(GetApplicationProfile(), nullptr);

    EXPECT_EQ(SetRegistryBOOL("Options", "AutoSave", true), true);
    EXPECT_EQ(SetRegistryValue("Options", "Count", 3), 1);
    EXPECT_EQ(SetRegistryString("Other", "Name", "x=y"), 1);
    EXPECT_EQ(Raw(kAppKey + "\\Options", "AutoSave"), "ON");
    EXPECT_EQ(Raw(kAppKey + "\\Options", "Count"), "3");
    EXPECT_EQ(Raw(kAppKey + "\\Other", "Name"), "x=y");
    EXPECT_EQ(GetRegistryValue("Options", "Count", 0), 3);

    EXPECT_EQ(DeleteRegistryItem("Options", "Count"), 1);
    EXPECT_EQ(GetRegistryValue("Options", "Count", 8), 8);
    EXPECT_EQ(DeleteRegistryItem("Options", "Count"), 0); // nothing left to remove

    // A null entry removes the whole section.
    EXPECT_EQ(GetApplicationProfile()->WriteProfileString("Options", nullptr, nullptr), 1);
    EXPECT_EQ(Raw(kAppKey + "\\Options", "AutoSave"), "<absent>");
    EXPECT_EQ(Raw(kAppKey + "\\Other", "Name"), "x=y");

    // Installing again renames the library's profile and returns it as the previous one.
    ApplicationProfile* mine = GetApplicationProfile();
    EXPECT_EQ(InstallRegistryProfile(String(std::string(kTestKey) + "\\Second")), mine);
    EXPECT_EQ(SetRegistryString("Options", "Where", "second"), 1);
    EXPECT_EQ(Raw(kAppKey + "\\Second\\Options", "Where"), "second");
}

TEST_F(StoreSettingsTest, TheReadyProfileRoundTripsBinaryData) {
    RegistryProfile profile{String(kTestKey)};
    std::vector<unsigned char> bytes;
    for (int b = 0; b < 256; ++b)
        bytes.push_back(static_cast<unsigned char>(b));
    EXPECT_EQ(profile.WriteProfileBinary("Bin", "All", bytes.data(), 256), 1);
    EXPECT_EQ(profile.WriteProfileBinary("Bin", "Empty", nullptr, 0), 1);
    EXPECT_EQ(Raw(kAppKey + "\\Bin", "All").substr(504), "FCFDFEFF"); // two digits a byte

    unsigned char* data = nullptr;
    unsigned int size = 0;
    ASSERT_NE(profile.GetProfileBinary("Bin", "All", &data, &size), 0);
    EXPECT_EQ(std::vector<unsigned char>(data, data + size), bytes);
    delete[] data;
    ASSERT_NE(profile.GetProfileBinary("Bin", "Empty", &data, &size), 0);
    EXPECT_EQ(size, 0u);
    delete[] data;

    // Lower-case digits, as a hand-edited file may hold, read too; damaged data read as nothing.
    profile.WriteProfileString("Bin", "Lower", "ff0a");
    ASSERT_NE(profile.GetProfileBinary("Bin", "Lower", &data, &size), 0);
    EXPECT_EQ(std::vector<unsigned char>(data, data + size), (std::vector<unsigned char>{255, 10}));
    delete[] data;
    const std::pair<const char*, const char*> bad[] = {
        {"Odd", "ABC"}, {"NotHex", "0G"}, {"BelowLower", "0["}};
    for (const auto& [entry, text] : bad) {
        SCOPED_TRACE(entry);
        profile.WriteProfileString("Bin", entry, text);
        data = reinterpret_cast<unsigned char*>(&size);
        EXPECT_EQ(profile.GetProfileBinary("Bin", entry, &data, &size), 0);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(size, 0u);
    }
    EXPECT_EQ(profile.GetProfileBinary("Bin", "Missing", &data, &size), 0);
    // A write the store refuses returns 0.
    fileio::platform::ScopedServices<fileio::platform::SettingsHiveServices> hive(
        fileio::platform::Hive());
    fileio::platform::Hive().writeString = [](const char*, const char*, const char*) {
        return false;
    };
    EXPECT_EQ(profile.WriteProfileBinary("Bin", "Refused", bytes.data(), 1), 0);
}

} // namespace
