// The search for a missing file that may ask the user.

#include "StreamTestSupport.h"

#include "fileio/handlers/FileHandler.h"
#include "fileio/handlers/ScopedHandler.h"
#include "fileio/stream/FileStream.h"
#include "support/ScriptedDialogProvider.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

using namespace streamtest;
using fileio::test::ScriptedDialogProvider;

namespace {

class RecordingFileHandler : public FileHandler {
public:
    bool IsPrompt() override { return prompt; }
    void MissingFile(const String& name) override { missing.emplace_back(name.View()); }
    bool prompt = true;
    std::vector<std::string> missing;
};

class LocateFile : public MissingFileSearch {
protected:
    std::string Path(const char* relative) const { return m_folder.Join(relative); }

    fileio::test::TempFolder m_folder{"fileio-locate"};
    ScriptedDialogProvider m_dialogs;
};

TEST_F(LocateFile, TheDialogShowsTheNameItsTypeAndTheNearestFolder) {
    m_folder.MakeFolder("project/maps");
    const std::string maps = m_folder.Join("project/maps/");
    const std::string deep = m_folder.Join("project/maps/old/deep/arm.Mdl");
    // The missing name, its filter before the "All Files" entry every filter ends with, the
    // folder shown and the name proposed.
    const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
        {maps + "skin.png", "PNG Files (*.png)|*.png|****|", maps, maps + "skin.png"},
        // A folder that is gone: the nearest one above it that exists.
        {deep, "MDL Files (*.Mdl)|*.Mdl|****|", maps, maps + "arm.Mdl"},
        {"no-folder", "", "", "no-folder"},
        // Up to a drive that does not exist either: no folder.
        {"Q:\\Gone\\Deep\\arm.mdl", "MDL Files (*.mdl)|*.mdl|****|", "", "arm.mdl"},
        // A network folder only when it exists.
        {"\\\\nosuchserver\\share\\arm.mdl", "MDL Files (*.mdl)|*.mdl|****|", "", "arm.mdl"},
    };
    for (const auto& [missing, filter, folder, proposed] : rows) {
        SCOPED_TRACE(missing);
        m_dialogs.calls.clear();
        String name(missing);
        EXPECT_FALSE(FileStream::FindAliasAsk(name));
        const auto asked = m_dialogs.Of("locate");
        ASSERT_EQ(asked.size(), 1u);
        EXPECT_EQ(asked[0].text, "Locate File: " + missing);
        EXPECT_EQ(asked[0].filter, filter + "All Files (*.*)|*.*|****||");
        EXPECT_EQ(asked[0].folder, folder);
        EXPECT_EQ(asked[0].proposedName, proposed);
        EXPECT_TRUE(FileStream::IsInFailedList(name));
    }
    // The title keeps 97 characters of a long name (112 less the resource text's 15).
    m_dialogs.calls.clear();
    String name(m_folder.Join("project/" + std::string(120, 'n') + ".tga"));
    FileStream::FindAliasAsk(name);
    ASSERT_EQ(m_dialogs.Of("locate").size(), 1u);
    const std::string title = m_dialogs.Of("locate")[0].text;
    EXPECT_EQ(title.size(), std::string("Locate File: ").size() + 97);
    EXPECT_EQ(title.substr(title.size() - 8), "nnnn.tga");
}

TEST_F(LocateFile, TheFileHandlerIsToldAndCancelAllStopsTheQuestionsUntilItIsReset) {
    RecordingFileHandler handler;
    ScopedFileHandler installed(&handler);
    handler.prompt = false;
    String forbidden(Path("a.mdl"));
    EXPECT_FALSE(FileStream::FindAliasAsk(forbidden));
    EXPECT_TRUE(m_dialogs.Of("locate").empty());

    handler.prompt = true;
    m_dialogs.locateAnswers = {ScriptedDialogProvider::CancelAll()};
    String first(Path("b.mdl")), again(Path("c.mdl"));
    EXPECT_FALSE(FileStream::FindAliasAsk(first));
    EXPECT_FALSE(FileStream::FindAliasAsk(again));
    EXPECT_EQ(m_dialogs.Of("locate").size(), 1u);
    EXPECT_EQ(handler.missing,
              (std::vector<std::string>{Path("a.mdl"), Path("b.mdl"), Path("c.mdl")}));
    // A name in the failed list is neither searched nor asked for again.
    FileStream::ResetCancelAll();
    EXPECT_FALSE(FileStream::FindAliasAsk(again));
    EXPECT_EQ(m_dialogs.Of("locate").size(), 1u);
    // Cleared, and with "cancel all" reset, the user is asked again.
    FileStream::ClearFailedList();
    EXPECT_FALSE(FileStream::FindAliasAsk(again));
    ASSERT_EQ(m_dialogs.Of("locate").size(), 2u);
    EXPECT_FALSE(m_dialogs.Of("locate")[1].cancelAll);
}

TEST_F(LocateFile, ThePickIsLearntAsTheAliasesItImplies) {
    const std::string picked = m_folder.WriteFile("new/Robot/arm-v2.mdl", "<MODELFILE>\n");
    m_folder.WriteFile("new/Robot/leg.mdl", "<MODELFILE>\n");
    m_dialogs.locateAnswers = {ScriptedDialogProvider::Choose(picked)};
    String name("C:\\Work\\Robot\\arm.mdl");
    ASSERT_TRUE(FileStream::FindAliasAsk(name));
    EXPECT_EQ(name.View(), picked);
    // The file's own name changed: a file alias; its folder too: a folder alias.
    String again("c:\\work\\robot\\ARM.mdl");
    EXPECT_TRUE(FileStream::FindFileAlias(again));
    EXPECT_EQ(again.View(), picked);
    String sibling("C:\\Work\\Robot\\leg.mdl");
    EXPECT_TRUE(FileStream::FindAliasAsk(sibling));
    EXPECT_EQ(sibling.View(), m_folder.Join("new/Robot/leg.mdl"));
    EXPECT_EQ(m_dialogs.Of("locate").size(), 1u);
}

TEST_F(LocateFile, OpeningNeverLoopsAndTheDontAskBitAsksNothing) {
    m_folder.WriteFile("here.mdl", "<MODELFILE>\n");
    FileStream::AddFileAlias(Path("a.mdl").c_str(), Path("b.mdl").c_str());
    FileStream::AddFileAlias(Path("b.mdl").c_str(), Path("a.mdl").c_str());
    FileStream in;
    String name(Path("a.mdl"));
    EXPECT_FALSE(in.Open(name, FM_LOADING)); // aliases in a circle

    // A dialog that keeps offering a missing file is not asked for ever.
    m_dialogs.locateAnswers.assign(5, ScriptedDialogProvider::Choose(Path("nowhere.mdl")));
    String offered(Path("c.mdl"));
    EXPECT_FALSE(in.Open(offered, FM_LOADING));
    EXPECT_LE(m_dialogs.Of("locate").size(), 2u);

    // The don't-ask bit neither asks nor consults the aliases.
    m_dialogs.calls.clear();
    FileStream::AddFileAlias(Path("d.mdl").c_str(), Path("here.mdl").c_str());
    String quiet(Path("d.mdl"));
    EXPECT_FALSE(in.Open(quiet, FM_LOADING | FM_DONTASK));
    EXPECT_EQ(quiet.View(), Path("d.mdl"));
    EXPECT_TRUE(m_dialogs.calls.empty());
    // Without it the memory stream searches as the file stream does.
    MemoryStream memory;
    EXPECT_TRUE(memory.Open(quiet, FM_LOADING));
    EXPECT_EQ(memory.GetFileName().View(), Path("here.mdl"));
}

} // namespace
