// Platform.h - the one internal interface between the library and the operating system.
//
// Nothing outside src/platform/ includes a system header (<windows.h>, <unistd.h>, ...);
// subsystem code asks this layer instead. Two implementations exist, chosen by the build:
// posix/ for Linux and win32/ for Windows. Each service has the same meaning on both.
//
// Thread safety: every function here may be called from any thread unless its comment says
// otherwise. The layer is internal: it is never installed and none of it is exported.
//
// Replacing services in tests: each group of services that touches the outside world (files,
// the settings hive, dialogs, names and folders, network forms of paths) is reached through
// a table of function pointers, `XxxServices& Xxx()`, filled with the system's functions at
// start-up. A test overwrites entries of the table (to make the K-th write fail, a rename
// fail, the disk fill up, or a drive table or mount table hold what it needs) and puts the
// saved table back when it ends; ScopedServices<T> below does both. Memory and the mutex are
// called directly: a test has no reason to replace them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fileio::platform {

// ---------------------------------------------------------------------------------------
// System memory
// ---------------------------------------------------------------------------------------

/// Returns `bytes` bytes of system memory, aligned for any fundamental type. The contents
/// are unspecified. Never returns null: when the system cannot supply the memory the
/// process ends (see Fatal). A request of 0 bytes returns a unique non-null pointer.
void* AllocateSystemMemory(unsigned long long bytes);

/// Gives back memory from AllocateSystemMemory. Null is ignored.
void ReleaseSystemMemory(void* p) noexcept;

/// Ends the process at once after writing `why` to the standard error stream (and to the
/// debugger trace on Windows). Used for conditions the library does not report: exhausted
/// memory and a pool asked to free a pointer it never handed out.
[[noreturn]] void Fatal(const char* why) noexcept;

// ---------------------------------------------------------------------------------------
// Mutual exclusion
// ---------------------------------------------------------------------------------------

/// A non-recursive lock: a critical section on Windows (spin count 0), a pthread mutex on
/// POSIX. Not copyable. Constructing one cannot fail in a way the caller sees: a system
/// refusal ends the process.
class Mutex {
public:
    Mutex() noexcept;
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock() noexcept;
    void Unlock() noexcept;

private:
    // Large and aligned enough for a CRITICAL_SECTION (40 bytes) or a pthread_mutex_t (40
    // bytes on x86-64 glibc); each implementation checks this with a static_assert.
    alignas(8) unsigned char storage_[64];
};

/// Holds a Mutex for the lifetime of the guard.
class MutexGuard {
public:
    explicit MutexGuard(Mutex& m) noexcept : mutex_(m) { mutex_.Lock(); }
    ~MutexGuard() { mutex_.Unlock(); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

private:
    Mutex& mutex_;
};

/// Replaces a service table for the lifetime of the guard and restores the saved one after.
/// Usage: `ScopedServices<FileServices> guard(Files()); Files().write = FailingWrite;`
template <class Table>
class ScopedServices {
public:
    explicit ScopedServices(Table& table) : table_(table), saved_(table) {}
    ~ScopedServices() { table_ = saved_; }
    ScopedServices(const ScopedServices&) = delete;
    ScopedServices& operator=(const ScopedServices&) = delete;

private:
    Table& table_;
    Table saved_;
};

// ---------------------------------------------------------------------------------------
// Files and folders
// ---------------------------------------------------------------------------------------

/// The platform's own path separator: '\\' on Windows, '/' on Linux.
char NativeSeparator() noexcept;

/// What reading a whole file found.
enum class ReadResult { Read, Missing, Failed };

/// A held advisory lock on a lock file; kNoFileLock when none could be taken.
using FileLockToken = std::intptr_t;
inline constexpr FileLockToken kNoFileLock = -1;

/// Whole-file services: what a small store that replaces its file atomically needs.
/// Paths are native, 8-bit, as the system takes them.
struct FileServices {
    /// Reads the whole file into `bytes` (replacing its content). Missing: there is no such
    /// file (or no such folder); Failed: it exists but cannot be read.
    ReadResult (*readWholeFile)(const char* path, std::string& bytes);
    /// Creates or truncates `path`, writes `size` bytes and flushes them to the disk before
    /// closing. False on any failure (the file may then hold part of the data).
    bool (*writeFileDurably)(const char* path, const void* data, std::size_t size);
    /// Renames `from` to `to`, replacing `to` atomically when it exists: a reader sees the old
    /// file or the new one, never a mixture. The folder is flushed afterwards where the
    /// system allows it, so that the rename survives a crash.
    bool (*replaceFile)(const char* from, const char* to);
    /// Removes a file. False when it could not be removed (a missing file included).
    bool (*removeFile)(const char* path);
    /// Opens (creating when missing) the lock file `path` and takes an exclusive advisory
    /// lock on it, waiting while another process holds it. The lock file's content is never
    /// used. Returns kNoFileLock when the file cannot be opened or the lock cannot be taken.
    FileLockToken (*lockFile)(const char* path);
    /// Releases a lock from lockFile and closes its file. kNoFileLock is ignored.
    void (*unlockFile)(FileLockToken token);
};

/// The process's file services, filled with the system's functions at start-up.
FileServices& Files();

// ---------------------------------------------------------------------------------------
// Settings hive
// ---------------------------------------------------------------------------------------

/// The current user's settings: keys below the user's root (HKEY_CURRENT_USER on Windows),
/// named by paths of key names separated by backslashes ("Software\Varn, Inc.\App\Sec"),
/// each holding named string values. Key and value names compare case-insensitively.
///
/// Windows: the registry, through the Win32 API. Linux: one text file per user,
/// $XDG_CONFIG_HOME/varn-settings.hive ($XDG_CONFIG_HOME defaults to ~/.config), whose
/// format is described in HiveFile.h; every change takes the advisory lock of the sibling
/// file varn-settings.hive.lock, re-reads the file, and replaces it atomically through the
/// file services above. The configuration folder is never created: when it is missing or
/// cannot be written, writers fail and readers find nothing.
struct SettingsHiveServices {
    /// Reads value `name` of `key`. True, with `value` set, when the key exists and holds
    /// the value as a string; false when the key or value is absent, the value is not a
    /// string, or the store cannot be read.
    bool (*readString)(const char* key, const char* name, std::string& value);
    /// Creates `key` (with any missing parents) and sets value `name` to `value`.
    bool (*writeString)(const char* key, const char* name, const char* value);
    /// Removes value `name` of `key`. True only when a value was removed.
    bool (*deleteValue)(const char* key, const char* name);
    /// Removes the subkey `name` of `parent`, with its values and all keys below it. True
    /// only when a key was removed. An empty `name` removes nothing.
    bool (*deleteKey)(const char* parent, const char* name);
    /// Returns the descriptions of damage found in the store since the last call (one line
    /// each, every damaged spot described once per process) and forgets them.
    std::string (*takeDamageReport)();
};

/// The process's settings hive, filled with the system's functions at start-up.
SettingsHiveServices& Hive();

/// A key path in the form both hives use: names separated by one backslash, empty names
/// dropped ("\A\\B\" gives "A\B"). Empty when no name is left, which names no key: the
/// hives' functions take any path and read and write through this form.
std::string NormalizeKeyPath(std::string_view key);

// ---------------------------------------------------------------------------------------
// Dialogs
// ---------------------------------------------------------------------------------------

/// Message-box styles and answers use the Win32 values on every platform.
namespace box {
inline constexpr unsigned int kOk = 0, kOkCancel = 1, kAbortRetryIgnore = 2, kYesNoCancel = 3,
                              kYesNo = 4, kRetryCancel = 5;
inline constexpr unsigned int kButtonsMask = 0x0F;
inline constexpr unsigned int kIconStop = 16, kIconQuestion = 32, kIconExclamation = 48,
                              kIconInformation = 64;
inline constexpr int kAnswerOk = 1, kAnswerCancel = 2, kAnswerAbort = 3, kAnswerRetry = 4,
                     kAnswerIgnore = 5, kAnswerYes = 6, kAnswerNo = 7;
} // namespace box

/// The texts of the don't-ask question, chosen by the caller.
struct DontAskTexts {
    const char* caption;
    const char* message;
    const char* affirmative; // null: the affirmative button is hidden (an OK-only question)
    const char* negative;
    const char* checkBox;
};

/// Modal questions to the user. Windows: the system's message box and a dialog built in
/// memory. Linux: a question on the terminal when standard input and standard error are
/// both terminals; otherwise nobody is asked and the answer is the one that stops.
struct DialogServices {
    /// Shows `text` in a modal box of `style` (box:: buttons plus icon), captioned with the
    /// application's name, and returns the box::kAnswer* of the button pressed. Without
    /// anybody to ask: Cancel where the box has one, else No, else Abort, else OK.
    int (*messageBox)(const char* text, unsigned int style);
    /// Asks a yes/no question with a "don't ask again" check box. Returns true for the
    /// affirmative answer and sets `dontAskAgain` to the check box's state. Without anybody
    /// to ask: false, with the box unticked.
    bool (*askDontAsk)(const DontAskTexts& texts, bool& dontAskAgain);
    /// Before a box is shown: tells the current thread's main window, if it has one, that
    /// a system key went down (so a menu it tracks lets go). Does nothing on Linux.
    void (*alertMainWindow)();
};

/// The process's dialogs, filled with the system's functions at start-up.
DialogServices& Dialogs();

// ---------------------------------------------------------------------------------------
// Names, folders and traces of the system
// ---------------------------------------------------------------------------------------

/// Facts about the running program and its system.
struct SystemServices {
    /// The folder of the running program's executable, without a trailing separator.
    std::string (*applicationFolder)();
    /// The running program's name: its executable's file name without folder and suffix.
    std::string (*applicationName)();
    /// Writes `text` as it is to the debugger's trace (Windows) or the standard error
    /// stream (Linux).
    void (*debugTrace)(const char* text);
    /// Plays the system's warning sound of the given kind (the Win32 MessageBeep values:
    /// 0 default, 16 stop, 32 question, 48 exclamation, 64 information). Linux rings the
    /// terminal's bell when standard error is a terminal.
    void (*warningSound)(unsigned int kind);
};

/// The process's system services, filled with the system's functions at start-up.
SystemServices& System();

// ---------------------------------------------------------------------------------------
// Network forms of paths
// ---------------------------------------------------------------------------------------

} // namespace fileio::platform
