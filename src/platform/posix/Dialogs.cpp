// Dialogs.cpp - modal questions, POSIX implementation: a question on the terminal, asked
// only when standard input and standard error are both terminals. Otherwise nobody is
// there to answer and the answer is the one that stops (for the locate-file question:
// Cancel).

#include "platform/Platform.h"

#include <cctype>
#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

namespace fileio::platform {

namespace {

struct Choice {
    char key;
    const char* label;
    int answer;
};

constexpr Choice kOk{'o', "[O]K", box::kAnswerOk};
constexpr Choice kCancel{'c', "[C]ancel", box::kAnswerCancel};
constexpr Choice kAbort{'a', "[A]bort", box::kAnswerAbort};
constexpr Choice kRetry{'r', "[R]etry", box::kAnswerRetry};
constexpr Choice kIgnore{'i', "[I]gnore", box::kAnswerIgnore};
constexpr Choice kYes{'y', "[Y]es", box::kAnswerYes};
constexpr Choice kNo{'n', "[N]o", box::kAnswerNo};

/// The buttons of a box style, the one that stops first.
std::vector<Choice> ChoicesOf(unsigned int style) {
    switch (style & box::kButtonsMask) {
    case box::kOkCancel:
        return {kCancel, kOk};
    case box::kAbortRetryIgnore:
        return {kAbort, kRetry, kIgnore};
    case box::kYesNoCancel:
        return {kCancel, kYes, kNo};
    case box::kYesNo:
        return {kNo, kYes};
    case box::kRetryCancel:
        return {kCancel, kRetry};
    default:
        return {kOk};
    }
}

bool SomebodyToAsk() {
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

/// The next line typed, without its newline; false at the end of the input (or on a read
/// error) before any character.
bool ReadTypedLine(std::string& line) {
    line.clear();
    int c = std::getchar();
    for (; c != EOF && c != '\n'; c = std::getchar())
        line += static_cast<char>(c);
    return c == '\n' || !line.empty();
}

/// The first non-blank character of the next line typed, lower-cased; 0 at the end of
/// the input.
char ReadAnswerKey() {
    std::string line;
    if (!ReadTypedLine(line))
        return 0;
    for (char c : line) {
        if (!std::isspace(static_cast<unsigned char>(c)))
            return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return '\n';
}

int ShowMessageBox(const char* text, unsigned int style) {
    const std::vector<Choice> choices = ChoicesOf(style);
    if (!SomebodyToAsk())
        return choices.front().answer;
    std::fprintf(stderr, "\n%s\n", text != nullptr ? text : "");
    for (;;) {
        for (std::size_t i = 0; i < choices.size(); ++i)
            std::fprintf(stderr, "%s%s", i == 0 ? "" : " / ", choices[i].label);
        std::fputs("? ", stderr);
        std::fflush(stderr);
        const char key = ReadAnswerKey();
        if (key == 0)
            return choices.front().answer;
        if (key == '\n' && choices.size() == 1)
            return choices.front().answer;
        for (const Choice& choice : choices) {
            if (choice.key == key)
                return choice.answer;
        }
    }
}

bool AskDontAsk(const DontAskTexts& texts, bool& dontAskAgain) {
    dontAskAgain = false;
    if (!SomebodyToAsk())
        return false;
    std::fprintf(stderr, "\n%s\n%s\n", texts.caption != nullptr ? texts.caption : "",
                 texts.message != nullptr ? texts.message : "");
    bool affirmative = false;
    if (texts.affirmative != nullptr) {
        char key;
        do {
            std::fprintf(stderr, "%s (y) / %s (n)? ", texts.affirmative, texts.negative);
            std::fflush(stderr);
            key = ReadAnswerKey();
        } while (key != 0 && key != 'y' && key != 'n');
        if (key == 0)
            return false;
        affirmative = key == 'y';
    }
    std::fprintf(stderr, "%s? (y / N) ", texts.checkBox);
    std::fflush(stderr);
    dontAskAgain = ReadAnswerKey() == 'y';
    return affirmative;
}

void AlertMainWindow() {}

/// The full path of a typed path: a relative one starts in `folder` (or in the current
/// directory when there is none).
std::string ResolveTyped(const std::string& typed, const char* folder) {
    std::string path = typed;
    if (!IsLexicallyAbsolute(typed) && folder[0] != '\0')
        path = std::string(folder) + NativeSeparator() + typed;
    std::string full;
    return Files().fullPath(path.c_str(), full) ? full : path;
}

/// The file types of a filter, as the user reads them: "MDL Files (*.mdl), All Files (*.*)".
std::string FileTypesOf(const char* filter) {
    std::string types;
    for (const FileFilter& type : ParseFileFilter(filter)) {
        if (!types.empty())
            types += ", ";
        types += type.text;
    }
    return types;
}

bool LocateFile(const LocateFileTexts& texts, bool& cancelAll, std::string& chosen) {
    if (!SomebodyToAsk())
        return false;
    const std::string types = FileTypesOf(texts.filter);
    std::fprintf(stderr, "\n%s\n", texts.title);
    if (texts.proposedName[0] != '\0')
        std::fprintf(stderr, "  looking for %s\n", texts.proposedName);
    if (!types.empty())
        std::fprintf(stderr, "  file types: %s\n", types.c_str());
    std::fprintf(stderr, "  [%c] %s (type %.*s to tick it and cancel)\n", cancelAll ? 'x' : ' ',
                 texts.cancelAllLabel, static_cast<int>(kCancelAllWord.size()),
                 kCancelAllWord.data());
    for (;;) {
        if (texts.folder[0] != '\0')
            std::fprintf(stderr, "Path of the file (relative to %s), or an empty line to cancel: ",
                         texts.folder);
        else
            std::fputs("Path of the file, or an empty line to cancel: ", stderr);
        std::fflush(stderr);
        std::string line;
        if (!ReadTypedLine(line))
            return false;
        const LocateAnswer answer = ParseLocateAnswer(line);
        if (answer.kind == LocateAnswer::Kind::CancelAll)
            cancelAll = true;
        if (answer.kind != LocateAnswer::Kind::Chosen)
            return false;
        const std::string path = ResolveTyped(answer.path, texts.folder);
        if (Files().exists(path.c_str()) && !Files().isFolder(path.c_str())) {
            chosen = path;
            return true;
        }
        std::fprintf(stderr, "There is no file %s.\n", path.c_str());
    }
}

} // namespace

DialogServices& Dialogs() {
    static DialogServices table{
        .messageBox = ShowMessageBox,
        .askDontAsk = AskDontAsk,
        .alertMainWindow = AlertMainWindow,
        .locateFile = LocateFile,
    };
    return table;
}

} // namespace fileio::platform
