// Output.cpp - standard output, standard error and the progress bar.

#include "Output.h"

#include "Terminal.h"
#include "Text.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace fileio::tool {

namespace {

constexpr const char* kProgram = "fileio: ";
/// The terminal's colour sequences (SGR) of each Colour, and the reset.
constexpr const char* kColourCodes[] = {"\x1b[32m", "\x1b[31m", "\x1b[33m"};
constexpr const char* kColourReset = "\x1b[0m";
/// The bar is redrawn at most this often.
constexpr std::chrono::milliseconds kRedraw{100};
/// The bar's line when the terminal does not tell its width, and the bar's own width.
constexpr int kDefaultColumns = 80;
constexpr int kBarWidth = 30;
/// Back to the start of the line, and the line wiped to its end.
constexpr const char* kWipeLine = "\r\x1b[K";

bool ColoursWanted() {
    const char* noColour = std::getenv("NO_COLOR");
    return noColour == nullptr || *noColour == '\0';
}

int DelayFromEnvironment() {
    const char* delay = std::getenv("FILEIO_PROGRESS_DELAY");
    if (delay == nullptr || *delay == '\0')
        return kProgressDelayMs;
    char* end = nullptr;
    const long value = std::strtol(delay, &end, 10);
    return *end == '\0' && value >= 0 ? static_cast<int>(std::min(value, 3'600'000L))
                                      : kProgressDelayMs;
}

} // namespace

Output::Output(std::FILE* out, std::FILE* err, bool quiet, bool json)
    : m_out(out), m_err(err), m_quiet(quiet), m_outTerminal(IsTerminal(out)),
      m_colourOut(ColoursWanted() && m_outTerminal),
      m_colourErr(ColoursWanted() && IsTerminal(err)),
      m_progress(!quiet && !json && IsTerminal(err)), m_progressDelayMs(DelayFromEnvironment()) {}

void Output::Data(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), m_out);
}

void Output::Error(std::string_view message) {
    std::fflush(m_out);
    std::string line = kProgram;
    line.append(message);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), m_err);
}

void Output::Note(std::string_view message) {
    if (!m_quiet)
        Error(message);
}

std::string Output::Paint(std::string_view text, Colour colour, bool errors) const {
    if (!(errors ? m_colourErr : m_colourOut))
        return std::string(text);
    return Concat({kColourCodes[static_cast<int>(colour)], text, kColourReset});
}

bool Output::Failed() const {
    return std::fflush(m_out) != 0 || std::ferror(m_out) != 0;
}

ProgressBar::ProgressBar(const Output& output, std::string label)
    : m_output(output), m_label(std::move(label)), m_start(std::chrono::steady_clock::now()),
      m_lastDraw(m_start) {}

ProgressBar::~ProgressBar() {
    if (m_drawn) {
        std::fputs(kWipeLine, m_output.Err());
        std::fflush(m_output.Err());
    }
}

void ProgressBar::Advance(unsigned long long done, unsigned long long total) {
    if (!m_output.ShowsProgress())
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_start < std::chrono::milliseconds(m_output.ProgressDelayMs()) ||
        (m_drawn && now - m_lastDraw < kRedraw && done < total))
        return;
    m_lastDraw = now;
    m_drawn = true;
    const int percent = total == 0 ? 100 : static_cast<int>(done * 100 / total);
    const int filled = percent * kBarWidth / 100;
    const std::string bar = Concat({" [", std::string(static_cast<std::size_t>(filled), '#'),
                                    std::string(static_cast<std::size_t>(kBarWidth - filled), '.'),
                                    "] ", std::to_string(percent), "%"});
    int columns = TerminalColumns(m_output.Err());
    if (columns <= 0)
        columns = kDefaultColumns;
    const std::size_t room =
        static_cast<std::size_t>(std::max(0, columns - 1 - static_cast<int>(bar.size())));
    const std::string line = Concat({kWipeLine, std::string_view(m_label).substr(0, room), bar});
    std::fputs(line.c_str(), m_output.Err());
    std::fflush(m_output.Err());
}

} // namespace fileio::tool
