// Output.h - what the tool prints, and where: data on standard output, diagnostics and the
// progress bar on standard error.
//
// Colours are used only on a terminal, and never when the environment variable NO_COLOR is
// set to a non-empty value. The progress bar is drawn only on a terminal, never with
// --quiet or --json, and only for work that has run longer than FILEIO_PROGRESS_DELAY
// milliseconds (kProgressDelayMs unless set). Text taken from files is passed through
// Printable (Text.h) by the callers before it reaches a terminal.
#pragma once

#include "ProjectReader.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

namespace fileio::tool {

/// How long work runs before its progress bar shows, unless FILEIO_PROGRESS_DELAY says.
inline constexpr int kProgressDelayMs = 500;

enum class Colour : unsigned char { Good, Bad, Doubtful };

class Output {
public:
    /// Decides the colours and the progress bar from the streams and the environment.
    Output(std::FILE* out, std::FILE* err, bool quiet, bool json);

    /// Writes `text` to standard output as it is.
    void Data(std::string_view text);
    /// "fileio: " and the message on standard error.
    void Error(std::string_view message);
    /// As Error, unless --quiet was given.
    void Note(std::string_view message);
    /// `text` in the colour, for standard output (`errors` false) or standard error.
    [[nodiscard]] std::string Paint(std::string_view text, Colour colour,
                                    bool errors = false) const;

    [[nodiscard]] std::FILE* Out() const { return m_out; }
    [[nodiscard]] std::FILE* Err() const { return m_err; }
    /// Standard output is a terminal (text from a file is then shown printable).
    [[nodiscard]] bool OutIsTerminal() const { return m_outTerminal; }
    [[nodiscard]] bool ShowsProgress() const { return m_progress; }
    [[nodiscard]] int ProgressDelayMs() const { return m_progressDelayMs; }
    /// Standard output could not take everything written to it.
    [[nodiscard]] bool Failed() const;

private:
    std::FILE* m_out;
    std::FILE* m_err;
    bool m_quiet;
    bool m_outTerminal;
    bool m_colourOut;
    bool m_colourErr;
    bool m_progress;
    int m_progressDelayMs;
};

/// A progress bar on standard error for one piece of work, drawn once the work has run
/// longer than the delay and wiped again when the bar is destroyed.
class ProgressBar : public WorkMeter {
public:
    ProgressBar(const Output& output, std::string label);
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Advance(unsigned long long done, unsigned long long total) override;

private:
    const Output& m_output;
    std::string m_label;
    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_lastDraw;
    bool m_drawn = false;
};

} // namespace fileio::tool
