// HiveProcessTests_posix.cpp - the Linux settings file under real processes: two writers at
// once, writers killed in the middle of a write, configuration folders that are missing or
// cannot be written, and files damaged by hand.
//
// A child that must not be able to write drops root's rights first (the tests may run as
// root, for whom file modes do not count).

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/settings/LocalRegistry.h"
#include "fileio/settings/RegistryProfile.h"
#include "fileio/settings/RegistrySettings.h"
#include "fileio/settings/SettingsLocations.h"
#include "platform/HiveFile.h"
#include "platform/Platform.h"
#include "settings/TestStore.h"
#include "support/ChildProcess_posix.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace fileio::platform;
using namespace fileio::test;

constexpr uid_t kNobody = 65534;

/// In a child: gives up root's rights, so that file modes apply.
void BecomeUnprivileged() {
    if (::geteuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0))
        ::_exit(99);
}

std::string Entry(int i) {
    return "Entry " + std::to_string(i);
}

class HiveProcessTest : public ::testing::Test {
protected:
    void SetUp() override { SetLocalRegistryProfile("Tests"); }
    void TearDown() override { FreeLocalRegistryProfile(); }

    /// The file as a document, with a check that nothing in it is damaged.
    HiveDocument Parsed() const {
        HiveDocument document(store.ReadHive());
        EXPECT_TRUE(document.Damage().empty()) << store.ReadHive();
        return document;
    }

    TestStore store;
};

// Two processes each write 500 different entries into one section; the second starts
// long before the first is done. Every change re-reads the file under the lock, so none
// of the 1,000 is lost.
TEST_F(HiveProcessTest, TwoProcessesWritingAtOnceLoseNothing) {
    constexpr int kPerProcess = 500;
    pid_t writers[2];
    for (int w = 0; w < 2; ++w) {
        writers[w] = StartChild([w] {
            int failures = 0;
            for (int i = 0; i < kPerProcess; ++i) {
                const int n = w * kPerProcess + i;
                failures += SetLocalRegistryValue("Race", String(Entry(n).c_str()), n * 7) != 1;
            }
            return failures == 0 ? 0 : 1;
        });
    }
    for (pid_t writer : writers) {
        const int status = Wait(writer);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0) << "a write failed";
    }
    const HiveDocument document = Parsed();
    int found = 0;
    for (int n = 0; n < 2 * kPerProcess; ++n) {
        std::string value;
        if (document.Find("SOFTWARE\\Varn, Inc.\\Tests\\Race", Entry(n), value) &&
            value == std::to_string(n * 7))
            ++found;
    }
    EXPECT_EQ(found, 2 * kPerProcess);
    for (const auto& entry : fs::directory_iterator(store.Folder())) // each renamed over the file
        EXPECT_EQ(entry.path().filename().string().find(".vrn"), std::string::npos);
}

/// The real file services, for the stalling replacements below to call.
FileServices& RealFiles() {
    static FileServices real = Files();
    return real;
}

bool WriteHalfThenDie(FileHandle file, const void* data, std::size_t size) {
    RealFiles().writeFile(file, data, size / 2);
    ::raise(SIGKILL);
    return false;
}

bool FlushThenDie(FileHandle file) {
    RealFiles().flushFile(file);
    ::raise(SIGKILL);
    return false;
}

bool ReplaceThenDie(const char* from, const char* to) {
    RealFiles().replaceFile(from, to);
    ::raise(SIGKILL);
    return false;
}

// A writer killed at each stage of a write leaves the old file (killed before the rename)
// or the new one (killed after it), never a mixture; the next writer is not hindered by
// the lock or the temporary file it left.
TEST_F(HiveProcessTest, AWriterKilledInAWriteLeavesTheOldOrTheNewFile) {
    for (int i = 0; i < 50; ++i) // "State" comes after them: a half-written file lacks it
        ASSERT_EQ(SetLocalRegistryValue("Kill", String(Entry(i).c_str()), i), 1);
    RealFiles();

    struct Stage {
        const char* name;
        void (*install)();
        const char* expected;
    };
    const Stage stages[] = {
        {"half of the temporary file written", [] { Files().writeFile = WriteHalfThenDie; }, "old"},
        {"temporary file flushed, not renamed", [] { Files().flushFile = FlushThenDie; }, "old"},
        {"renamed, lock not released", [] { Files().replaceFile = ReplaceThenDie; }, "new"},
    };
    for (const Stage& stage : stages) {
        SCOPED_TRACE(stage.name);
        ASSERT_EQ(SetLocalRegistryString("Kill", "State", "old"), 1);
        const int status = Wait(StartChild([&] {
            stage.install();
            SetLocalRegistryString("Kill", "State", "new");
            return 0; // not reached
        }));
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
        const HiveDocument document = Parsed();
        std::string value;
        ASSERT_TRUE(document.Find("SOFTWARE\\Varn, Inc.\\Tests\\Kill", "State", value));
        EXPECT_EQ(value, stage.expected);
    }
    EXPECT_EQ(SetLocalRegistryString("Kill", "After", "fine"), 1);
    EXPECT_EQ(GetLocalRegistryString("Kill", "After", "d"), String("fine"));
}

// Writers fail and readers find their defaults when the configuration folder is missing;
// nothing is created.
TEST_F(HiveProcessTest, AMissingConfigurationFolderGivesDefaultsAndFailedWrites) {
    const std::string missing = store.Folder() + "/no/such/folder";
    ::setenv("XDG_CONFIG_HOME", missing.c_str(), 1);
    EXPECT_EQ(SetLocalRegistryString("Sec", "E", "v"), 0);
    EXPECT_EQ(GetLocalRegistryString("Sec", "E", "default"), String("default"));
    ResetLocalRegistry("Tests");
    EXPECT_FALSE(fs::exists(store.Folder() + "/no"));

    const char* savedHome = std::getenv("HOME");
    const std::string home = savedHome != nullptr ? savedHome : "";
    // A relative XDG_CONFIG_HOME is not a configuration folder: it falls back to the home.
    ::setenv("XDG_CONFIG_HOME", "relative/folder", 1);
    ::setenv("HOME", store.Folder().c_str(), 1);
    fs::create_directory(store.Folder() + "/.config");
    EXPECT_EQ(SetLocalRegistryString("Sec", "E", "home"), 1);
    EXPECT_TRUE(fs::exists(store.Folder() + "/.config/varn-settings.hive"));
    EXPECT_FALSE(fs::exists("relative"));
    ::setenv("HOME", home.c_str(), 1);
}

// A configuration folder the process cannot write, then a file it cannot read: what can
// be read is read, every writer returns 0, and the file is never replaced.
TEST_F(HiveProcessTest, AFileThatCannotBeWrittenOrReadIsNeverReplaced) {
    ASSERT_EQ(SetLocalRegistryString("Sec", "Kept", "value"), 1);
    const std::string before = store.ReadHive();
    fs::permissions(store.HivePath(), fs::perms(0644));
    fs::permissions(store.Folder(), fs::perms(0555));
    const int readOnlyFailures = RunChild([] {
        BecomeUnprivileged();
        int failed = SetLocalRegistryString("Sec", "Kept", "changed") == 0 ? 0 : 1;
        ResetLocalRegistry("Tests");
        failed |= GetLocalRegistryString("Sec", "Kept", "d") == String("value") ? 0 : 2;
        RegistryProfile profile{String("App")};
        SetApplicationProfile(&profile);
        failed |= SetRegistryBOOL("Sec", "B", true) == false ? 0 : 8;
        SetApplicationProfile(nullptr);
        return failed;
    });
    fs::permissions(store.Folder(), fs::perms(0777));
    fs::permissions(store.HivePath() + ".lock", fs::perms(0666));
    fs::permissions(store.HivePath(), fs::perms::none);
    const int unreadableFailures = RunChild([] {
        BecomeUnprivileged();
        int failed = GetLocalRegistryString("Sec", "Kept", "d") == String("d") ? 0 : 1;
        failed |= SetLocalRegistryString("Sec", "Other", "x") == 0 ? 0 : 2;
        return failed;
    });
    fs::permissions(store.HivePath(), fs::perms(0600));
    fs::permissions(store.Folder(), fs::perms::owner_all);
    EXPECT_EQ(readOnlyFailures, 0);
    EXPECT_EQ(unreadableFailures, 0);
    EXPECT_EQ(store.ReadHive(), before);
}

// A file damaged by hand: the readable values still read, the damage goes to the log once,
// and a write keeps the damaged lines byte for byte.
TEST_F(HiveProcessTest, ADamagedFileIsReadReportedOnceAndKept) {
    const std::string damaged = "[SOFTWARE\\Varn, Inc.\\Tests\\Sec]\n"
                                "Good=1\n"
                                "garbage without equals\n"
                                "Bad=%G0\n"
                                "[unterminated\n";
    store.WriteHive(damaged);
    RecordingLog log;
    ScopedLogHandler installed(&log);

    // Any access reports the damage, a removal as well as a read.
    RegistryProfile profile{String("Tests")};
    EXPECT_EQ(profile.WriteProfileString("Sec", "Missing", nullptr), 0);
    ASSERT_EQ(log.lines.size(), 3u);
    EXPECT_EQ(GetLocalRegistryValue("Sec", "Good", 0), 1);
    EXPECT_EQ(GetLocalRegistryString("Sec", "Bad", "d"), String("d"));
    const std::string prefix = "Settings file " + store.HivePath() + ", line ";
    EXPECT_EQ(log.lines[0], prefix + "3: unreadable line skipped and kept as it is: "
                                     "garbage without equals");
    EXPECT_EQ(log.lines[1], prefix + "4: unreadable line skipped and kept as it is: Bad=%25G0");
    EXPECT_EQ(log.lines[2], prefix + "5: unreadable line skipped and kept as it is: "
                                     "[unterminated");

    EXPECT_EQ(SetLocalRegistryString("Sec", "Good", "2"), 1);
    EXPECT_EQ(log.lines.size(), 3u) << "the same damage is reported once";
    std::string expected = damaged;
    expected.replace(expected.find("Good=1"), 6, "Good=2");
    EXPECT_EQ(store.ReadHive(), expected);
}

} // namespace
