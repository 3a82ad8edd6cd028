// The atomic save under a writer killed at random moments: the target is always the whole
// old or the whole new file.

#include "fileio/stream/FileStream.h"
#include "support/ChildProcess_posix.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <signal.h>
#include <string>
#include <thread>

namespace {

using fileio::test::StartChild;
using fileio::test::Wait;

/// The two contents the writer saves in turn: a short one and one of several buffers.
std::string Content(int which) {
    return which == 0 ? std::string(1000, 'a') : std::string(700 * 1024, 'b');
}

TEST(FileStreamProcess, AWriterKilledAtRandomMomentsLeavesTheOldOrTheNewFile) {
    fileio::test::TempFolder folder("fileio-kill");
    const std::string target = folder.WriteFile("robot.prj", Content(0));
    std::mt19937 random(20261125);
    std::uniform_int_distribution<int> delayMicroseconds(0, 30000);
    constexpr int kRounds = 30;
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(round);
        const pid_t writer = StartChild([&] {
            for (int which = 1;; which ^= 1) {
                FileStream out;
                if (!out.Open(String(target), FM_STORING))
                    return 1;
                const std::string bytes = Content(which);
                out.Write(bytes.data(), bytes.size());
                out.Close();
            }
            return 0;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
        ::kill(writer, SIGKILL);
        const int status = Wait(writer);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself";
        const std::string now = folder.ReadFile("robot.prj");
        ASSERT_TRUE(now == Content(0) || now == Content(1)) << now.size() << " bytes";
    }
}

} // namespace
