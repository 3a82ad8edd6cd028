// The atomic save on Windows while another program holds the target open: a clean failure
// after the retries, the old file intact.

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/stream/FileStream.h"
#include "support/RecordingMessages.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <windows.h>

namespace {

TEST(FileStreamWindows, ATargetHeldOpenFailsCleanlyAndStaysAsItWas) {
    fileio::test::TempFolder folder("fileio-held");
    const std::string target = folder.WriteFile("robot.prj", "old");
    fileio::test::RecordingMessages messages;
    ScopedMessageHandler installed(&messages);
    // Another program reads the file and lets nobody delete or replace it meanwhile.
    HANDLE held = CreateFileA(target.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    FileStream out;
    ASSERT_TRUE(out.Open(String(target), FM_STORING));
    out.Write("new", 3);
    out.Close();
    CloseHandle(held);
    EXPECT_TRUE(out.IsFailed());
    EXPECT_EQ(folder.ReadFile("robot.prj"), "old");
    EXPECT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1)
        << "the temporary file is removed";
}

} // namespace
