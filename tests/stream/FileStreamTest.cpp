// The file stream: against the memory stream, its atomic save under faults, its companions.

#include "StreamProject.h"

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/path/VersionControl.h"
#include "fileio/stream/FileStream.h"
#include "platform/Platform.h"
#include "support/RecordingMessages.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <tuple>

using namespace streamtest;
namespace platform = fileio::platform;

namespace {

class FileStreamTest : public ::testing::Test {
protected:
    /// How many entries the folder holds: 1 when no temporary file was left beside the target.
    std::ptrdiff_t Entries() const {
        return std::distance(std::filesystem::directory_iterator(m_folder.Path()), {});
    }
    fileio::test::TempFolder m_folder{"fileio-file-stream"};
    fileio::test::RecordingMessages m_messages;
    ScopedMessageHandler m_installed{&m_messages};
};

TEST_F(FileStreamTest, SavesAndLoadsTheBytesTheMemoryStreamHolds) {
    // 1000 meshes are larger than the stream's buffer, so tokens cross its edge.
    for (bool binary : {false, true}) {
        for (int meshes : {0, 1000}) {
            SCOPED_TRACE(std::string(binary ? "binary " : "text ") + std::to_string(meshes));
            const String path(m_folder.Join("project.prj"));
            FileStream out;
            ASSERT_TRUE(out.Open(path, binary ? FM_VARN | FM_BINARY : FM_VARN));
            EXPECT_NE(out.GetTemporaryName().View(), path.View());
            WriteProject(out, meshes);
            out.Close();
            EXPECT_FALSE(out.IsFailed());
            const std::string expected = ProjectBytes(binary, meshes);
            ASSERT_EQ(m_folder.ReadFile("project.prj"), expected);
            EXPECT_EQ(Entries(), 1);

            FileStream in;
            ASSERT_TRUE(in.Open(path, FM_LOADING | FM_VARN));
            MemoryStream memory;
            memory.Open(expected.data(), expected.size(), FM_LOADING | FM_VARN);
            const Outcome read = ReadProject(in, expected.size());
            EXPECT_EQ(read, ReadProject(memory, expected.size()));
            EXPECT_EQ(read.labels, (2 + 2 * meshes) * static_cast<int>(ProjectFields().size()));
            EXPECT_TRUE(read.atEnd && !read.failed);
        }
    }
}

TEST_F(FileStreamTest, SeeksAndSkipsAcrossTheBuffer) {
    const std::string text = ProjectBytes(false, 1000);
    const String path(m_folder.WriteFile("big.prj", text));
    FileStream in;
    ASSERT_TRUE(in.Open(path, FM_LOADING | FM_VARN | FM_DONTPROGRESS));
    Header model;
    in >> model;
    ASSERT_TRUE(in.SkipHeader(model));
    EXPECT_TRUE(in.VirtualEof());
    in.Seek(10, SM_END);
    char tail[10];
    EXPECT_EQ(in.ReadC(tail, sizeof tail), 10u);
    EXPECT_EQ(std::string(tail, 10), text.substr(text.size() - 10));
    in.Seek(0, SM_BEGIN);
    String line;
    ASSERT_TRUE(in.ReadLine(line));
    EXPECT_EQ(line.View(), "<MODELFILE>\n");
    // Writing to a loading stream fails; reading goes on.
    in.Write("x", 1);
    EXPECT_TRUE(in.IsFailed());
}

/// The file services with one step that fails on its K-th call.
class FailingFiles {
public:
    enum class Step { Create, Write, Flush, Close, Rename };

    FailingFiles(Step step, int failOn) : m_guard(platform::Files()), m_system(platform::System()) {
        s_script = {step, failOn, 0, platform::Files(), {}};
        platform::Files().createBeside = [](const char* target, std::string& temporary) {
            return Fails(Step::Create) ? platform::kNoFile
                                       : s_script.real.createBeside(target, temporary);
        };
        platform::Files().writeFile = [](platform::FileHandle file, const void* data,
                                         std::size_t size) {
            return !Fails(Step::Write) && s_script.real.writeFile(file, data, size);
        };
        platform::Files().flushFile = [](platform::FileHandle file) {
            return !Fails(Step::Flush) && s_script.real.flushFile(file);
        };
        platform::Files().closeFile = [](platform::FileHandle file) {
            const bool closed = s_script.real.closeFile(file);
            return !Fails(Step::Close) && closed;
        };
        platform::Files().replaceFile = [](const char* from, const char* to) {
            return !Fails(Step::Rename) && s_script.real.replaceFile(from, to);
        };
        platform::System().lastErrorText = [] { return s_script.reason; };
    }
    static int Calls() { return s_script.calls; }

private:
    struct Script {
        Step step;
        int failOn;
        int calls;
        platform::FileServices real;
        std::string reason;
    };
    static inline Script s_script;
    static bool Fails(Step step) {
        if (step != s_script.step || ++s_script.calls != s_script.failOn)
            return false;
        s_script.reason = "scripted failure"; // what the system says only once the step failed
        return true;
    }

    platform::ScopedServices<platform::FileServices> m_guard;
    platform::ScopedServices<platform::SystemServices> m_system;
};

TEST_F(FileStreamTest, AFailedSaveLeavesTheOldFileAndNoTemporaryFile) {
    using Step = FailingFiles::Step;
    const std::string old = ProjectBytes(true, 2);
    for (Step step : {Step::Create, Step::Write, Step::Flush, Step::Close, Step::Rename}) {
        for (int k = 1;; ++k) {
            SCOPED_TRACE("step " + std::to_string(static_cast<int>(step)) + ", call " +
                         std::to_string(k));
            const String path(m_folder.WriteFile("robot.prj", old));
            m_messages.messages.clear();
            bool failed;
            int calls;
            {
                FailingFiles failing(step, k);
                FileStream out;
                if (out.Open(path, FM_VARN | FM_BINARY))
                    WriteProject(out, 700); // more than one buffer's worth of writes
                out.Close();
                failed = out.IsFailed();
                calls = FailingFiles::Calls();
            }
            if (calls < k) { // the save made fewer calls: it succeeded, and the sweep ends
                EXPECT_FALSE(failed);
                EXPECT_EQ(m_folder.ReadFile("robot.prj"), ProjectBytes(true, 700));
                break;
            }
            EXPECT_TRUE(failed);
            EXPECT_EQ(m_folder.ReadFile("robot.prj"), old);
            EXPECT_EQ(Entries(), 1);
            ASSERT_EQ(m_messages.messages.size(), 1u);
            EXPECT_EQ(m_messages.messages[0].text, std::string(path.View()) + ": scripted failure");
            ASSERT_LT(k, 1000) << "the sweep does not end";
        }
    }
}

TEST_F(FileStreamTest, AReadOnlyTargetFailsBeforeAnyTemporaryFileIsMade) {
    const std::string target = m_folder.WriteFile("locked.prj", "old");
    std::filesystem::permissions(target, std::filesystem::perms::owner_read);
    FileStream out;
    EXPECT_FALSE(out.Open(String(target), FM_VARN));
    ASSERT_EQ(m_messages.messages.size(), 1u);
    EXPECT_EQ(m_messages.messages[0].text,
              "The file " + target + " is read-only and cannot be saved.");
    EXPECT_EQ(Entries(), 1);
    EXPECT_EQ(m_folder.ReadFile("locked.prj"), "old");
}

TEST_F(FileStreamTest, AppendingCopiesTheOldContentsFirst) {
    const std::tuple<const char*, std::string, FileMode, std::string> rows[] = {
        {"text", "<MODELFILE>\n", FM_VARN | FM_APPEND, "<MODELFILE>\nmore"},
        // An appended binary file keeps its marker; a new one gets its own.
        {"binary", "B1234", FM_VARN | FM_BINARY | FM_APPEND, "B1234more"},
        {"binary, new", "", FM_VARN | FM_BINARY | FM_APPEND, "Bmore"},
    };
    for (const auto& [name, old, mode, expected] : rows) {
        SCOPED_TRACE(name);
        const String path(m_folder.Join("log.prj"));
        std::filesystem::remove(path.Get());
        if (!old.empty())
            m_folder.WriteFile("log.prj", old);
        FileStream out;
        ASSERT_TRUE(out.Open(path, mode));
        out.Write("more", 4);
        out.Close();
        EXPECT_FALSE(out.IsFailed());
        EXPECT_EQ(m_folder.ReadFile("log.prj"), expected);
    }
}

// Both streams open the side information of a file in a working copy (a folder above it holds
// ".svn") beside it, once, without asking.
TEST_F(FileStreamTest, AVersionedFileKeepsItsSideInformationBesideIt) {
    m_folder.MakeFolder("work/.svn");
    const String model(m_folder.WriteFile("work/models/robot.mdl", "<MODELFILE>\n"));
    m_folder.WriteFile("work/models/robot.mdl.vinfo", "Name=info\n");
    const String orphan(m_folder.WriteFile("work/orphan.mdl", "<MODELFILE>\n"));
    const String plain(m_folder.WriteFile("plain.mdl", "<MODELFILE>\n"));
    EXPECT_FALSE(SVNIsVersioned(String()));
    auto check = [&](auto& stream, auto& other) {
        ASSERT_TRUE(other.Open(plain, FM_LOADING | FM_VARN));
        EXPECT_EQ(other.GetInfoStream(), &other);
        ASSERT_TRUE(other.Open(orphan, FM_LOADING | FM_VARN));
        EXPECT_EQ(other.GetInfoStream(), nullptr);
        ASSERT_TRUE(stream.Open(model, FM_LOADING | FM_VARN));
        VarnStream* info = stream.GetInfoStream();
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(info->GetFileName().View(), std::string(model.View()) + ".vinfo");
        EXPECT_TRUE(info->IsDontAsk());
        Label label;
        String value;
        *info >> label >> value;
        EXPECT_EQ(value.View(), "info");
        EXPECT_EQ(stream.GetInfoStream(), info);
    };
    FileStream file, otherFile;
    MemoryStream memory, otherMemory;
    check(file, otherFile);
    check(memory, otherMemory);
    EXPECT_EQ(memory.GetInfoStream()->GetVersion(), 13.0f); // the memory stream's own version
    file.Close();
    EXPECT_EQ(file.GetInfoStream(), nullptr); // not open

    // Saving writes the companion through its own atomic save.
    FileStream out;
    ASSERT_TRUE(out.Open(model, FM_VARN));
    ASSERT_NE(out.GetInfoStream(), nullptr);
    *out.GetInfoStream() << Label("Name") << String("saved") << nl;
    out.Close();
    EXPECT_EQ(m_folder.ReadFile("work/models/robot.mdl.vinfo"), "Name=saved\n");
}

TEST_F(FileStreamTest, FileTypesByTheFirstToken) {
    const int model = GetHeaderIDFromText("MODELFILE");
    const std::tuple<const char*, std::string, bool, int> rows[] = {
        {"angle.mdl", "<MODELFILE>\nName=x\n", true, model},
        {"end.mdl", "</MODELFILE>\n", true, model | fileio::kEndHeaderBit},
        {"square.mdl", "[MODELFILE]\r\n", true, model},
        {"binary.mdl", "B" + Raw({0x50, 0x01, 0x00, 0x80}), true, model},
        {"label.mdl", "Name=x\n", false, -2},
        {"empty.mdl", "", false, -2},
        {"unknown.mdl", "<NOSUCHWORD>\n", true, -1},
    };
    for (const auto& [name, bytes, isSuiteFile, firstHeader] : rows) {
        SCOPED_TRACE(name);
        const String path(m_folder.WriteFile(name, bytes));
        EXPECT_EQ(IsFileOfTypeVarn(path), isSuiteFile);
        EXPECT_EQ(IsFileOfType(path, model), firstHeader == model);
        if (isSuiteFile) {
            EXPECT_TRUE(IsFileOfType(path, firstHeader));
        }
    }
}

} // namespace
