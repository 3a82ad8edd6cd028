// FileServicesTest.cpp - the file services the streams and the settings file are built on:
// the atomic save, open files, access, removal, locks and the outcomes of reading a file.

#include "platform/Platform.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using fileio::platform::FileAccess;
using fileio::platform::Files;
using fileio::platform::kNoFile;
using fileio::platform::ReadResult;
using fileio::platform::SaveFileAtomically;

class FileServicesTest : public ::testing::Test {
protected:
    std::string Path(const char* name) const { return m_folder.Join(name); }

    /// The names in the folder, sorted.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.Path()))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    fileio::test::TempFolder m_folder{"fileio-files"};
};

TEST_F(FileServicesTest, AtomicSavesWriteEveryByteAndLeaveNoTemporaryFile) {
    std::string bytes;
    for (int i = 0; i < 70000; ++i) // more than one read buffer
        bytes += static_cast<char>(i * 31 % 256);
    const std::string path = Path("data.bin");
    std::string error;
    const std::string saves[] = {bytes, "ab\r\n", ""};
    for (const std::string& save : saves) {
        SCOPED_TRACE(save.size());
        ASSERT_TRUE(SaveFileAtomically(path.c_str(), save.data(), save.size(), error)) << error;
        std::string read = "previous content is replaced";
        EXPECT_EQ(Files().readWholeFile(path.c_str(), read), ReadResult::Read);
        EXPECT_EQ(read, save); // whole, shorter ones too, with no line-end translation
        EXPECT_EQ(Names(), std::vector<std::string>{"data.bin"});
    }
}

TEST_F(FileServicesTest, AFailedSaveLeavesNothingAndSaysWhy) {
    std::string read = "x";
    EXPECT_EQ(Files().readWholeFile(Path("missing").c_str(), read), ReadResult::Missing);
    EXPECT_EQ(read, "");
    // A folder is there but is no file to read.
    EXPECT_EQ(Files().readWholeFile(m_folder.Path().c_str(), read), ReadResult::Failed);
    std::string error;
    EXPECT_FALSE(SaveFileAtomically(Path("no/such/folder/file").c_str(), "x", 1, error));
    EXPECT_FALSE(error.empty());

    // Abandoned: the target is as it was and the temporary file is gone.
    ASSERT_TRUE(SaveFileAtomically(Path("target").c_str(), "old", 3, error));
    {
        fileio::platform::AtomicSave save;
        ASSERT_TRUE(save.Begin(Path("target").c_str(), error));
        EXPECT_EQ(fs::path(save.TemporaryPath()).parent_path(), fs::path(m_folder.Path()));
        EXPECT_EQ(fs::path(save.TemporaryPath()).filename().string().rfind("target.vrn", 0), 0u);
        ASSERT_TRUE(Files().writeFile(save.File(), "new", 3));
    }
    EXPECT_EQ(m_folder.ReadFile("target"), "old");
    EXPECT_EQ(Names(), std::vector<std::string>{"target"});
}

TEST_F(FileServicesTest, ASymbolicLinkStaysAndItsTargetIsReplaced) {
    const std::string target = m_folder.WriteFile("real/model.mdl", "old");
    const std::string link = Path("link.mdl");
    std::error_code cannot;
    fs::create_symlink(target, link, cannot);
    if (cannot)
        GTEST_SKIP() << "symbolic links cannot be made here: " << cannot.message();
    std::string error;
    ASSERT_TRUE(SaveFileAtomically(link.c_str(), "new", 3, error)) << error;
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(m_folder.ReadFile("real/model.mdl"), "new");
    EXPECT_EQ(Names(), (std::vector<std::string>{"link.mdl", "real"}));
}

TEST_F(FileServicesTest, OpenFilesReadSeekAndTellTheirAccess) {
    const std::string path = m_folder.WriteFile("data", "0123456789");
    const fileio::platform::FileHandle file = Files().openForReading(path.c_str());
    ASSERT_NE(file, kNoFile);
    EXPECT_EQ(Files().fileLength(file), 10);
    char buffer[8] = {};
    EXPECT_EQ(Files().readFile(file, buffer, 4), 4);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    ASSERT_TRUE(Files().seekFile(file, 8));
    EXPECT_EQ(Files().readFile(file, buffer, 8), 2);
    EXPECT_EQ(Files().readFile(file, buffer, 8), 0);
    EXPECT_TRUE(Files().closeFile(file));
    EXPECT_EQ(Files().openForReading(Path("missing").c_str()), kNoFile);

    const std::string readOnly = m_folder.WriteFile("read-only", "x");
    fs::permissions(readOnly,
                    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    const std::pair<std::string, FileAccess> rows[] = {{path, FileAccess::Writable},
                                                       {readOnly, FileAccess::ReadOnly},
                                                       {m_folder.Path(), FileAccess::ReadOnly},
                                                       {Path("missing"), FileAccess::Missing}};
    for (const auto& [target, access] : rows)
        EXPECT_EQ(Files().access(target.c_str()), access) << target;
}

TEST_F(FileServicesTest, RemovesFilesAndTakesLocks) {
    const std::string path = m_folder.WriteFile("gone", "x");
    EXPECT_TRUE(Files().removeFile(path.c_str()));
    EXPECT_FALSE(Files().removeFile(path.c_str()));

    const std::string lockPath = Path("a.lock");
    const auto lock = Files().lockFile(lockPath.c_str());
    ASSERT_NE(lock, fileio::platform::kNoFileLock);
    Files().unlockFile(lock);
    // Released: it can be taken again at once.
    const auto again = Files().lockFile(lockPath.c_str());
    ASSERT_NE(again, fileio::platform::kNoFileLock);
    Files().unlockFile(again);
    EXPECT_EQ(Files().lockFile(Path("no/such/folder/a.lock").c_str()),
              fileio::platform::kNoFileLock);
}

TEST(SystemServicesTest, NamesTheApplicationAndItsFolder) {
    const std::string folder = fileio::platform::System().applicationFolder();
    const std::string name = fileio::platform::System().applicationName();
    ASSERT_FALSE(folder.empty());
    EXPECT_NE(folder.back(), fileio::platform::NativeSeparator());
    EXPECT_EQ(name, "fileio_platform_tests"); // this program, without a suffix
    EXPECT_TRUE(fs::exists(fs::path(folder) / name) ||
                fs::exists(fs::path(folder) / (name + ".exe")));
}

} // namespace
