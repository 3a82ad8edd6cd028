// ProfileSettingsTest.cpp - the profile settings against a recording in-memory profile: the
// exact texts handed to the host's profile operations, the conversion each type reads back
// with, the int-first overloads, and what happens without a profile object.

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/settings/ApplicationProfile.h"
#include "fileio/settings/RegistrySettings.h"
#include "support/MemoryProfile.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using fileio::test::MemoryProfile;

class ProfileSettingsTest : public ::testing::Test {
protected:
    MemoryProfile profile;
    ScopedHandler<ApplicationProfile> installed{&SetApplicationProfile, &profile};

    std::optional<std::string> Stored(const char* entry) const {
        return profile.Stored("Options", entry);
    }
};

TEST_F(ProfileSettingsTest, NumbersTravelAsTheirTexts) {
    EXPECT_EQ(SetRegistryValue("Options", "Int", -2147483647 - 1), 1);
    EXPECT_EQ(SetRegistryValue("Options", "Float", 0.1f), 1);
    EXPECT_EQ(SetRegistryValue("Options", "Double", 0.1), 1);
    EXPECT_EQ(Stored("Int"), "-2147483648");
    EXPECT_EQ(Stored("Float"), "0.100000001");          // nine significant digits
    EXPECT_EQ(Stored("Double"), "0.10000000000000001"); // seventeen
    // A missing number reads as its default, which travels as its stored form.
    EXPECT_EQ(GetRegistryValue("Options", "Missing", 7), 7);
    EXPECT_EQ(GetRegistryValue("Options", "Missing", 0.1f), 0.1f);
    EXPECT_EQ(GetRegistryValue("Options", "Missing", 0.1), 0.1);
    // The profile's answer is passed back.
    profile.failWrites = true;
    EXPECT_EQ(SetRegistryValue("Options", "Int", 1), 0);
}

TEST_F(ProfileSettingsTest, SwitchesAreOnOrOff) {
    EXPECT_EQ(SetRegistryBOOL("Options", "A", true), true);
    EXPECT_EQ(SetRegistryBOOL("Options", "B", false), true);
    EXPECT_EQ(SetRegistryBOOL("Options", "C", 5), 1); // any non-zero int is true
    EXPECT_EQ(Stored("A"), "ON");
    EXPECT_EQ(Stored("B"), "OFF");
    EXPECT_EQ(Stored("C"), "ON");
    const std::pair<const char*, bool> rows[] = {
        {"on", true}, {"True", true}, {"1", false}, {"onn", false}, {"", false}};
    for (const auto& [stored, expected] : rows) {
        SCOPED_TRACE(stored);
        profile.values[{"Options", "S"}] = stored;
        EXPECT_EQ(GetRegistryBOOL("Options", "S", true), expected);
        EXPECT_EQ(GetRegistryBOOL("Options", "S", 1), expected ? 1 : 0);
    }
    // A missing switch reads as its default, which travels as "ON" or "OFF".
    EXPECT_EQ(GetRegistryBOOL("Options", "Missing", true), true);
    EXPECT_EQ(GetRegistryBOOL("Options", "Missing", false), false);
    EXPECT_EQ(GetRegistryBOOL("Options", "Missing", 0), 0);
}

// Texts pass as they are; the overloads that take an int first ignore it.
TEST_F(ProfileSettingsTest, TextsAreStoredAsTheyAreAndDeletingWritesANullValue) {
    EXPECT_EQ(SetRegistryString("Options", "T", String("a=b\nC:\\")), 1);
    EXPECT_EQ(GetRegistryString("Options", "T", "default"), String("a=b\nC:\\"));
    EXPECT_EQ(GetRegistryString("Options", "Missing", "default"), String("default"));
    EXPECT_STREQ(GetRegistryString(1, "Options", "Missing", nullptr), ""); // never null
    // An empty text is written as "", not as a null value (which would remove the entry).
    EXPECT_EQ(SetRegistryString(4, "Options", "Empty", ""), 1);
    EXPECT_EQ(Stored("Empty"), "");
    profile.calls.clear();
    EXPECT_EQ(DeleteRegistryItem(1, "Options", "T"), 1);
    ASSERT_EQ(profile.calls.size(), 1u);
    EXPECT_EQ(profile.calls[0].operation, "write");
    EXPECT_EQ(profile.calls[0].text, std::nullopt);
    EXPECT_EQ(DeleteRegistryItem("Options", "T"), 0); // the profile's answer
}

TEST_F(ProfileSettingsTest, BinaryDataPassUnchanged) {
    unsigned char bytes[] = {0, 1, 0xFF, '=', '\n'};
    EXPECT_EQ(WriteProfileBinarySplit(0, "Options", "Bin", bytes, 5), 5);
    ASSERT_EQ(profile.binaryWrites.size(), 1u);
    EXPECT_EQ(profile.binaryWrites[0].data, std::vector<unsigned char>(bytes, bytes + 5));
    profile.binaryAnswer = {9, 8, 7};
    unsigned char* data = nullptr;
    unsigned int size = 0;
    EXPECT_EQ(GetProfileBinarySplit(0, "Options", "Bin", &data, &size), 7);
    EXPECT_EQ(data, profile.binaryAnswer.data()); // the profile's buffer, as it gave it
    EXPECT_EQ(size, 3u);
}

TEST(ProfileSettingsWithoutProfileTest, WritersReturnZeroAndReadersTheirDefaults) {
    ScopedHandler<ApplicationProfile> none(&SetApplicationProfile, nullptr);
    EXPECT_EQ(SetRegistryValue("S", "E", 1.0), 0);
    EXPECT_EQ(SetRegistryBOOL("S", "E", true), false);
    EXPECT_EQ(DeleteRegistryItem("S", "E"), 0);
    unsigned char byte = 1;
    EXPECT_EQ(WriteProfileBinarySplit("S", "E", &byte, 1), 0);
    EXPECT_EQ(GetRegistryValue("S", "E", 0.25f), 0.25f);
    EXPECT_EQ(GetRegistryBOOL("S", "E", true), true);
    EXPECT_EQ(GetRegistryString("S", "E", "default"), String("default"));
    unsigned char* data = &byte;
    unsigned int size = 99;
    EXPECT_EQ(GetProfileBinarySplit("S", "E", &data, &size), 0);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0u);
}

} // namespace
