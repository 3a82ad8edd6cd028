// SearchPathsTest.cpp - folder lists from texts and from the settings, the chain of named
// lists, and the stored setting that AddSearchPathNoDupe writes, in an in-memory hive.

#include "fileio/path/SearchPaths.h"
#include "fileio/settings/LocalRegistry.h"
#include "fileio/settings/SettingsLocations.h"

#include "PathTestSupport.h"
#include "path/SearchPathsDetail.h"
#include "platform/HiveFile.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using namespace pathtest;
namespace detail = fileio::detail;

std::vector<std::string> Folders(const FullPaths* list) {
    std::vector<std::string> out;
    for (; list != nullptr; list = list->next)
        out.emplace_back(list->path.View());
    return out;
}

/// Native separators in a text written with "/".
std::string Native(const std::string& text) {
    return std::filesystem::path(text).make_preferred().string();
}

/// An in-memory settings hive, and the writes it received.
std::optional<platform::HiveDocument> g_hive;
int g_writes = 0;

/// The settings hive of the test, and a folder list chain that is empty at both ends.
class SearchPathsTest : public ::testing::Test {
protected:
    SearchPathsTest()
        : m_hive(platform::Hive()), m_files(platform::Files()), m_system(platform::System()) {
        g_hive.emplace("");
        g_writes = 0;
        platform::Hive().readString = [](const char* key, const char* name, std::string& value) {
            return g_hive->Find(key, name, value);
        };
        platform::Hive().writeString = [](const char* key, const char* name, const char* value) {
            ++g_writes;
            g_hive->Set(key, name, value);
            return true;
        };
        platform::System().applicationFolder = [] { return Native("/opt/suite"); };
        EXPECT_EQ(GetSearchPaths(), nullptr);
    }
    ~SearchPathsTest() override {
        FreeAllSearchPaths();
        FreeFoldersLocation();
        FreeLocalRegistryProfile();
        g_hive.reset();
    }

    static std::string Stored(const std::string& section, const std::string& entry) {
        std::string value;
        return g_hive->Find("SOFTWARE\\Varn, Inc.\\" + section, entry, value) ? value : "<absent>";
    }

private:
    platform::ScopedServices<platform::SettingsHiveServices> m_hive;
    platform::ScopedServices<platform::FileServices> m_files;
    platform::ScopedServices<platform::SystemServices> m_system;
};

TEST_F(SearchPathsTest, ListsFromTextJoinEachFolderToTheBase) {
    EXPECT_EQ(detail::JoinFoldersToBase("a;b\\c;;d/", "C:\\Suite", kWindows),
              "C:\\Suite\\a;C:\\Suite\\b\\c;C:\\Suite\\d/");

    SearchPaths* list = AddSearchPathString(String("Plugins"), String("PluginFolders"),
                                            String("a;b/c;;d/"), Native("/opt/suite"));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list, GetSearchPaths());
    EXPECT_EQ(Folders(list->paths),
              (std::vector<std::string>{Native("/opt/suite/a/"), Native("/opt/suite/b/c/"),
                                        Native("/opt/suite/d/")}));
    EXPECT_EQ(g_writes, 0); // nothing is stored
    SearchPaths* newer =
        AddSearchPathString(String("plugins"), String("K"), String(";;"), String("x"));
    EXPECT_EQ(newer->paths, nullptr);
    EXPECT_EQ(newer->next, list);
    // The newest list of a name, whatever its case.
    EXPECT_EQ(FindSearchPath(String("PLUGINS")), newer);
    EXPECT_EQ(FindSearchPath(String("Nothing")), nullptr);
}

TEST_F(SearchPathsTest, ListsFromTheSettingsIgnoreTheLocalRegistryProfile) {
    SetFoldersLocation(String("Folders Test"));
    SetLocalRegistryProfile(String("Someone"));
    ASSERT_NE(
        SetLocalRegistryString(String("Folders Test"), String("Textures"), String("profiled")), 0);
    SetLocalRegistryProfile(String());
    ASSERT_NE(SetLocalRegistryString(String("Folders Test"), String("Textures"),
                                     String("X:/one;;Y:\\two")),
              0);
    SetLocalRegistryProfile(String("Someone"));

    SearchPaths* textures = AddSearchPath(String("Textures"), String("Textures"), String("Maps"));
    EXPECT_EQ(Folders(textures->paths),
              (std::vector<std::string>{Native("X:/one/"), Native("Y:/two/")}));

    // Nothing stored: the default folder below the program's folder.
    SearchPaths* models =
        AddSearchPath(String("Models"), String("Models"), String("Library/Models"));
    EXPECT_EQ(Folders(models->paths),
              (std::vector<std::string>{Native("/opt/suite/Library/Models/")}));
    SearchPaths* root = AddSearchPath(String("Root"), String("Root"), String());
    EXPECT_EQ(Folders(root->paths), (std::vector<std::string>{Native("/opt/suite/")}));
    EXPECT_STREQ(GetLocalRegistryProfile().Get(), "Someone");
}

TEST_F(SearchPathsTest, NoDupeAddsExistingNewFoldersFirstAndStoresTheList) {
    platform::Files().exists = [](const char* path) {
        return std::string_view(path).find("missing") == std::string_view::npos;
    };
    SetLocalRegistryProfile(String("Someone"));
    SetFoldersLocation(String("Elsewhere"));
    SearchPaths* list =
        AddSearchPathString(String("Lib"), String("LibFolders"), String("/lib/a;/lib/b"), String());
    const std::vector<std::string> before = Folders(list->paths);

    AddSearchPathNoDupe(Native("/lib/missing"), list);
    AddSearchPathNoDupe(Native("/LIB/A/"), list); // differs only in case: already there
    EXPECT_EQ(Folders(list->paths), before);

    AddSearchPathNoDupe(Native("/lib/new"), list);
    // The stored setting lists the folders of the list in order.
    EXPECT_EQ(Stored("Folders v19.5 64bit", "LibFolders"),
              Native("/lib/new") + ";" + before[0] + ";" + before[1]);
    EXPECT_EQ(Stored("Elsewhere", "LibFolders"), "<absent>");

    AddSearchPathNoDupe(Native("/lib/new"), list);
    EXPECT_EQ(g_writes, 1);
}

} // namespace
