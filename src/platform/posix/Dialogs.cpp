// Dialogs.cpp - modal questions, POSIX implementation: a question on the terminal, asked
// only when standard input and standard error are both terminals. Otherwise nobody is
// there to answer and the answer is the one that stops.

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

/// The first non-blank character of the next line typed, lower-cased; 0 at the end of
/// the input.
char ReadAnswerKey() {
    std::string line;
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar())
        line += static_cast<char>(c);
    if (line.empty() && std::feof(stdin))
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

} // namespace

DialogServices& Dialogs() {
    static DialogServices table{
        .messageBox = ShowMessageBox,
        .askDontAsk = AskDontAsk,
        .alertMainWindow = AlertMainWindow,
    };
    return table;
}

} // namespace fileio::platform
