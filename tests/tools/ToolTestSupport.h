// ToolTestSupport.h - running the fileio program from the tool's tests: a work folder that is
// the current folder while a test runs, the program's output with the work folder's path
// and the separators made the same on every platform, and the files the tests start from
// (the data tree, the samples, little binary projects).
#pragma once

#include "fileio/FileIO.h"
#include "platform/Platform.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace fileio::test {

inline const std::string kToolData = FILEIO_TOOL_DATA;
inline const std::string kSamples = FILEIO_SAMPLES;

/// How long one run of the program may take, and how often a start of it is tried: Wine
/// under load now and then refuses to start a process ("Internal error") or loses it while
/// its DLLs are being set up, before it wrote anything, which is not what these tests are
/// about. A program that ran is never run again.
constexpr int kToolTimeoutMs = 60'000;
constexpr int kStartAttempts = 3;
/// The exit status of a Windows process that died while its DLLs were being set up.
constexpr int kDllInitFailed = static_cast<int>(0xC0000142u);

using ToolRun = platform::ProcessOutcome;

/// Whether the program never got to run: it was not started, or its loader gave up.
inline bool NeverRan(const ToolRun& run) {
    return !run.started ||
           (run.exitCode == kDllInitFailed && run.output.empty() && run.errors.empty());
}

/// Runs the fileio program beside the test program with `args` (no standard input).
inline ToolRun RunTool(const std::vector<std::string>& args) {
    const std::string base =
        platform::System().applicationFolder() + platform::NativeSeparator() + "fileio";
    std::vector<std::string> argv{platform::Files().exists((base + ".exe").c_str()) ? base + ".exe"
                                                                                    : base};
    argv.insert(argv.end(), args.begin(), args.end());
    ToolRun run;
    for (int attempt = 0; attempt < kStartAttempts && (attempt == 0 || NeverRan(run)); ++attempt) {
        run = ToolRun();
        platform::Processes().run(argv, kToolTimeoutMs, run);
    }
    if (NeverRan(run) || run.timedOut)
        ADD_FAILURE() << "the tool did not run to its end: " << run.why;
    return run;
}

/// A little binary project: "B", then tokens and values as the library writes them.
template <class... Items> std::string BinaryProject(const Items&... items) {
    MemoryStream stream;
    stream.Open(FM_VARN | FM_BINARY);
    (stream << ... << items);
    return std::string(reinterpret_cast<const char*>(stream.GetData()), stream.GetLength());
}

/// A temporary folder that is the current folder for the life of the object (the program
/// is given paths relative to it, as a person types them).
class WorkFolder {
public:
    WorkFolder() : m_previous(std::filesystem::current_path()) {
        std::filesystem::current_path(m_folder.Path());
        m_path = std::filesystem::current_path().string();
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::current_path(m_previous, ignored);
    }

    [[nodiscard]] const TempFolder& Files() const { return m_folder; }
    /// The folder as the program sees it.
    [[nodiscard]] const std::string& Path() const { return m_path; }

    void CopyIn(const std::string& from, std::string_view to) const {
        std::filesystem::copy(from, m_folder.Join(to),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
    }

    /// The text with the work folder written "<work>" and every "\" as "/" (but for the
    /// tool's escapes of unprintable bytes, "\xNN"), so that the output of both platforms
    /// compares with one expected text.
    [[nodiscard]] std::string Normalised(const std::string& text) const {
        return Slashed(WithoutWork(text));
    }

    /// The text with the work folder written "<work>" (its separators either way).
    [[nodiscard]] std::string WithoutWork(std::string text) const {
        for (const std::string& form : {m_path, Slashed(m_path)}) {
            for (std::size_t at = text.find(form); at != std::string::npos;
                 at = text.find(form, at))
                text.replace(at, form.size(), "<work>");
        }
        return text;
    }

private:
    static std::string Slashed(std::string text) {
        const auto isHex = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool escape = i + 3 < text.size() && text[i + 1] == 'x' && isHex(text[i + 2]) &&
                                isHex(text[i + 3]);
            if (text[i] == '\\' && !escape)
                text[i] = '/';
        }
        return text;
    }

    TempFolder m_folder{"fileio-tool"};
    std::filesystem::path m_previous;
    std::string m_path;
};

} // namespace fileio::test
