// FileServicesTest.cpp - the whole-file services the settings file is built on: durable
// writes, atomic replacement, removal, and the three outcomes of reading a whole file.

#include "platform/Platform.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using fileio::platform::Files;
using fileio::platform::ReadResult;

class FileServicesTest : public ::testing::Test {
protected:
    std::string Path(const char* name) const { return m_folder.Join(name); }

    static std::string Content(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << in.rdbuf();
        return bytes.str();
    }

    fileio::test::TempFolder m_folder{"fileio-files"};
};

TEST_F(FileServicesTest, WritesAndReadsEveryByte) {
    std::string bytes;
    for (int i = 0; i < 70000; ++i) // more than one read buffer
        bytes += static_cast<char>(i * 31 % 256);
    const std::string path = Path("data.bin");
    ASSERT_TRUE(Files().writeFileDurably(path.c_str(), bytes.data(), bytes.size()));
    EXPECT_EQ(Content(path), bytes);
    std::string read = "previous content is replaced";
    EXPECT_EQ(Files().readWholeFile(path.c_str(), read), ReadResult::Read);
    EXPECT_EQ(read, bytes);

    // Writing again truncates: a shorter text leaves nothing of the longer one.
    ASSERT_TRUE(Files().writeFileDurably(path.c_str(), "ab\r\n", 4));
    EXPECT_EQ(Files().readWholeFile(path.c_str(), read), ReadResult::Read);
    EXPECT_EQ(read, "ab\r\n"); // bytes as they are, no line-end translation
    ASSERT_TRUE(Files().writeFileDurably(path.c_str(), "", 0));
    EXPECT_EQ(Files().readWholeFile(path.c_str(), read), ReadResult::Read);
    EXPECT_EQ(read, "");
}

TEST_F(FileServicesTest, TellsAMissingFileFromOneThatCannotBeRead) {
    std::string read = "x";
    EXPECT_EQ(Files().readWholeFile(Path("missing").c_str(), read), ReadResult::Missing);
    EXPECT_EQ(read, "");
    EXPECT_EQ(Files().readWholeFile(Path("no/such/folder/file").c_str(), read),
              ReadResult::Missing);
    // A folder is there but is no file to read.
    EXPECT_EQ(Files().readWholeFile(m_folder.Path().c_str(), read), ReadResult::Failed);
    EXPECT_FALSE(Files().writeFileDurably(Path("no/such/folder/file").c_str(), "x", 1));
}

TEST_F(FileServicesTest, ReplacesAFileWhole) {
    const std::string target = Path("target");
    const std::string temporary = Path("target.tmp");
    ASSERT_TRUE(Files().writeFileDurably(target.c_str(), "old", 3));
    ASSERT_TRUE(Files().writeFileDurably(temporary.c_str(), "new text", 8));
    ASSERT_TRUE(Files().replaceFile(temporary.c_str(), target.c_str()));
    EXPECT_EQ(Content(target), "new text");
    EXPECT_FALSE(fs::exists(temporary));
    // Replacing onto a name that does not exist yet creates it.
    ASSERT_TRUE(Files().writeFileDurably(temporary.c_str(), "first", 5));
    ASSERT_TRUE(Files().replaceFile(temporary.c_str(), Path("fresh").c_str()));
    EXPECT_EQ(Content(Path("fresh")), "first");
    EXPECT_FALSE(Files().replaceFile(Path("missing").c_str(), target.c_str()));
    EXPECT_EQ(Content(target), "new text");
}

TEST_F(FileServicesTest, RemovesFilesAndTakesLocks) {
    const std::string path = Path("gone");
    ASSERT_TRUE(Files().writeFileDurably(path.c_str(), "x", 1));
    EXPECT_TRUE(Files().removeFile(path.c_str()));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(Files().removeFile(path.c_str()));

    const std::string lockPath = Path("a.lock");
    const auto lock = Files().lockFile(lockPath.c_str());
    ASSERT_NE(lock, fileio::platform::kNoFileLock);
    EXPECT_TRUE(fs::exists(lockPath));
    Files().unlockFile(lock);
    // Released: it can be taken again at once.
    const auto again = Files().lockFile(lockPath.c_str());
    ASSERT_NE(again, fileio::platform::kNoFileLock);
    Files().unlockFile(again);
    Files().unlockFile(fileio::platform::kNoFileLock); // ignored
    EXPECT_EQ(Files().lockFile(Path("no/such/folder/a.lock").c_str()),
              fileio::platform::kNoFileLock);
}

TEST(SystemServicesTest, NamesTheApplicationAndItsFolder) {
    const std::string folder = fileio::platform::System().applicationFolder();
    const std::string name = fileio::platform::System().applicationName();
    ASSERT_FALSE(folder.empty());
    EXPECT_TRUE(fs::is_directory(folder)) << folder;
    EXPECT_NE(folder.back(), fileio::platform::NativeSeparator());
    EXPECT_EQ(name, "fileio_platform_tests"); // this program, without a suffix
    EXPECT_TRUE(fs::exists(fs::path(folder) / name) ||
                fs::exists(fs::path(folder) / (name + ".exe")));
}

} // namespace
