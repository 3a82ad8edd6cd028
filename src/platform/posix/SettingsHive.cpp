// SettingsHive.cpp - the settings hive on Linux: one text file per user (HiveFile.h).
//
// Reading takes no lock: the file is only ever replaced whole by a rename, so a reader
// sees the old file or the new one. Every change runs under the exclusive advisory lock of
// a separate lock file (the hive file itself cannot carry the lock, since each change
// replaces it with a new file): take the lock, re-read the file, apply the change, write
// the whole text through the atomic save (a temporary file beside the hive file, flushed to
// the disk and renamed over it), release the lock. A writer killed at any moment leaves the
// old file or the new one, and at most a temporary file of its own beside them.

#include "platform/HiveFile.h"
#include "platform/Platform.h"

#include <cstdlib>
#include <functional>
#include <pwd.h>
#include <set>
#include <string>
#include <unistd.h>

namespace fileio::platform {

namespace {

constexpr const char* kHiveFileName = "/varn-settings.hive";

/// $XDG_CONFIG_HOME when it is an absolute path, else the home folder's ".config"; empty
/// when neither is known.
std::string ConfigurationFolder() {
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    if (xdg != nullptr && xdg[0] == '/')
        return xdg;
    const char* home = std::getenv("HOME");
    if (home == nullptr || home[0] != '/') {
        const passwd* user = ::getpwuid(::getuid());
        home = user != nullptr ? user->pw_dir : nullptr;
    }
    if (home == nullptr || home[0] != '/')
        return {};
    return std::string(home) + "/.config";
}

std::string HivePath() {
    const std::string folder = ConfigurationFolder();
    return folder.empty() ? std::string() : folder + kHiveFileName;
}

// Damage already told, so that a damaged line is reported once per process, not at every
// read of the file, and the report not yet taken.
Mutex& DamageMutex() {
    static Mutex mutex;
    return mutex;
}
std::set<std::string>& DamageTold() {
    static std::set<std::string> told;
    return told;
}
std::string& PendingDamage() {
    static std::string pending;
    return pending;
}

void NoteDamage(const std::string& path, const HiveDocument& document) {
    const std::vector<HiveDocument::DamagedLine> damage = document.Damage();
    if (damage.empty())
        return;
    MutexGuard guard(DamageMutex());
    for (const HiveDocument::DamagedLine& line : damage) {
        const std::string text = EscapeHiveText(line.text, {});
        if (!DamageTold().insert(path + '\n' + text).second)
            continue;
        PendingDamage() += "Settings file " + path + ", line " + std::to_string(line.number) +
                           ": unreadable line skipped and kept as it is: " + text + '\n';
    }
}

std::string TakeDamageReport() {
    MutexGuard guard(DamageMutex());
    std::string report;
    report.swap(PendingDamage());
    if (!report.empty())
        report.pop_back(); // the last line's end
    return report;
}

/// Reads and parses the hive file. False when it exists but cannot be read.
bool Load(const std::string& path, std::string& text) {
    switch (Files().readWholeFile(path.c_str(), text)) {
    case ReadResult::Read:
        return true;
    case ReadResult::Missing:
        text.clear();
        return true;
    case ReadResult::Failed:
        break;
    }
    return false;
}

/// Applies `change` to the hive file under its lock and writes the result back when the
/// change reports that it changed something. Returns the change's answer, or false when
/// the file could not be locked, read or replaced.
bool Change(const std::function<bool(HiveDocument&)>& change, bool writeWhenUnchanged) {
    const std::string path = HivePath();
    if (path.empty())
        return false;
    const FileLockToken lock = Files().lockFile((path + ".lock").c_str());
    if (lock == kNoFileLock)
        return false;
    bool done = false;
    std::string text;
    if (Load(path, text)) {
        HiveDocument document(text);
        NoteDamage(path, document);
        const bool changed = change(document);
        if (!changed) {
            done = writeWhenUnchanged;
        } else {
            const std::string updated = document.Text();
            std::string error;
            done = SaveFileAtomically(path.c_str(), updated.data(), updated.size(), error);
        }
    }
    Files().unlockFile(lock);
    return done;
}

bool ReadString(const char* key, const char* name, std::string& value) {
    const std::string path = HivePath();
    if (path.empty() || NormalizeKeyPath(key).empty())
        return false;
    std::string text;
    if (!Load(path, text) || text.empty())
        return false;
    const HiveDocument document(text);
    NoteDamage(path, document);
    return document.Find(key, name, value);
}

bool WriteString(const char* key, const char* name, const char* value) {
    if (NormalizeKeyPath(key).empty())
        return false;
    // Writing the text a value already holds succeeds without touching the file.
    return Change([&](HiveDocument& document) { return document.Set(key, name, value); }, true);
}

bool DeleteValue(const char* key, const char* name) {
    return Change([&](HiveDocument& document) { return document.Remove(key, name); }, false);
}

bool DeleteKey(const char* parent, const char* name) {
    if (NormalizeKeyPath(name).empty())
        return false;
    const std::string key = std::string(parent) + '\\' + name;
    return Change([&](HiveDocument& document) { return document.RemoveKey(key); }, false);
}

} // namespace

SettingsHiveServices& Hive() {
    static SettingsHiveServices table{
        .readString = ReadString,
        .writeString = WriteString,
        .deleteValue = DeleteValue,
        .deleteKey = DeleteKey,
        .takeDamageReport = TakeDamageReport,
    };
    return table;
}

} // namespace fileio::platform
