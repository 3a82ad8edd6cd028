// The memory stream (its side-information stream is FileStreamTest's).

#include "StreamTestSupport.h"

#include "fileio/handlers/ScopedHandler.h"
#include "support/RecordingStatus.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

using namespace streamtest;
using fileio::test::RecordingStatus;

TEST(MemoryStream, GrowsByAtLeast32768BytesOrTheWriteOrTheCapacityHeld) {
    const std::tuple<std::vector<std::size_t>, unsigned long long> rows[] = {
        {{1}, 32768}, {{40000}, 40000}, {{40000, 1}, 80000}, {{1, 100000}, 132768}, {{0}, 0},
    };
    for (const auto& [writes, capacity] : rows) {
        SCOPED_TRACE(writes.size() * 1000 + writes.back());
        MemoryStream stream;
        std::size_t total = 0;
        for (std::size_t n : writes) {
            stream.Write(std::string(n, 'x').data(), n);
            total += n;
        }
        EXPECT_EQ(stream.GetCapacity(), capacity);
        EXPECT_EQ(stream.GetLength(), total);
        EXPECT_EQ(stream.GetPos(), total);
    }
}

TEST(MemoryStream, SeeksUncheckedAndReadsPastTheEndWithoutFailing) {
    // An offset, its mode and the position it gives from position 1 of "abc".
    const std::tuple<long long, SeekMode, unsigned long long> rows[] = {
        {1, SM_END, 2}, {0, SM_END, 3}, {2, SM_BEGIN, 2}, {1, SM_CURRENT, 2}, {-1, SM_CURRENT, 0},
    };
    MemoryStream stream;
    Load(stream, "abc");
    for (const auto& [offset, mode, expected] : rows) {
        stream.Seek(1, SM_BEGIN);
        stream.Seek(offset, mode);
        EXPECT_EQ(stream.GetPos(), expected) << offset << " " << mode;
    }
    char buffer[8] = "-------";
    stream.Seek(1, SM_BEGIN);
    EXPECT_FALSE(stream.Eof());
    stream.Read(buffer, 5);
    EXPECT_EQ(std::string(buffer), "bc-----");
    EXPECT_TRUE(stream.Eof()); // at the end exactly
    EXPECT_EQ(stream.ReadC(buffer, 4), 0u);
    stream.Seek(50, SM_BEGIN);
    EXPECT_EQ(stream.GetPos(), 50u);
    EXPECT_EQ(stream.ReadC(buffer, 4), 0u);
    EXPECT_TRUE(stream.Eof());
    EXPECT_FALSE(stream.IsFailed());
}

// One row per rule of the opening table in MemoryStream.h. Every stream starts with the data
// "old", version 13.0, the failed bit set and a file name.
TEST(MemoryStream, EachOpenFormFollowsTheOpeningTable) {
    const fileio::test::TempFolder folder("fileio-stream");
    const String previous(folder.WriteFile("previous.mdl", "old"));
    const std::string binaryFile = "B" + Raw({0x50, 0x01, 0x00, 0x80});
    const String binary(folder.WriteFile("binary.mdl", binaryFile));
    const String angle(folder.WriteFile("angle.mdl", "<MODELFILE>\n"));
    const String plain(folder.WriteFile("plain.bin", "B<"));
    const String missing = String(folder.WriteFile("x", "")) + String("-missing");
    // The bytes given, else the file opened, else neither; the mode; what Open returns and what
    // the stream holds after it. Once open, the stream's name is the path column.
    const std::tuple<const char*, std::string, const String*, FileMode, bool, std::string,
                     unsigned long long, bool, float>
        rows[] = {
            {"file, binary suite file", "", &binary, FM_LOADING | FM_VARN, true, binaryFile, 1,
             true, 5.0f},
            {"file, angle suite file", "", &angle, FM_LOADING | FM_VARN, true, "<MODELFILE>\n", 0,
             false, 13.0f},
            {"file without the Varn bit: no marker", "", &plain, FM_LOADING, true, "B<", 0, false,
             5.0f},
            {"file, appending: at the end", "", &binary, FM_LOADING | FM_VARN | FM_APPEND, true,
             binaryFile, 5, false, 5.0f},
            {"missing file: nothing changes", "", &missing, FM_LOADING | FM_DONTASK, false, "old",
             0, false, 13.0f},
            {"bytes", "abc", &previous, FM_LOADING | FM_FAILED, true, "abc", 0, false, 5.0f},
            {"bytes appended", "de", &previous, FM_LOADING | FM_APPEND | FM_VARN, true, "oldde", 5,
             false, 13.0f},
            {"bytes, storing: no marker written", "abc", &previous, FM_VARN | FM_BINARY, true,
             "abc", 0, true, 5.0f},
            {"no file, loading: the data are read again", "", nullptr, FM_LOADING | FM_VARN, true,
             "old", 0, false, 13.0f},
            {"no file, storing with append", "", nullptr, FM_APPEND | FM_VARN | FM_BINARY, true,
             "old", 3, true, 13.0f},
            {"no file, storing a binary suite file", "", nullptr, FM_VARN | FM_BINARY, true, "B", 1,
             true, 13.0f},
        };
    for (const auto& [name, bytes, path, mode, opens, data, position, isBinary, version] : rows) {
        SCOPED_TRACE(name);
        MemoryStream stream;
        ASSERT_TRUE(stream.Open(previous, FM_LOADING | FM_DONTPROGRESS));
        stream.SetVersion(13.0f);
        stream.OnFailed();
        const bool opened = !bytes.empty()    ? stream.Open(bytes.data(), bytes.size(), mode)
                            : path != nullptr ? stream.Open(*path, mode)
                                              : stream.Open(mode);
        EXPECT_EQ(opened, opens);
        EXPECT_EQ(Bytes(stream), data);
        EXPECT_EQ(stream.GetPos(), position);
        EXPECT_EQ(stream.IsBinary(), isBinary);
        EXPECT_EQ(stream.GetVersion(), version);
        EXPECT_EQ(stream.HasFailed(), !opens);
        const String* fileName = opens ? path : &previous;
        EXPECT_EQ(stream.GetFileName().View(), fileName != nullptr ? fileName->View() : "");
    }
}

TEST(MemoryStream, HeaderPeeksLookAtTheirByteAsItIs) {
    MemoryStream stream;
    Load(stream, " <MESH>");
    stream.Seek(1, SM_BEGIN);
    EXPECT_FALSE(stream.IsHeaderAt0());
    Load(stream, "<MESH> x");
    stream.Seek(5, SM_BEGIN);
    EXPECT_TRUE(stream.IsHeaderAt0());
    // An end header at 0 keeps its own spelling: "[End" in the square form.
    const std::tuple<float, const char*, bool> rows[] = {
        {5.0f, "[End", true},
        {5.0f, "[ENDMODELFILE]", false},
        {13.0f, "</", true},
        {13.0f, "<", false},
    };
    for (const auto& [version, data, expected] : rows) {
        SCOPED_TRACE(data);
        Load(stream, data, FM_LOADING, version);
        EXPECT_EQ(stream.IsEndHeaderAt0(), expected);
    }
    // Binary: the last token read was a label in header position.
    Load(stream, Raw({0xCE, 0x0F, 0x00, 0xC0, 0x50, 0x01, 0x00, 0xA0}), FM_BINARY);
    Header header;
    stream >> header;
    EXPECT_TRUE(stream.IsEndHeaderAt0());
    stream >> header;
    EXPECT_FALSE(stream.IsEndHeaderAt0());
}

TEST(MemoryStream, CopiesTakeModeVersionAndDataButNotThePosition) {
    MemoryStream original;
    Load(original, "<MESH>", FM_LOADING | FM_BINARY, 13.0f);
    original.Seek(3, SM_BEGIN);
    MemoryStream copy(original);
    EXPECT_EQ(Bytes(copy), "<MESH>");
    EXPECT_EQ(copy.GetMode(), original.GetMode());
    EXPECT_EQ(copy.GetVersion(), 13.0f);
    EXPECT_EQ(copy.GetPos(), 0u);
    MemoryStream assigned;
    assigned.Write("old", 3);
    assigned = original;
    EXPECT_EQ(Bytes(assigned), "<MESH>");
    EXPECT_TRUE(assigned.IsBinary());
    assigned = assigned;
    EXPECT_EQ(Bytes(assigned), "<MESH>");

    // SetSize and Empty drop the data.
    copy.SetSize(1024);
    EXPECT_EQ(copy.GetLength(), 0u);
    EXPECT_EQ(copy.GetCapacity(), 1024u);
    EXPECT_EQ(copy.GetVersion(), 5.0f);
    copy.Write("x", 1);
    EXPECT_EQ(copy.GetCapacity(), 1024u);
    copy.Empty();
    EXPECT_EQ(copy.GetCapacity(), 0u);
    EXPECT_EQ(copy.GetData(), nullptr);
}

TEST(MemoryStream, LoadingProgressThroughTheStatusHandler) {
    const fileio::test::TempFolder folder("fileio-stream");
    std::string text;
    for (int i = 0; i < 100; ++i)
        text += "Value=" + std::to_string(1000 + i) + "\n"; // 11 bytes a line
    const String path(folder.WriteFile("scene.prj", text));
    RecordingStatus status;
    ScopedStatusHandler installed(&status);
    {
        MemoryStream stream;
        ASSERT_TRUE(stream.Open(path, FM_LOADING | FM_VARN));
        EXPECT_EQ(status.Of("init"), std::vector<std::string>{"Loading [ scene.prj ]/0/0/100"});
        EXPECT_TRUE(StatusMessage::IsDisplaying());
        Label label;
        int value = 0;
        while (!stream.VirtualEof())
            stream >> label >> value;
        // 1100 bytes: one step is 11 bytes; a value's token ends each line.
        const std::vector<int> positions = status.Positions();
        ASSERT_EQ(positions.size(), 100u);
        EXPECT_EQ(positions.front(), 1);
        EXPECT_EQ(positions.back(), 100);
        stream.Close();
        EXPECT_EQ(status.Of("uninit").size(), 1u);
        EXPECT_FALSE(StatusMessage::IsDisplaying());
    }
    EXPECT_EQ(status.Of("uninit").size(), 1u);

    // A plain control is running: its text comes back when the stream closes. A control
    // of another kind: nothing is shown; nor without progress or for an empty file.
    StatusMessage::InitializeProgressControl("Saving the world", 0, 0, 100);
    status.calls.clear();
    MemoryStream stream;
    ASSERT_TRUE(stream.Open(path, FM_LOADING));
    stream.Close();
    status.type = 3;
    ASSERT_TRUE(stream.Open(path, FM_LOADING));
    status.active = false;
    ASSERT_TRUE(stream.Open(path, FM_LOADING | FM_DONTPROGRESS));
    ASSERT_TRUE(stream.Open(String(folder.WriteFile("empty.mdl", "")), FM_LOADING));
    EXPECT_EQ(status.Of("init"), (std::vector<std::string>{"Loading [ scene.prj ]/0/0/100",
                                                           "Saving the world/0/0/100"}));
    EXPECT_TRUE(status.Of("uninit").empty());
}
