// NetworkPathsTest.cpp - the network forms of paths with scripted drive tables, shares and
// mount tables, under both rules; the mount-table reader.

#include "PathTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace pathtest;
using fileio::platform::kRemoteDrive;
namespace detail = fileio::detail;

std::vector<ScriptedDrive> WindowsDrives() {
    return {
        {"C:\\", 3, ""},
        {"M:\\", kRemoteDrive, "\\\\macsrv\\ART"},
        {"N:\\", kRemoteDrive, "\\\\other\\ART"},
        {"P:\\", kRemoteDrive, "\\\\files\\Projects"},
        {"R:\\", kRemoteDrive, ""}, // remembered but not connected
        {"S:\\", kRemoteDrive, "\\\\noshare"},
    };
}

long CountQueries(std::string_view drive) {
    const auto& queries = ScriptedNetwork::Script().queries;
    return std::count(queries.begin(), queries.end(), drive);
}

TEST(NetworkPaths, MacintoshServerVolumesBecomeTheirShares) {
    ScriptedNetwork network(WindowsDrives());
    const std::string longRest(300, 'x');
    ExpectEach(
        [](const std::string& path) { return detail::GetServerFileName(path, kWindows); },
        {
            // The remote drives are walked from the last: N: comes before M:.
            {"//MACSERVER/Volumes/art/Maps/sky.tga", "\\\\other\\ART/Maps/sky.tga"},
            // Share names compare exactly: "PROJECTS" is not P:'s "Projects".
            {"MACSERVER/Volumes/Projects/a.mdl", "MACSERVER/Volumes/Projects/a.mdl"},
            {"MACSERVER/Volumes/art", "MACSERVER/Volumes/art"},         // no second "/"
            {"//macserver/Volumes/art/x", "//macserver/Volumes/art/x"}, // case-sensitive
            {"MACSERVER/Volumes/art/" + longRest, ("\\\\other\\ART/" + longRest).substr(0, 259)},
        });
    EXPECT_EQ(detail::UniversalToNative("//MACSERVER/Volumes/art/Maps/sky.tga", kWindows),
              "\\\\other\\ART\\Maps\\sky.tga");
    // A local drive is never asked for a connection.
    EXPECT_EQ(CountQueries("C:"), 0);
}

TEST(NetworkPaths, MappedDrivesBecomeTheirConnectionsThroughACache) {
    ScriptedNetwork network(WindowsDrives());
    ExpectEach(Reporting(detail::MappedDriveToUNC, kWindows),
               {
                   {"p:\\", "\\\\files\\Projects\\"},
                   {"P:/Robot", "<none>"}, // only letter, ":", "\"
                   {"C:\\local", "<none>"},
                   {"R:\\x", "<none>"},
                   {"P:\\" + std::string(300, 'y'),
                    ("\\\\files\\Projects\\" + std::string(300, 'y')).substr(0, 259)},
               });
    EXPECT_EQ(CountQueries("P:"), 1); // asked once, then taken from the cache
    detail::ClearConnectionCache();
    EXPECT_EQ(Reporting(detail::MappedDriveToUNC, kWindows)("P:\\x"), "\\\\files\\Projects\\x");
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
               });
    EXPECT_EQ(Reporting(detail::LocalPathToShare, kPosix)("/srv/pub/a/b"), "//WORKSTATION/pub/a/b");
}

TEST(NetworkPaths, NetworkMountsPlayTheMappedDrivesOnPosix) {
    ScriptedNetwork network({
        {"/", 3, ""},
        {"/mnt/art", kRemoteDrive, "//fileserver/ART"},
        {"/mnt/art/inner", kRemoteDrive, "//other/IN"},
        {"/mnt/odd", kRemoteDrive, "//srv/a\\b"},
        {"/media/usb", 3, ""},
        {"/mnt/trail/", kRemoteDrive, "//srv/T"}, // written with a trailing separator
    });
    ExpectEach([](const std::string& path) { return detail::GetUNCFileName(path, kPosix); },
               {
                   {"/mnt/art/inner/x.tga", "//other/IN/x.tga"}, // the deepest mount holds it
                   {"/mnt/artist/x", "/mnt/artist/x"},
                   {"/media/usb/x", "/media/usb/x"}, // not a network mount
                   {"/mnt/odd/x", "/mnt/odd/x"},     // a result with "\" is refused
                   {"/mnt/trail/x", "//srv/T/x"},
                   {"D:/x", "D:/x"},                   // drive letters stay as written
                   {"//srv/share/x", "//srv/share/x"}, // already a network name
               });
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
    const std::string text = "//fileserver/ART /mnt/art cifs rw,relatime 0 0\n"
                             "/dev/sda1 /mnt/with\\040space ext4 rw 0 0\n"
                             "short line\n"
                             "//srv/back\\134slash\t/mnt/b  cifs rw 0 0\n"
                             "tail\\04 /x\\ y";
    auto entries = platform::ParseMountTable(text);
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[0].source + " " + entries[0].mountPoint + " " + entries[0].type,
              "//fileserver/ART /mnt/art cifs");
    EXPECT_EQ(entries[1].mountPoint, "/mnt/with space");
    EXPECT_EQ(entries[2].source + " " + entries[2].mountPoint, "//srv/back\\slash /mnt/b");
    // An incomplete escape stays as it is.
    EXPECT_EQ(entries[3].source + " " + entries[3].mountPoint, "tail\\04 /x\\");
}

TEST(NetworkPaths, ConnectionNamesOfMountSources) {
    ExpectEach(platform::ConnectionOfMountSource, {
                                                      {"\\\\server\\share", "//server/share"},
                                                      {"//server/share/", "//server/share"},
                                                      {"nas:/", "//nas"},
                                                      {"[fe80::1]:/export", "//[fe80::1]/export"},
                                                      {"/dev/sda1", ""},
                                                      {":/x", ""},
                                                  });
    EXPECT_TRUE(platform::IsNetworkFileSystem("nfs4"));
    EXPECT_FALSE(platform::IsNetworkFileSystem("fuse.sshfs"));
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
    EXPECT_EQ(network.driveType("/mnt/reused"), 3); // the later mount hides the share
    EXPECT_EQ(network.driveType("/nowhere"), 1);
    std::string connection;
    EXPECT_TRUE(network.connectionName("/mnt/media", connection));
    EXPECT_EQ(connection, "//nas/export/media");

    EXPECT_STREQ(String("/mnt/reused/x").GetUNCFileName().Get(), "/mnt/reused/x");
    EXPECT_STREQ(String("MACSERVER/Volumes/art/x.tga").GetServerFileName().Get(),
                 "//fileserver/ART/x.tga");
    detail::ClearConnectionCache();
}

} // namespace
