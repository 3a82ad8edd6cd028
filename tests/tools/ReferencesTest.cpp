// ReferencesTest.cpp - where a project's references resolve to and how the search finds the missing
// ones: the stored place, other letter case, a Windows folder learnt from --map; and the rewrite of
// the values in a file of either form. (The relink and deps runs of the tool show the rest: POSIX
// folders, the derived shorter alias, the mapping's letter case, the search folders and the name
// search below them, the stored text.)

#include "References.h"
#include "ProjectReader.h"
#include "ToolTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace fileio::tool;
using fileio::test::BinaryProject;
using fileio::test::WorkFolder;

/// A work folder laid out as a moved project, and the process-wide search state emptied
/// before and after each test.
class ReferencesTest : public testing::Test {
protected:
    void SetUp() override {
        Forget();
        m_work.Files().WriteFile("Documents/Robot/Maps/skin.png", "data");
        m_project = m_work.Files().WriteFile("Documents/Robot/robot.prj", "");
        SetBasePath(String(m_project));
    }
    void TearDown() override { Forget(); }

    static void Forget() {
        FileStream::FreePathAliases();
        FileStream::FreeFileAliases();
        FreeAllSearchPaths();
        FreeBasePaths();
    }

    /// A reference to `stored` resolved by `search`, its path written as Normalised does.
    Resolution Resolve(ReferenceSearch& search, const std::string& stored) {
        Resolution resolution = search.Resolve(Reference{"P/Image", "Image", stored, 0, 0, 0});
        resolution.found = m_work.Normalised(resolution.found);
        return resolution;
    }

    bool CaseSensitive() const {
        return !FileExists(String(m_work.Files().Join("DOCUMENTS/ROBOT/MAPS/SKIN.PNG")));
    }

    WorkFolder m_work;
    std::string m_project;
};

TEST_F(ReferencesTest, AFileIsFoundAtItsStoredPlaceOrThroughAMappingInOtherLetterCase) {
    ReferenceSearch search;
    const Resolution stored = Resolve(search, "Maps\\skin.png");
    EXPECT_EQ(stored.how, Found::Exists);
    EXPECT_EQ(stored.found, "<work>/Documents/Robot/Maps/skin.png");
    const Resolution r = Resolve(search, "MAPS/Skin.PNG");
    EXPECT_EQ(r.how, CaseSensitive() ? Found::Case : Found::Exists);
    EXPECT_EQ(r.found, CaseSensitive() ? "<work>/Documents/Robot/Maps/skin.png"
                                       : "<work>/Documents/Robot/MAPS/Skin.PNG");
    // The mapping's TO is absolute: resolving a reference makes the project's folder the
    // current one, as the tool learns its mappings before it resolves.
    std::string why;
    ASSERT_TRUE(ReferenceSearch::AddMapping(
        "C:\\Users\\ann\\Robot=" + m_work.Files().Join("Documents/Robot"), why))
        << why;
    const Resolution mapped = Resolve(search, "C:/Users/ann/Robot/maps/SKIN.png");
    EXPECT_EQ(mapped.how, Found::Alias);
    EXPECT_EQ(mapped.found, CaseSensitive() ? "<work>/Documents/Robot/Maps/skin.png"
                                            : "<work>/Documents/Robot/maps/SKIN.png");
}

/// Walks a file and rewrites every reference to `text`; gives the new bytes, or why not.
std::string RewriteAll(const std::string& bytes, const std::string& text) {
    MemoryStream in;
    OpenProject(bytes.data(), bytes.size(), in);
    ReferenceCollector collector;
    WalkProject(in, collector);
    std::vector<Rewrite> rewrites;
    for (const Reference& reference : collector.References())
        rewrites.push_back(Rewrite{&reference, text});
    std::string rewritten;
    std::string why;
    return RewriteReferences(in, rewrites, rewritten, why) ? rewritten : why;
}

TEST_F(ReferencesTest, RewritingChangesTheValuesAndNothingElseInBothForms) {
    const std::string text = "<MODELFILE>\nName=A&#38;B\nImage=C:/old/skin.png   \n"
                             "Wibble=kept as it is\nSound=\"C:/old/step.wav\"\n</MODELFILE>\n";
    EXPECT_EQ(RewriteAll(text, "Maps/a&b.png"),
              "<MODELFILE>\nName=A&#38;B\nImage=Maps/a&#38;b.png   \n"
              "Wibble=kept as it is\nSound=Maps/a&#38;b.png\n</MODELFILE>\n");

    const int model = GetHeaderIDFromText("MODELFILE");
    const auto binary = [&](const char* image) {
        return BinaryProject(Header(model), Label("Image"), String(image), Label("Opacity"), 0.5f,
                             EndHeader(model));
    };
    EXPECT_EQ(RewriteAll(binary("C:/x.png"), "Maps/skin.png"), binary("Maps/skin.png"));
    EXPECT_EQ(RewriteAll(binary("C:/x.png"), std::string(70000, 'x')),
              "MODELFILE/Image: the path is too long for the binary form");
}

} // namespace
