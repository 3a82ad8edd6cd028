// The memory stream: opening, growth, seeking, reading past the end, the peeks at position 0,
// copies, progress and the side-information stream of a versioned file.

#include "StreamTestSupport.h"

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/path/VersionControl.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace streamtest;

namespace {

/// A fresh folder of the test's own, whose Write returns the file's path as a String.
class TemporaryFolder : public fileio::test::TempFolder {
public:
    TemporaryFolder() : TempFolder("fileio-stream") {}
    String Write(const std::string& name, const std::string& bytes) const {
        return String(WriteFile(name, bytes));
    }
};

/// Records the progress calls the streams make.
class RecordingStatus : public StatusHandler {
public:
    void SetStatusText(const String& text) override { texts.emplace_back(text.View()); }
    void SetProgress(int position) override { progress.push_back(position); }
    bool InitializeProgressControl(const char* text, unsigned char, int, int) override {
        controls.emplace_back(text);
        active = true;
        return true;
    }
    void UninitializeProgressControl() override {
        ++uninitialized;
        active = false;
    }
    bool IsProgressControlActive() const override { return active; }
    unsigned char GetCurrentType() override { return type; }

    std::vector<std::string> texts;
    std::vector<std::string> controls;
    std::vector<int> progress;
    int uninitialized = 0;
    bool active = false;
    unsigned char type = 0;
};

} // namespace

TEST(MemoryStream, GrowsByAtLeast32768BytesOrTheWrite) {
    struct Row {
        std::vector<std::size_t> writes;
        unsigned long long capacity;
    };
    const Row rows[] = {
        {{1}, 32768},          {{40000}, 40000}, {{32768}, 32768}, {{32768, 1}, 65536},
        {{40000, 1}, 80000}, // never less than the capacity held: doubling
        {{1, 100000}, 132768}, {{0}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.writes.size() * 1000 + row.writes.back());
        MemoryStream stream;
        std::size_t total = 0;
        for (std::size_t n : row.writes) {
            stream.Write(std::string(n, 'x').data(), n);
            total += n;
        }
        EXPECT_EQ(stream.GetCapacity(), row.capacity);
        EXPECT_EQ(stream.GetLength(), total);
        EXPECT_EQ(stream.GetPos(), total);
    }
}

TEST(MemoryStream, GrowingKeepsTheDataBeforeThePosition) {
    MemoryStream stream;
    stream.Write("head", 4);
    stream.Seek(2, SM_BEGIN);
    stream.Write(std::string(40000, 'y').data(), 40000);
    const std::string bytes = Bytes(stream);
    EXPECT_EQ(bytes.size(), 40002u);
    EXPECT_EQ(bytes.substr(0, 3), "hey");
}

TEST(MemoryStream, SeekModes) {
    struct Row {
        long long offset;
        SeekMode mode;
        unsigned long long expected;
    };
    const Row rows[] = {
        {10, SM_END, 90},    {0, SM_END, 100},     {7, SM_BEGIN, 7},
        {5, SM_CURRENT, 35}, {-5, SM_CURRENT, 25}, {150, SM_BEGIN, 150},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.offset);
        MemoryStream stream;
        Load(stream, std::string(100, 'a'));
        stream.Seek(30, SM_BEGIN);
        stream.Seek(row.offset, row.mode);
        EXPECT_EQ(stream.GetPos(), row.expected);
    }
}

TEST(MemoryStream, ReadsPastTheEndCopyWhatIsThereAndSetNoFailedBit) {
    MemoryStream stream;
    Load(stream, "abc");
    char buffer[8] = "-------";
    stream.Seek(1, SM_BEGIN);
    stream.Read(buffer, 5);
    EXPECT_EQ(std::string(buffer), "bc-----");
    EXPECT_FALSE(stream.IsFailed());
    EXPECT_EQ(stream.ReadC(buffer, 4), 0u);
    stream.Seek(50, SM_BEGIN);
    EXPECT_EQ(stream.ReadC(buffer, 4), 0u);
    EXPECT_TRUE(stream.Eof());
    EXPECT_FALSE(stream.IsFailed());
    int value = 42;
    stream >> value;
    EXPECT_EQ(value, 0); // a text token that is not there reads as 0
}

// One row per rule of the opening table in MemoryStream.h. Every stream starts with the data
// "old", version 13.0, the failed bit set and a file name.
TEST(MemoryStream, EachOpenFormFollowsTheOpeningTable) {
    TemporaryFolder folder;
    const String previous = folder.Write("previous.mdl", "old");
    const std::string binaryFile = "B" + Raw({0x50, 0x01, 0x00, 0x80});
    const String binary = folder.Write("binary.mdl", binaryFile);
    const String angle = folder.Write("angle.mdl", "<MODELFILE>\n");
    const String plain = folder.Write("plain.bin", "B<");
    const String empty = folder.Write("empty.mdl", "");
    const String missing = folder.Write("x", "") + String("-missing");
    enum class Name { Kept, Dropped, Path };
    struct Row {
        const char* name;
        std::function<bool(MemoryStream&)> open;
        bool opened;
        std::string data;
        unsigned long long position;
        bool isBinary;
        float version;
        Name fileName;
        const String* path;
    };
    const Row rows[] = {
        {"file, binary suite file",
         [&](MemoryStream& s) { return s.Open(binary, FM_LOADING | FM_VARN); }, true, binaryFile, 1,
         true, 5.0f, Name::Path, &binary},
        {"file, angle suite file",
         [&](MemoryStream& s) { return s.Open(angle, FM_LOADING | FM_VARN); }, true,
         "<MODELFILE>\n", 0, false, 13.0f, Name::Path, &angle},
        {"file without the Varn bit: no marker",
         [&](MemoryStream& s) { return s.Open(plain, FM_LOADING); }, true, "B<", 0, false, 5.0f,
         Name::Path, &plain},
        {"file, appending: at the end",
         [&](MemoryStream& s) { return s.Open(binary, FM_LOADING | FM_VARN | FM_APPEND); }, true,
         binaryFile, 5, false, 5.0f, Name::Path, &binary},
        {"empty file", [&](MemoryStream& s) { return s.Open(empty, FM_LOADING | FM_VARN); }, true,
         "", 0, false, 5.0f, Name::Path, &empty},
        {"missing file: nothing changes",
         [&](MemoryStream& s) { return s.Open(missing, FM_LOADING | FM_DONTASK); }, false, "old", 0,
         false, 13.0f, Name::Kept, &previous},
        {"bytes", [](MemoryStream& s) { return s.Open("abc", 3, FM_LOADING | FM_FAILED); }, true,
         "abc", 0, false, 5.0f, Name::Kept, &previous},
        {"bytes appended",
         [](MemoryStream& s) { return s.Open("de", 2, FM_LOADING | FM_APPEND | FM_VARN); }, true,
         "oldde", 5, false, 13.0f, Name::Kept, &previous},
        {"bytes of a binary suite file",
         [&](MemoryStream& s) {
             return s.Open(binaryFile.data(), binaryFile.size(), FM_LOADING | FM_VARN);
         },
         true, binaryFile, 1, true, 5.0f, Name::Kept, &previous},
        {"bytes, storing: no marker written",
         [](MemoryStream& s) { return s.Open("abc", 3, FM_VARN | FM_BINARY); }, true, "abc", 0,
         true, 5.0f, Name::Kept, &previous},
        {"no file, loading: the data are read again",
         [](MemoryStream& s) { return s.Open(FM_LOADING | FM_VARN); }, true, "old", 0, false, 13.0f,
         Name::Dropped, nullptr},
        {"no file, storing with append",
         [](MemoryStream& s) { return s.Open(FM_APPEND | FM_VARN | FM_BINARY); }, true, "old", 3,
         true, 13.0f, Name::Dropped, nullptr},
        {"no file, storing a binary suite file",
         [](MemoryStream& s) { return s.Open(FM_VARN | FM_BINARY); }, true, "B", 1, true, 13.0f,
         Name::Dropped, nullptr},
        {"no file, storing", [](MemoryStream& s) { return s.Open(FM_STORING); }, true, "", 0, false,
         13.0f, Name::Dropped, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryStream stream;
        ASSERT_TRUE(stream.Open(previous, FM_LOADING | FM_DONTPROGRESS));
        stream.SetVersion(13.0f);
        stream.OnFailed();
        EXPECT_EQ(row.open(stream), row.opened);
        EXPECT_EQ(Bytes(stream), row.data);
        EXPECT_EQ(stream.GetPos(), row.position);
        EXPECT_EQ(stream.IsBinary(), row.isBinary);
        EXPECT_EQ(stream.GetVersion(), row.version);
        EXPECT_EQ(stream.HasFailed(), !row.opened);
        EXPECT_EQ(stream.GetFileName().View(),
                  row.fileName == Name::Dropped ? "" : row.path->View());
        if (row.fileName == Name::Path) {
            EXPECT_EQ(stream.GetCapacity(), row.data.size()) << "a file's image fits exactly";
        }
    }
}

TEST(MemoryStream, IsHeaderLooksAtThePositionAsItIs) {
    MemoryStream stream;
    Load(stream, " <MESH>");
    EXPECT_FALSE(stream.IsHeader());
    stream.Seek(1, SM_BEGIN);
    EXPECT_TRUE(stream.IsHeader());
    EXPECT_FALSE(stream.IsHeaderAt0());
    Load(stream, "<MESH> x");
    stream.Seek(5, SM_BEGIN);
    EXPECT_TRUE(stream.IsHeaderAt0());
}

TEST(MemoryStream, EndHeaderAt0KeepsItsOwnSpelling) {
    struct Row {
        float version;
        const char* data;
        bool expected;
    };
    const Row rows[] = {
        {5.0f, "[EndMODELFILE]", true},
        {5.0f, "[ENDMODELFILE]", false},
        {5.0f, "[End", true},
        {5.0f, "[En", false},
        {13.0f, "</MODELFILE>", true},
        {13.0f, "<MODELFILE>", false},
        {13.0f, "</", true},
        {13.0f, "<", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.data);
        MemoryStream stream;
        Load(stream, row.data, FM_LOADING, row.version);
        EXPECT_EQ(stream.IsEndHeaderAt0(), row.expected);
    }
    // Binary: the last token read was a label in header position.
    MemoryStream binary;
    Load(binary, Raw({0xCE, 0x0F, 0x00, 0xC0, 0x50, 0x01, 0x00, 0xA0}), FM_BINARY);
    Header header;
    binary >> header;
    EXPECT_TRUE(binary.IsEndHeaderAt0());
    binary >> header;
    EXPECT_FALSE(binary.IsEndHeaderAt0());
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
    EXPECT_NE(copy.GetData(), original.GetData());

    MemoryStream assigned;
    assigned.Write("old", 3);
    assigned = original;
    EXPECT_EQ(Bytes(assigned), "<MESH>");
    EXPECT_TRUE(assigned.IsBinary());
    assigned = assigned;
    EXPECT_EQ(Bytes(assigned), "<MESH>");

    MemoryStream empty;
    MemoryStream emptyCopy(empty);
    EXPECT_EQ(emptyCopy.GetLength(), 0u);
}

TEST(MemoryStream, SetSizeAndEmptyDropTheData) {
    MemoryStream stream;
    Load(stream, "abc", FM_LOADING, 13.0f);
    stream.SetSize(1024);
    EXPECT_EQ(stream.GetLength(), 0u);
    EXPECT_EQ(stream.GetCapacity(), 1024u);
    EXPECT_EQ(stream.GetVersion(), 5.0f);
    stream.Write("x", 1);
    EXPECT_EQ(stream.GetCapacity(), 1024u);
    stream.Empty();
    EXPECT_EQ(stream.GetLength(), 0u);
    EXPECT_EQ(stream.GetCapacity(), 0u);
    EXPECT_EQ(stream.GetData(), nullptr);
}

TEST(MemoryStream, LoadingProgressThroughTheStatusHandler) {
    TemporaryFolder folder;
    std::string text;
    for (int i = 0; i < 100; ++i)
        text += "Value=" + std::to_string(1000 + i) + "\n"; // 11 bytes a line
    const String path = folder.Write("scene.prj", text);

    RecordingStatus status;
    ScopedStatusHandler installed(&status);
    {
        MemoryStream stream;
        ASSERT_TRUE(stream.Open(path, FM_LOADING | FM_VARN));
        EXPECT_EQ(status.controls, std::vector<std::string>{"Loading [ scene.prj ]"});
        EXPECT_TRUE(StatusMessage::IsDisplaying());
        Label label;
        int value = 0;
        while (!stream.VirtualEof())
            stream >> label >> value;
        EXPECT_EQ(value, 1099);
        // 1100 bytes: one step is 11 bytes; a value's token ends each line.
        ASSERT_EQ(status.progress.size(), 100u);
        EXPECT_EQ(status.progress.front(), 1);
        EXPECT_EQ(status.progress.back(), 100);
        stream.Close();
        EXPECT_EQ(status.uninitialized, 1);
        EXPECT_FALSE(StatusMessage::IsDisplaying());
    }
    EXPECT_EQ(status.uninitialized, 1);
}

TEST(MemoryStream, ProgressInsideAnotherDisplay) {
    TemporaryFolder folder;
    const String path = folder.Write("part.mdl", "Name=x\n");
    RecordingStatus status;
    ScopedStatusHandler installed(&status);

    // A plain control is running: its text comes back when the stream closes.
    status.active = true;
    StatusMessage::InitializeProgressControl("Saving the world", 0, 0, 100);
    status.controls.clear();
    {
        MemoryStream stream;
        ASSERT_TRUE(stream.Open(path, FM_LOADING));
        stream.Close();
    }
    EXPECT_EQ(status.controls,
              (std::vector<std::string>{"Loading [ part.mdl ]", "Saving the world"}));
    EXPECT_EQ(status.uninitialized, 0);

    // A control of another kind: nothing is shown.
    status.controls.clear();
    status.type = 3;
    {
        MemoryStream stream;
        ASSERT_TRUE(stream.Open(path, FM_LOADING));
    }
    EXPECT_TRUE(status.controls.empty());

    // Without progress, or for an empty file, nothing either.
    status.active = false;
    status.type = 0;
    {
        MemoryStream stream;
        ASSERT_TRUE(stream.Open(path, FM_LOADING | FM_DONTPROGRESS));
        ASSERT_TRUE(stream.Open(folder.Write("empty.mdl", ""), FM_LOADING));
    }
    EXPECT_TRUE(status.controls.empty());
    EXPECT_EQ(status.uninitialized, 0);
}

TEST(MemoryStream, InfoStreamOfAVersionedFile) {
    TemporaryFolder folder;
    const String plain = folder.Write("plain/scene.prj", "<MODELFILE>\n");
    const String versioned = folder.Write("work/models/robot.mdl", "<MODELFILE>\n");
    folder.MakeFolder("work/.svn");
    folder.Write("work/models/robot.mdl.vinfo", "Name=info\n");
    const String orphan = folder.Write("work/orphan.mdl", "<MODELFILE>\n");

    EXPECT_FALSE(SVNIsVersioned(plain));
    EXPECT_TRUE(SVNIsVersioned(versioned));
    EXPECT_TRUE(SVNIsVersioned(orphan));
    EXPECT_FALSE(SVNIsVersioned(String()));

    MemoryStream notVersioned;
    ASSERT_TRUE(notVersioned.Open(plain, FM_LOADING | FM_VARN));
    EXPECT_EQ(notVersioned.GetInfoStream(), &notVersioned);

    MemoryStream model;
    ASSERT_TRUE(model.Open(versioned, FM_LOADING | FM_VARN));
    VarnStream* info = model.GetInfoStream();
    ASSERT_NE(info, nullptr);
    ASSERT_NE(info, &model);
    EXPECT_EQ(info->GetVersion(), 13.0f);
    EXPECT_EQ(info->GetFileName().View(), std::string(versioned.View()) + ".vinfo");
    EXPECT_TRUE(info->IsDontAsk());
    Label label;
    String value;
    *info >> label >> value;
    EXPECT_EQ(value.View(), "info");
    EXPECT_EQ(model.GetInfoStream(), info); // made once

    MemoryStream withoutCompanion;
    ASSERT_TRUE(withoutCompanion.Open(orphan, FM_LOADING | FM_VARN));
    EXPECT_EQ(withoutCompanion.GetInfoStream(), nullptr);
}
