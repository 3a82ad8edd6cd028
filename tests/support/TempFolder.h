// TempFolder.h - the one way a test gets files of its own: a new folder under the system's
// temporary folder, made with a random name that the system itself checks for absence
// (creating a folder that exists fails), and removed with everything in it at the end.
//
// Test processes run in parallel under `ctest -j`; a name from the clock or a per-process
// counter is shared by two of them sooner or later, a name that the system refused to
// create twice never is.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

namespace fileio::test {

class TempFolder {
public:
    /// A new empty folder named `prefix` followed by a random number.
    explicit TempFolder(std::string_view prefix = "fileio-test") {
        std::random_device random;
        const std::filesystem::path base = std::filesystem::temp_directory_path();
        for (int attempt = 0; attempt < kAttempts && m_path.empty(); ++attempt) {
            const std::filesystem::path candidate =
                base / (std::string(prefix) + "-" + std::to_string(random()) + "-" +
                        std::to_string(random()));
            std::error_code error;
            if (std::filesystem::create_directory(candidate, error))
                m_path = candidate.string();
        }
        if (m_path.empty())
            ADD_FAILURE() << "cannot make a temporary folder under " << base;
    }
    ~TempFolder() {
        std::error_code ignored;
        // A test may have taken the owner's rights away to provoke a failure.
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path, ignored))
            std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ignored);
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// The folder in native 8-bit form, without a trailing separator.
    [[nodiscard]] const std::string& Path() const { return m_path; }
    /// The folder joined with `relative` (written with "/"), in native form.
    [[nodiscard]] std::string Join(std::string_view relative) const {
        return (std::filesystem::path(m_path) / std::filesystem::path(relative))
            .make_preferred()
            .string();
    }
    /// Writes a file of that content (creating its folders) and returns its native path.
    std::string WriteFile(std::string_view relative, std::string_view content) const {
        const std::string file = Join(relative);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream out(file, std::ios::binary);
        out.write(content.data(), static_cast<std::streamsize>(content.size()));
        return file;
    }
    /// Creates a folder (and its parents) and returns its native path.
    std::string MakeFolder(std::string_view relative) const {
        const std::string folder = Join(relative);
        std::filesystem::create_directories(folder);
        return folder;
    }
    /// The content of a file, or "<missing>".
    [[nodiscard]] std::string ReadFile(std::string_view relative) const {
        std::ifstream in(Join(relative), std::ios::binary);
        if (!in)
            return "<missing>";
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

private:
    static constexpr int kAttempts = 100;
    std::string m_path;
};

} // namespace fileio::test
