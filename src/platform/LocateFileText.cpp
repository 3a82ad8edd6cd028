// LocateFileText.cpp - the text rules of the locate-file dialog: the library's filter form
// (read by the Windows dialog) and the answer typed at the terminal (read on Linux).
// Compiled on every platform so that their tests run everywhere.

#include "platform/Platform.h"

namespace fileio::platform {

namespace {

constexpr char kFilterSeparator = '|';
constexpr std::string_view kFilterMark = "****";

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool IsQuote(char c) {
    return c == '\'' || c == '"';
}

} // namespace

std::vector<FileFilter> ParseFileFilter(std::string_view filter) {
    std::vector<FileFilter> filters;
    std::string_view pendingText;
    bool havePendingText = false;
    while (!filter.empty()) {
        const std::size_t end = filter.find(kFilterSeparator);
        const std::string_view field = filter.substr(0, end);
        filter = end == std::string_view::npos ? std::string_view() : filter.substr(end + 1);
        if (field.empty())
            break;
        if (field == kFilterMark)
            continue;
        if (havePendingText)
            filters.push_back({std::string(pendingText), std::string(field)});
        else
            pendingText = field;
        havePendingText = !havePendingText;
    }
    return filters;
}

LocateAnswer ParseLocateAnswer(std::string_view line) {
    std::string_view answer = TrimBlanks(line);
    if (answer == kCancelAllWord)
        return {.kind = LocateAnswer::Kind::CancelAll, .path = {}};
    if (answer.size() >= 2 && IsQuote(answer.front()) && answer.back() == answer.front())
        answer = answer.substr(1, answer.size() - 2);
    if (answer.empty())
        return {.kind = LocateAnswer::Kind::Cancel, .path = {}};
    return {.kind = LocateAnswer::Kind::Chosen, .path = std::string(answer)};
}

} // namespace fileio::platform
