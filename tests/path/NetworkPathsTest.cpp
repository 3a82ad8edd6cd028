// NetworkPathsTest.cpp - the network forms of paths with scripted drive tables, shares and
// mount tables, under both rules; the mount-table reader; the system's own answers.

#include "PathTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace pathtest;
using fileio::platform::kRemoteDrive;
namespace detail = fileio::detail;

std::vector<ScriptedDrive> WindowsDrives() {
    return {
        {"A:\\", 2, ""},
        {"C:\\", 3, ""},
        {"M:\\", kRemoteDrive, "\\\\macsrv\\ART"},
        {"N:\\", kRemoteDrive, "\\\\other\\ART"},
        {"P:\\", kRemoteDrive, "\\\\files\\Projects"},
        {"Q:\\", kRemoteDrive, "\\\\files\\art"},
        {"R:\\", kRemoteDrive, ""}, // remembered but not connected
        {"S:\\", kRemoteDrive, "\\\\noshare"},
    };
}

std::vector<ScriptedDrive> PosixDrives() {
    return {
        {"/", 3, ""},
        {"/mnt/art", kRemoteDrive, "//fileserver/ART"},
        {"/mnt/art/inner", kRemoteDrive, "//other/IN"},
        {"/mnt/odd", kRemoteDrive, "//srv/a\\b"},
        {"/media/usb", 3, ""},
        {"/mnt/trail/", kRemoteDrive, "//srv/T"}, // written with a trailing separator
    };
}

long CountQueries(std::string_view drive) {
    const auto& queries = ScriptedNetwork::Queries();
    return std::count(queries.begin(), queries.end(), drive);
}

TEST(NetworkPaths, FindDriveForShareExaminesRemoteDrivesFromTheLast) {
    ScriptedNetwork network(WindowsDrives());
    ExpectEach(Reporting(detail::FindDriveForShare, kWindows),
               {
                   {"ART", "\\\\other\\ART"}, // N: comes before M: when walking backwards
                   {"art", "\\\\files\\art"},
                   {"Projects", "\\\\files\\Projects"},
                   {"PROJECTS", "<none>"}, // share names compare exactly
                   {"noshare", "<none>"},
               });
    // Local drives are never asked for a connection.
    EXPECT_EQ(CountQueries("A:") + CountQueries("C:"), 0);
}

TEST(NetworkPaths, MacintoshServerVolumesBecomeTheirShares) {
    ScriptedNetwork network(WindowsDrives());
    const std::string longRest(300, 'x');
    ExpectEach(
        [](const std::string& path) { return detail::GetServerFileName(path, kWindows); },
        {
            {"//MACSERVER/Volumes/art/Maps/sky.tga", "\\\\other\\ART/Maps/sky.tga"},
            {"MACSERVER/Volumes/Projects/a.mdl", "MACSERVER/Volumes/Projects/a.mdl"},
            {"MACSERVER/Volumes/art", "MACSERVER/Volumes/art"}, // no second "/"
            {"C:/Volumes/art/x", "C:/Volumes/art/x"},           // not on the server
            {"MACSERVER/art/x", "MACSERVER/art/x"},
            {"//macserver/Volumes/art/x", "//macserver/Volumes/art/x"}, // case-sensitive
            {"MACSERVER/Volumes/art/" + longRest, ("\\\\other\\ART/" + longRest).substr(0, 259)},
        });
    EXPECT_EQ(detail::UniversalToNative("//MACSERVER/Volumes/art/Maps/sky.tga", kWindows),
              "\\\\other\\ART\\Maps\\sky.tga");
    ScriptedNetwork::ComputerNameReadable() = false;
    EXPECT_EQ(detail::GetServerFileName("MACSERVER/Volumes/art/x", kWindows),
              "MACSERVER/Volumes/art/x");
}

TEST(NetworkPaths, MappedDrivesBecomeTheirConnectionsThroughACache) {
    ScriptedNetwork network(WindowsDrives());
    platform::ScopedServices<platform::SystemServices> guard(platform::System());
    static int waitCursors = 0;
    waitCursors = 0;
    platform::System().beginWaitCursor = [] { return static_cast<void*>(&++waitCursors); };
    platform::System().endWaitCursor = [](void* previous) {
        EXPECT_EQ(previous, &waitCursors);
        --waitCursors;
    };
    ExpectEach(
        [](const std::string& path) {
            const std::string unc = OrNone(
                [&](std::string& out) { return detail::MappedDriveToUNC(path, kWindows, out); });
            EXPECT_EQ(waitCursors, 0);
            return unc;
        },
        {
            {"P:\\Robot\\arm.mdl", "\\\\files\\Projects\\Robot\\arm.mdl"},
            {"p:\\", "\\\\files\\Projects\\"},
            {"P:/Robot", "<none>"}, // only letter, ":", "\"
            {"P:", "<none>"},
            {"C:\\local", "<none>"},
            {"R:\\x", "<none>"},
            {"", "<none>"},
            {"P:\\" + std::string(300, 'y'),
             ("\\\\files\\Projects\\" + std::string(300, 'y')).substr(0, 259)},
        });
    EXPECT_EQ(CountQueries("P:"), 1); // asked once, then taken from the cache
    EXPECT_EQ(CountQueries("R:"), 1);
    detail::ClearConnectionCache();
    std::string out;
    EXPECT_TRUE(detail::MappedDriveToUNC("P:\\x", kWindows, out));
    EXPECT_EQ(CountQueries("P:"), 2);
}

TEST(NetworkPaths, LocalSharesNameTheDeepestShareThatHoldsThePath) {
    ScriptedNetwork network({}, {{"Data", "C:\\Data"},
                                 {"Deep", "C:\\Data\\Deep\\"},
                                 {"Drive", "D:\\"},
                                 {"pub", "/srv/pub"}});
    ExpectEach(Reporting(detail::LocalPathToShare, kWindows),
               {
                   {"c:\\data\\deep\\x.mdl", "\\\\WORKSTATION\\Deep\\x.mdl"},
                   {"C:\\Data\\y.mdl", "\\\\WORKSTATION\\Data\\y.mdl"},
                   {"C:\\Database\\y", "<none>"},
                   {"D:\\z\\w", "\\\\WORKSTATION\\Drive\\z\\w"},
                   {"/srv/PUB/a/b", "\\\\WORKSTATION\\pub\\a/b"},
               });
    ExpectEach(Reporting(detail::LocalPathToShare, kPosix),
               {
                   {"C:\\Data\\Deep\\x.mdl", "//WORKSTATION/Deep/x.mdl"},
                   {"c:\\data\\deep\\x.mdl", "<none>"},
                   {"D:\\z\\w", "//WORKSTATION/Drive/z\\w"},
                   {"/srv/pub/a/b", "//WORKSTATION/pub/a/b"},
                   {"/srv/PUB/a", "<none>"},
               });
}

TEST(NetworkPaths, UNCFileNameKeepsDriveLettersAndNetworkNames) {
    ScriptedNetwork network(WindowsDrives(), {{"Root", "\\Public"}});
    ExpectEach([](const std::string& path) { return detail::GetUNCFileName(path, kWindows); },
               {
                   {"P:\\Robot\\arm.mdl", "P:\\Robot\\arm.mdl"}, // drive letters stay as written
                   {"\\\\files\\Projects\\x", "\\\\files\\Projects\\x"},
                   {"//files/Projects/x", "//files/Projects/x"},
                   {"\\Public\\x.mdl", "\\\\WORKSTATION\\Root\\x.mdl"},
                   {"relative\\x", "relative\\x"},
                   {"", ""},
                   {"C", "C"},
               });
    EXPECT_EQ(detail::GetNonRelativePath("\\Public\\x.mdl", kWindows), "//WORKSTATION/Root/x.mdl");
    EXPECT_EQ(detail::GetNonRelativePath("C:\\a\\b", kWindows), "C:/a/b");
    EXPECT_EQ(detail::GetNonRelativePath("", kWindows), "");
}

TEST(NetworkPaths, NetworkMountsPlayTheMappedDrivesOnPosix) {
    ScriptedNetwork network(PosixDrives());
    ExpectEach([](const std::string& path) { return detail::GetUNCFileName(path, kPosix); },
               {
                   {"/mnt/art/models/arm.mdl", "//fileserver/ART/models/arm.mdl"},
                   {"/mnt/art", "//fileserver/ART"},
                   {"/mnt/art/inner/x.tga", "//other/IN/x.tga"}, // the deepest mount holds it
                   {"/mnt/artist/x", "/mnt/artist/x"},
                   {"/media/usb/x", "/media/usb/x"}, // not a network mount
                   {"/mnt/odd/x", "/mnt/odd/x"},     // a result with "\" is refused
                   {"/mnt/trail/x", "//srv/T/x"},
                   {"D:/x", "D:/x"},
               });
    std::string root;
    EXPECT_TRUE(detail::FindDriveForShare("ART", kPosix, root));
    EXPECT_EQ(root, "//fileserver/ART");
    EXPECT_EQ(detail::GetServerFileName("//MACSERVER/Volumes/art/sky.tga", kPosix),
              "//fileserver/ART/sky.tga");
    // A reference outside the base path is written in its network form.
    BasePathGuard base;
    SetBasePath(String("/home/ann/Projects/Robot/robot.prj"));
    EXPECT_EQ(detail::GetRelativePath("/mnt/art/sky.tga", kPosix), "//fileserver/ART/sky.tga");
    EXPECT_EQ(detail::GetNonRelativePath("/mnt/art/sky.tga", kPosix), "//fileserver/ART/sky.tga");
    // A network file system mounted as the root.
    ScriptedNetwork rootMount({{"/", kRemoteDrive, "//nas/root"}});
    EXPECT_EQ(detail::GetUNCFileName("/etc/x", kPosix), "//nas/root/etc/x");
}

TEST(NetworkPaths, MountTablesAreReadLineByLine) {
    const std::string text = "sysfs /sys sysfs rw,nosuid 0 0\n"
                             "//fileserver/ART /mnt/art cifs rw,relatime 0 0\n"
                             "nas:/export/media /mnt/media nfs4 rw 0 0\n"
                             "/dev/sda1 /mnt/with\\040space ext4 rw 0 0\n"
                             "short line\n"
                             "\t  \n"
                             "\n"
                             "//srv/back\\134slash\t/mnt/b  cifs rw 0 0\n"
                             "tail\\04 /x\\ y";
    auto entries = platform::ParseMountTable(text);
    ASSERT_EQ(entries.size(), 6u);
    EXPECT_EQ(entries[0].source, "sysfs");
    EXPECT_EQ(entries[1].mountPoint, "/mnt/art");
    EXPECT_EQ(entries[1].type, "cifs");
    EXPECT_EQ(entries[2].source, "nas:/export/media");
    EXPECT_EQ(entries[3].mountPoint, "/mnt/with space");
    EXPECT_EQ(entries[4].source, "//srv/back\\slash");
    EXPECT_EQ(entries[4].mountPoint, "/mnt/b");
    EXPECT_EQ(entries[5].source, "tail\\04"); // an incomplete escape stays as it is
    EXPECT_EQ(entries[5].mountPoint, "/x\\");
    EXPECT_TRUE(platform::ParseMountTable("").empty());
}

TEST(NetworkPaths, ConnectionNamesOfMountSources) {
    ExpectEach(platform::ConnectionOfMountSource, {
                                                      {"\\\\server\\share", "//server/share"},
                                                      {"//server/share/", "//server/share"},
                                                      {"nas:/export/media", "//nas/export/media"},
                                                      {"nas:/", "//nas"},
                                                      {"[fe80::1]:/export", "//[fe80::1]/export"},
                                                      {"/dev/sda1", ""},
                                                      {":/x", ""},
                                                      {"a/b:/c", ""},
                                                  });
    for (const char* type : {"cifs", "nfs4", "smb3"})
        EXPECT_TRUE(platform::IsNetworkFileSystem(type)) << type;
    for (const char* type : {"ext4", "fuse.sshfs"})
        EXPECT_FALSE(platform::IsNetworkFileSystem(type)) << type;
}

// The POSIX drive services read the mount table through its own entry.
TEST(NetworkPaths, PosixDriveServicesFollowTheMountTable) {
    if (platform::kNativePathStyle != kPosix)
        GTEST_SKIP() << "the mount table stands for the drive table on POSIX only";
    platform::ScopedServices<platform::NetworkServices> guard(platform::Network());
    detail::ClearConnectionCache();
    platform::Network().mountTable = [] {
        return std::string("/dev/sda1 / ext4 rw 0 0\n"
                           "//fileserver/ART /mnt/art cifs rw 0 0\n"
                           "nas:/export/media /mnt/media nfs rw 0 0\n"
                           "//old/share /mnt/reused cifs rw 0 0\n"
                           "/dev/sdb1 /mnt/reused ext4 rw 0 0\n");
    };
    auto& network = platform::Network();
    std::vector<std::string> expected = {"/", "/mnt/art", "/mnt/media", "/mnt/reused"};
    EXPECT_EQ(network.logicalDrives(), expected);
    EXPECT_EQ(network.driveType("/mnt/art"), kRemoteDrive);
    EXPECT_EQ(network.driveType("/mnt/media"), kRemoteDrive);
    EXPECT_EQ(network.driveType("/mnt/reused"), 3); // the later mount hides the share
    EXPECT_EQ(network.driveType("/"), 3);
    EXPECT_EQ(network.driveType("/nowhere"), 1);
    std::string connection;
    EXPECT_TRUE(network.connectionName("/mnt/media", connection));
    EXPECT_EQ(connection, "//nas/export/media");
    EXPECT_FALSE(network.connectionName("/mnt/reused", connection));
    EXPECT_TRUE(network.sharedFolders().empty());

    EXPECT_STREQ(String("/mnt/art/models/arm.mdl").GetUNCFileName().Get(),
                 "//fileserver/ART/models/arm.mdl");
    EXPECT_STREQ(String("/mnt/reused/x").GetUNCFileName().Get(), "/mnt/reused/x");
    EXPECT_STREQ(String("MACSERVER/Volumes/art/x.tga").GetServerFileName().Get(),
                 "//fileserver/ART/x.tga");
    detail::ClearConnectionCache();
}

TEST(NetworkPaths, TheSystemAnswersForItsNames) {
    std::string computer, host;
    EXPECT_TRUE(platform::System().computerName(computer));
    EXPECT_FALSE(computer.empty());
    EXPECT_TRUE(platform::System().hostName(host));
    EXPECT_FALSE(host.empty());
    if (platform::kNativePathStyle == kWindows) {
        auto drives = platform::Network().logicalDrives();
        ASSERT_FALSE(drives.empty());
        EXPECT_NE(std::find(drives.begin(), drives.end(), "C:\\"), drives.end());
        EXPECT_EQ(platform::Network().driveType("C:\\"), 3);
        std::string connection;
        EXPECT_FALSE(platform::Network().connectionName("C:", connection)); // a local drive
        for (const platform::SharedFolder& share : platform::Network().sharedFolders()) {
            EXPECT_FALSE(share.name.empty());
            EXPECT_FALSE(share.path.empty());
        }
        EXPECT_TRUE(platform::Network().mountTable().empty());
    } else {
        EXPECT_FALSE(platform::ParseMountTable(platform::Network().mountTable()).empty());
    }
}

} // namespace
