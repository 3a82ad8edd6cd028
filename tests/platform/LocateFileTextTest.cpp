// LocateFileTextTest.cpp - the text rules of the locate-file dialog, on every platform: the
// filter form the Windows dialog reads into its file types, and the answer typed at the
// Linux terminal.

#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using Kind = fileio::platform::LocateAnswer::Kind;

TEST(LocateFileTextTest, FiltersBecomePairsOfTextAndPattern) {
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        // The two forms the missing-file search writes.
        {"MDL Files (*.mdl)|*.mdl|****|All Files (*.*)|*.*|****||",
         {"MDL Files (*.mdl)", "*.mdl", "All Files (*.*)", "*.*"}},
        // The list ends at the first empty field, with or without "||".
        {"Text|*.txt||Hidden|*.x", {"Text", "*.txt"}},
        {"|Text|*.txt", {}},
        // A text without its pattern is dropped; marks are read past wherever they stand.
        {"Text|*.txt|Orphan||", {"Text", "*.txt"}},
        {"****|****|Text|****|*.txt||", {"Text", "*.txt"}},
        // Fields are taken as they are: blanks kept, "***" is no mark.
        {" A |*.a|***|*.b||", {" A ", "*.a", "***", "*.b"}},
    };
    for (const auto& [filter, pairs] : rows) {
        std::vector<std::string> fields;
        for (const auto& type : fileio::platform::ParseFileFilter(filter)) {
            fields.push_back(type.text);
            fields.push_back(type.pattern);
        }
        EXPECT_EQ(fields, pairs) << filter;
    }
}

TEST(LocateFileTextTest, TypedAnswersChooseCancelOrCancelAll) {
    const std::tuple<const char*, Kind, const char*> rows[] = {
        {"  Maps/a b.mdl \t\r", Kind::Chosen, "Maps/a b.mdl"},
        // A dropped file's path comes quoted, often with a blank after it.
        {"'/home/ann/a b.mdl' ", Kind::Chosen, "/home/ann/a b.mdl"},
        {"\"/home/ann/a b.mdl\"", Kind::Chosen, "/home/ann/a b.mdl"},
        {"'/x.mdl\"", Kind::Chosen, "'/x.mdl\""}, // quotes that do not match stay
        {"'", Kind::Chosen, "'"},
        {"", Kind::Cancel, ""},
        {"''", Kind::Cancel, ""},
        {"!cancel-all", Kind::CancelAll, ""},
        // Only the word itself: near misses are paths.
        {"!cancel-all2", Kind::Chosen, "!cancel-all2"},
        {"'!cancel-all'", Kind::Chosen, "!cancel-all"},
    };
    for (const auto& [typed, kind, path] : rows) {
        const auto answer = fileio::platform::ParseLocateAnswer(typed);
        EXPECT_EQ(answer.kind, kind) << typed;
        EXPECT_EQ(answer.path, path) << typed;
    }
}

} // namespace
