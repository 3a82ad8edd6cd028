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
// the settings hive, dialogs, names and folders, network forms of paths, sockets, child
// processes, the internet) is reached through
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
#include <vector>

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

/// A non-recursive lock: a critical section on Windows (spin count 0); on POSIX an atomic
/// word that is spun on briefly before the thread sleeps on it. Not copyable. Constructing one
/// cannot fail in a way the caller sees: a system refusal ends the process.
class Mutex {
public:
    Mutex() noexcept;
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock() noexcept;
    void Unlock() noexcept;

private:
    // Large and aligned enough for a CRITICAL_SECTION (40 bytes) or the POSIX lock word;
    // each implementation checks this with a static_assert.
    alignas(8) unsigned char m_storage[64];
};

/// Holds a Mutex for the lifetime of the guard.
class MutexGuard {
public:
    explicit MutexGuard(Mutex& m) noexcept : m_mutex(m) { m_mutex.Lock(); }
    ~MutexGuard() { m_mutex.Unlock(); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

private:
    Mutex& m_mutex;
};

/// Replaces a service table for the lifetime of the guard and restores the saved one after.
/// Usage: `ScopedServices<FileServices> guard(Files()); Files().write = FailingWrite;`
template <class Table> class ScopedServices {
public:
    explicit ScopedServices(Table& table) : m_table(table), m_saved(table) {}
    ~ScopedServices() { m_table = m_saved; }
    ScopedServices(const ScopedServices&) = delete;
    ScopedServices& operator=(const ScopedServices&) = delete;

private:
    Table& m_table;
    Table m_saved;
};

// ---------------------------------------------------------------------------------------
// Files and folders
// ---------------------------------------------------------------------------------------
// Paths are 8-bit text as the library holds it: the system code page on Windows (converted
// to UTF-16 for the wide system calls), bytes as they are on POSIX. Both separators are
// accepted on input; the system's own separator comes out.

/// The two ways of reading a path: Windows rules ("\" native, drive letters and UNC
/// names, case-insensitive names) or POSIX rules ("/" native, case-sensitive names, a
/// drive-letter path is plain text that stays absolute). The textual path algorithms take
/// the style as a parameter, so each platform's rules can be tested on the other.
enum class PathStyle { Windows, Posix };

#if defined(_WIN32)
inline constexpr PathStyle kNativePathStyle = PathStyle::Windows;
#else
inline constexpr PathStyle kNativePathStyle = PathStyle::Posix;
#endif

/// One entry of a folder listing.
struct FolderEntry {
    std::string name;      ///< the entry's own name, without its folder
    bool isFolder = false; ///< a folder (for a link: the link's target is a folder)
    bool isLink = false;   ///< a symbolic link or other reparse point: never descended into
};

/// The platform's own path separator: '\\' on Windows, '/' on Linux.
inline char NativeSeparator() noexcept {
    return kNativePathStyle == PathStyle::Windows ? '\\' : '/';
}

/// What reading a whole file found.
enum class ReadResult { Read, Missing, Failed };

/// A held advisory lock on a lock file; kNoFileLock when none could be taken.
using FileLockToken = std::intptr_t;
inline constexpr FileLockToken kNoFileLock = -1;

/// An open file; kNoFile when none could be opened.
using FileHandle = std::intptr_t;
inline constexpr FileHandle kNoFile = -1;

/// What the status of a path allows a writer.
enum class FileAccess {
    Missing,  ///< nothing by that name
    Writable, ///< a file that may be replaced
    ReadOnly, ///< a file marked read-only (no write permission bit at all on POSIX, the
              ///< read-only attribute on Windows), or a folder
    Unknown,  ///< the status cannot be read
};

struct FileServices {
    // ---- whole files

    /// Reads the whole file into `bytes` (replacing its content). Missing: there is no such
    /// file (or no such folder); Failed: it exists but cannot be read.
    ReadResult (*readWholeFile)(const char* path, std::string& bytes);
    /// Renames `from` (a file made by createBeside) over `to`, replacing `to` atomically
    /// when it exists: a reader sees the old file or the new one, never a mixture, and a
    /// failure leaves `to` as it was. POSIX: rename, then the folder is flushed so that the
    /// rename survives a crash. Windows: ReplaceFileW for an existing `to` (its attributes
    /// and security kept), MoveFileExW with write-through for a new one, each retried a few
    /// times while another program holds the file.
    bool (*replaceFile)(const char* from, const char* to);
    /// Removes a file. False when it could not be removed (a missing file included).
    bool (*removeFile)(const char* path);
    /// Opens (creating when missing) the lock file `path` and takes an exclusive advisory
    /// lock on it, waiting while another process holds it. The lock file's content is never
    /// used. Returns kNoFileLock when the file cannot be opened or the lock cannot be taken.
    FileLockToken (*lockFile)(const char* path);
    /// Releases a lock from lockFile and closes its file. kNoFileLock is ignored.
    void (*unlockFile)(FileLockToken token);

    // ---- files and folders: existence, copies, renames, folders, current directory

    /// True when `path` names an existing file or folder.
    bool (*exists)(const char* path);
    /// True when `path` names an existing folder.
    bool (*isFolder)(const char* path);
    /// Copies the file `from` over `to`, creating or replacing it. False when `from` cannot
    /// be read, `to` cannot be written, or both name the same file.
    bool (*copyFile)(const char* from, const char* to);
    /// Removes an empty folder.
    bool (*removeFolder)(const char* path);
    /// Renames (moves within one volume) a file or folder. An existing `to` is never
    /// replaced: the call fails instead (replaceFile replaces).
    bool (*renameFile)(const char* from, const char* to);
    /// Creates one folder whose parent exists.
    bool (*createFolder)(const char* path);
    /// The process's current directory, as the system spells it (no trailing separator
    /// except for a root).
    bool (*getCurrentDirectory)(std::string& out);
    /// Makes `path` the process's current directory.
    bool (*setCurrentDirectory)(const char* path);
    /// Full-path resolution against the current directory: GetFullPathNameW on Windows,
    /// LexicalFullPath (below) on POSIX. False when the path cannot be resolved.
    bool (*fullPath)(const char* path, std::string& out);
    /// The entries of a folder, "." and ".." left out, in the order the system gives them.
    bool (*listFolder)(const char* folder, std::vector<FolderEntry>& out);

    // ---- open files: the file stream's transport and the atomic save. A failing call
    // leaves the system's reason for System().lastErrorText().

    /// What the status of `path` allows a writer.
    FileAccess (*access)(const char* path);
    /// The file a path finally names, symbolic links followed (relative link texts read
    /// against the link's folder); the path itself when it is no link or names nothing.
    std::string (*finalPath)(const char* path);
    /// Opens an existing file for reading; other programs may read it meanwhile but not
    /// write it (Windows sharing; POSIX has no such rule).
    FileHandle (*openForReading)(const char* path);
    /// Creates a new empty file, for reading and writing, in the folder of `target` (which
    /// need not exist), named after it with a unique ending that begins ".vrn"; its name
    /// goes to `temporaryPath`. No other program may open it meanwhile (Windows). When
    /// `target` exists its permission bits are copied (POSIX).
    FileHandle (*createBeside)(const char* target, std::string& temporaryPath);
    /// Reads up to `size` bytes at the file's position: how many were read (0 at the end),
    /// or -1 on failure.
    long long (*readFile)(FileHandle file, void* buffer, std::size_t size);
    /// Writes all `size` bytes at the file's position; false on failure (a full disk too).
    bool (*writeFile)(FileHandle file, const void* data, std::size_t size);
    /// Moves the file's position to `offset` from its start.
    bool (*seekFile)(FileHandle file, unsigned long long offset);
    /// The file's length in bytes, or -1 on failure.
    long long (*fileLength)(FileHandle file);
    /// Writes the file's data through to the disk.
    bool (*flushFile)(FileHandle file);
    /// Closes the file; false when the system reports a failure (written data may be lost).
    bool (*closeFile)(FileHandle file);
};

/// The process's file services, filled with the system's functions at start-up.
FileServices& Files();

/// A save that replaces its target atomically, built on the file services: the data go
/// into a temporary file beside the final target (a symbolic link is followed, so the link
/// stays and its target is replaced), which is flushed to the disk, closed and renamed
/// over the target. A failure at any step removes the temporary file and leaves the old
/// target byte for byte as it was; no step ever deletes or truncates the target.
class AtomicSave {
public:
    AtomicSave() = default;
    /// Abandons a save that was neither committed nor abandoned.
    ~AtomicSave() { Abandon(); }
    AtomicSave(const AtomicSave&) = delete;
    AtomicSave& operator=(const AtomicSave&) = delete;

    /// Creates the temporary file for `target`. False, with the system's reason in `error`,
    /// when it cannot be made.
    bool Begin(const char* target, std::string& error);
    /// The temporary file, open for writing (kNoFile before Begin and after the end).
    [[nodiscard]] FileHandle File() const { return m_file; }
    [[nodiscard]] const std::string& TemporaryPath() const { return m_temporary; }
    /// The file the rename replaces (the target with its links followed).
    [[nodiscard]] const std::string& FinalTarget() const { return m_final; }
    /// Flushes the temporary file to the disk, closes it and renames it over the target.
    /// False, with the system's reason in `error`, when a step fails: the temporary file is
    /// then removed and the target left as it was.
    bool Commit(std::string& error);
    /// Closes and removes the temporary file; the target stays as it was.
    void Abandon();

private:
    FileHandle m_file = kNoFile;
    std::string m_temporary;
    std::string m_final;
};

/// Writes `size` bytes as the whole file `target` through an AtomicSave. False, with the
/// system's reason in `error`, when the save failed: the old file is then as it was.
bool SaveFileAtomically(const char* target, const void* data, std::size_t size, std::string& error);

/// The POSIX full-path rule, purely textual: a relative `path` is appended to `currentDir`;
/// "." components are dropped and ".." removes the component before it (never climbing
/// above the root); doubled separators collapse; links are not followed. "\" and "/" are
/// both read as separators and "/" is written. The roots kept as they are: "/", a leading
/// "//" (a network name), and a drive letter with its separator ("C:/"), which makes the
/// path absolute as on Windows. A trailing separator of `path` is kept. An empty `path`
/// gives an empty result.
std::string LexicalFullPath(std::string_view currentDir, std::string_view path);

/// True when LexicalFullPath would not consult the current directory for `path`: it begins
/// with a separator or with a drive letter, ":" and a separator.
bool IsLexicallyAbsolute(std::string_view path);

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

/// What the locate-file dialog shows. No text is null: "" stands for none.
struct LocateFileTexts {
    const char* title;
    const char* filter;         // the file types offered, in the form ParseFileFilter reads
    const char* folder;         // the folder it starts in; "" lets the system choose
    const char* proposedName;   // the name proposed in its file-name field
    const char* cancelAllLabel; // the label of its cancel-all check box
};

/// Modal questions to the user. Windows: the system's message box, the system's open-file
/// dialog and a dialog built in memory. Linux: a question on the terminal when standard
/// input and standard error are both terminals; otherwise nobody is asked and the answer is
/// the one that stops.
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
    /// Asks the user to pick an existing file. True, with `chosen` set to the file's full
    /// path, when the user picked one; false for Cancel (`chosen` unchanged). `cancelAll` is
    /// the state of the cancel-all check box: it starts the dialog so and comes back as the
    /// user left it, whichever way the dialog ended. Without anybody to ask: false, with
    /// `cancelAll` unchanged. Windows: IFileOpenDialog. Linux: the terminal, where the user
    /// types a path (relative to the start folder), an empty line for Cancel, or
    /// kCancelAllWord to tick the check box and cancel; a path that names no file is asked
    /// again.
    bool (*locateFile)(const LocateFileTexts& texts, bool& cancelAll, std::string& chosen);
};

/// The process's dialogs, filled with the system's functions at start-up.
DialogServices& Dialogs();

/// One file type of an open-file dialog: the text the user reads and the patterns it
/// stands for ("MDL Files (*.mdl)", "*.mdl").
struct FileFilter {
    std::string text;
    std::string pattern;
};

/// Reads a filter in the library's form: fields separated by "|", each file type a display
/// text followed by its pattern, with a field "****" after each pair (the suite's mark,
/// read past), and the list ending at an empty field ("||"). A display text without a
/// pattern after it is dropped.
///   "MDL Files (*.mdl)|*.mdl|****|All Files (*.*)|*.*|****||"
///     => {"MDL Files (*.mdl)", "*.mdl"}, {"All Files (*.*)", "*.*"}
///   "Text|*.txt||ignored|*.x"  => {"Text", "*.txt"}
///   ""                         => none
std::vector<FileFilter> ParseFileFilter(std::string_view filter);

/// The word a user types at the terminal's locate-file question to tick the cancel-all
/// check box and cancel. A file of that name is reached as "./!cancel-all".
inline constexpr std::string_view kCancelAllWord = "!cancel-all";

/// What a line typed at the terminal's locate-file question asks for.
struct LocateAnswer {
    enum class Kind { Chosen, Cancel, CancelAll };
    Kind kind = Kind::Cancel;
    std::string path; ///< for Chosen: the path typed
};

/// Reads one typed line (without its newline). Blanks around the answer and a carriage
/// return are read past, and one pair of matching quotes around the whole path is taken
/// off (terminals write a dropped file's path so).
///   ""  or "   "            => Cancel
///   "!cancel-all"           => CancelAll (compared exactly, blanks around it allowed)
///   "  /a/b c.mdl \r"       => Chosen "/a/b c.mdl"
///   "'/a/b c.mdl' "         => Chosen "/a/b c.mdl"
///   "''"                    => Cancel (quotes around nothing)
LocateAnswer ParseLocateAnswer(std::string_view line);

// ---------------------------------------------------------------------------------------
// Names, folders and traces of the system
// ---------------------------------------------------------------------------------------

/// Facts about the running program and its system.
struct SystemServices {
    /// The folder of the running program's executable, without a trailing separator;
    /// empty when the system cannot tell.
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
    /// This machine's name on the network (GetComputerNameA with a 260-byte buffer; on
    /// POSIX the host name up to its first ".").
    bool (*computerName)(std::string& out);
    /// This machine's host name (the DNS host name; on POSIX gethostname).
    bool (*hostName)(std::string& out);
    /// The system's text for the last failure of a system call on this thread.
    std::string (*lastErrorText)();
    /// Shows the wait cursor and returns what endWaitCursor needs to put the previous one
    /// back (nothing happens on POSIX).
    void* (*beginWaitCursor)();
    void (*endWaitCursor)(void* previous);
};

/// The process's system services, filled with the system's functions at start-up.
SystemServices& System();

/// Shows the wait cursor for the lifetime of the guard.
class ScopedWaitCursor {
public:
    ScopedWaitCursor() : m_previous(System().beginWaitCursor()) {}
    ~ScopedWaitCursor() { System().endWaitCursor(m_previous); }
    ScopedWaitCursor(const ScopedWaitCursor&) = delete;
    ScopedWaitCursor& operator=(const ScopedWaitCursor&) = delete;

private:
    void* m_previous;
};

// ---------------------------------------------------------------------------------------
// Network forms of paths
// ---------------------------------------------------------------------------------------
// On Windows a "drive" is a logical drive ("X:\" as a root, "X:" as a name) and a mapped
// drive's connection is its remote name ("\\server\share"). On POSIX the mount table
// stands for the drive table: every mount point is a drive named by the mount point
// itself, a CIFS, SMB or NFS mount is a remote drive, and its connection is the mounted
// source in the form "//server/share" (NFS "server:/export" becomes "//server/export").

/// The drive type that GetDriveTypeA gives a network drive.
inline constexpr int kRemoteDrive = 4;

/// One folder that this machine shares on the network.
struct SharedFolder {
    std::string name; ///< the share name
    std::string path; ///< the local folder it shares
};

/// One line of a mount table.
struct MountEntry {
    std::string source;     ///< what is mounted ("//server/share", "server:/export", "/dev/sda1")
    std::string mountPoint; ///< where
    std::string type;       ///< the file-system type ("cifs", "nfs4", "ext4", ...)
};

struct NetworkServices {
    /// The roots of the logical drives, in the system's order ("C:\", ...; mount points on
    /// POSIX).
    std::vector<std::string> (*logicalDrives)();
    /// The type of the drive with that root, as GetDriveTypeA numbers it (kRemoteDrive for a
    /// network drive; on POSIX 4 for a network mount, 3 for another mount, 1 otherwise).
    int (*driveType)(const char* root);
    /// The remote name a drive is connected to ("X:" on Windows, a mount point on POSIX).
    bool (*connectionName)(const char* drive, std::string& out);
    /// The folders this machine shares: the registry key
    /// "SYSTEM\CurrentControlSet\Services\LanmanServer\Shares" on Windows, each value's
    /// "Path=" entry; none on POSIX.
    std::vector<SharedFolder> (*sharedFolders)();
    /// The text of the mount table ("/proc/self/mounts"); empty on Windows. The POSIX drive
    /// services read it through this entry, so a test can script the whole drive table.
    std::string (*mountTable)();
};

/// The process's network services.
NetworkServices& Network();

/// Reads a mount table in the form of /proc/self/mounts: one mount a line, fields separated
/// by blanks, octal escapes (\040 for a space, \134 for a backslash, ...) decoded. Lines
/// with fewer than three fields are skipped.
std::vector<MountEntry> ParseMountTable(std::string_view text);

/// True for the file-system types that mount a network share (cifs, smb3, smbfs, nfs, nfs4).
bool IsNetworkFileSystem(std::string_view type);

/// The connection name of a network mount's source: "//server/share" as it is (backslashes
/// turned into "/"), NFS "server:/export/path" as "//server/export/path". Empty for a
/// source in neither form.
std::string ConnectionOfMountSource(std::string_view source);

// ---------------------------------------------------------------------------------------
// Icons
// ---------------------------------------------------------------------------------------

/// An icon's pixels, as the streams store them: the colour image at 32 bits a pixel (blue,
/// green, red, alpha) and the mask at 1 bit a pixel (set where the icon is transparent),
/// each bottom row first, mask rows padded to 32 bits.
struct IconImage {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> color; ///< width x height x 4 bytes
    std::vector<unsigned char> mask;  ///< ((width + 31) / 32) x 4 x height bytes
};

/// Icons exist only on Windows: elsewhere every entry reports that it cannot.
struct IconServices {
    /// The pixels of an icon (an HICON). False for a null or invalid icon, or where icons
    /// do not exist.
    bool (*iconToImage)(void* icon, IconImage& image);
    /// A new icon made of the pixels, owned by the caller (destroyIcon); null when it
    /// cannot be made.
    void* (*imageToIcon)(const IconImage& image);
    /// Destroys an icon made by imageToIcon. Null is ignored.
    void (*destroyIcon)(void* icon);
};

/// The process's icon services.
IconServices& Icons();

// ---------------------------------------------------------------------------------------
// Sockets
// ---------------------------------------------------------------------------------------
// TCP sockets in non-blocking mode: BSD sockets on POSIX, Winsock on Windows. Nothing here
// waits except `wait`, so every caller keeps its own deadline. A send never raises SIGPIPE.
// Addresses are numeric IPv4 or IPv6 text ("127.0.0.1", "::1"); no name is ever looked up,
// since a name lookup cannot be bounded by a deadline.

/// A socket: a file descriptor on POSIX, a SOCKET on Windows; kNoSocket when there is none.
using SocketHandle = std::intptr_t;
inline constexpr SocketHandle kNoSocket = -1;

/// What a socket call did.
enum class SocketStatus {
    Done,       ///< the call succeeded (for a transfer: at least one byte moved)
    WouldBlock, ///< nothing can be done now without waiting
    Closed,     ///< the peer closed or reset the connection
    Failed,     ///< another failure; the system's text says which
};

/// The outcome of a socket call: its status, the bytes moved, the system's text on failure.
struct SocketIo {
    SocketStatus status = SocketStatus::Done;
    std::size_t bytes = 0;
    std::string error;
};

/// One run of bytes to send.
struct SendBuffer {
    const void* data;
    std::size_t size;
};

/// What `wait` waits for, and what it found.
inline constexpr unsigned kSocketReadable = 1, kSocketWritable = 2;

struct SocketServices {
    /// A new socket listening on `address`:`port` (port 0: the system chooses), not
    /// inherited by child processes, with a backlog of `backlog` connections. kNoSocket on
    /// failure, with `error` set.
    SocketHandle (*listen)(const char* address, unsigned short port, int backlog,
                           std::string& error);
    /// Takes a pending connection from a listening socket, without waiting. Done with
    /// `accepted` set; WouldBlock when none is pending.
    SocketIo (*accept)(SocketHandle listener, SocketHandle& accepted);
    /// Starts connecting to `address`:`port` without waiting. Done with `connecting` set
    /// when the connection is made or under way (`finishConnect` tells which), Failed else.
    SocketIo (*connect)(const char* address, unsigned short port, SocketHandle& connecting);
    /// After `wait` found a connecting socket writable: Done when the connection was made,
    /// Failed (with the system's text, "Connection refused" ...) when it was not.
    SocketIo (*finishConnect)(SocketHandle socket);
    /// The local address and port of a socket ("127.0.0.1", 41234). False when unknown.
    bool (*localAddress)(SocketHandle socket, std::string& address, unsigned short& port);
    /// Waits up to `timeoutMs` (0: only looks, negative: no limit) until the socket is
    /// readable or writable as `events` (kSocketReadable | kSocketWritable) asks; returns the
    /// events found (0 when the time ran out). A closed or failed connection is readable
    /// and writable. -1 when the wait itself failed.
    int (*wait)(SocketHandle socket, unsigned events, int timeoutMs);
    /// Sends what it can of the buffers in order without waiting; `bytes` tells how much.
    SocketIo (*send)(SocketHandle socket, const SendBuffer* buffers, std::size_t count);
    /// Receives up to `size` bytes without waiting. Done with bytes > 0; Closed when the
    /// peer has finished sending (bytes 0) or reset the connection; WouldBlock when nothing
    /// has arrived.
    SocketIo (*receive)(SocketHandle socket, void* data, std::size_t size);
    /// Tells the peer that nothing more will be sent (the other direction stays open).
    void (*shutdownSend)(SocketHandle socket);
    /// Closes a socket. kNoSocket is ignored.
    void (*close)(SocketHandle socket);
};

/// The process's socket services.
SocketServices& Sockets();

// ---------------------------------------------------------------------------------------
// Child processes
// ---------------------------------------------------------------------------------------
// A program is started from an argument vector, never through a shell: argv[0] is looked
// up on the PATH as the system does (CreateProcessW's search on Windows, which adds
// ".exe"), and each argument reaches the program as it is, blanks and quotes included.

/// What running a program to its end found.
struct ProcessOutcome {
    bool started = false;  ///< the program could be started
    bool timedOut = false; ///< it was still running at the deadline and was ended
    int exitCode = -1;     ///< its exit status when it ended by itself
    std::string output;    ///< its standard output, up to kProcessOutputLimit bytes
    std::string errors;    ///< its standard error, up to kProcessOutputLimit bytes
    std::string why;       ///< the system's text when it could not be started
};

/// The most of each output stream that `run` keeps; the rest is read and dropped.
inline constexpr std::size_t kProcessOutputLimit = 1u << 20;

struct ProcessServices {
    /// Runs `argv` with no standard input, captures its standard output and error, and
    /// waits for it up to `timeoutMs`; a program still running then is killed. The outcome
    /// says what happened; the return value is `outcome.started`.
    bool (*run)(const std::vector<std::string>& argv, int timeoutMs, ProcessOutcome& outcome);
    /// Starts `argv` and does not wait for it; nothing is left for the caller to collect.
    /// False, with `why` set, when it could not be started.
    bool (*startDetached)(const std::vector<std::string>& argv, std::string& why);
};

/// The process's child-process services.
ProcessServices& Processes();

/// The Windows command line that hands `argv` to a program as it is, by the quoting rules
/// of the C runtime's argument parser: an argument with a blank, a tab or a quote (or an
/// empty one) is quoted, its quotes escaped with a backslash, and the backslashes before a
/// quote or before the closing quote doubled. The arguments `a b` and `c"d` give
/// the line `"a b" "c\"d"`.
std::string WindowsCommandLine(const std::vector<std::string>& argv);

// ---------------------------------------------------------------------------------------
// Internet: the desktop's handler of a URL, HTTP transfers
// ---------------------------------------------------------------------------------------

/// Receives the body of an HTTP transfer as it arrives.
struct HttpSink {
    void* context;
    /// The length the server announced: -1 when it announced none. Called once, before
    /// any data.
    void (*length)(void* context, long long total);
    /// A run of the body. Returning false stops the transfer (HttpStatus::Stopped).
    bool (*data)(void* context, const void* bytes, std::size_t size);
};

/// How an HTTP transfer ended.
enum class HttpStatus {
    Done,     ///< the whole body arrived with a success status (2xx)
    Stopped,  ///< the sink stopped it
    TimedOut, ///< the deadline passed
    Failed,   ///< anything else: no connection, an error status, a broken transfer
};

struct InternetServices {
    /// Hands `url` (an absolute URL: "http:", "https:", "mailto:" ...) to the desktop's
    /// handler for its scheme: `xdg-open URL` on Linux (through Processes().startDetached),
    /// ShellExecuteW on Windows. False, with `why` set, when it could not be handed over.
    bool (*openUrl)(const char* url, std::string& why);
    /// Fetches `url` with a GET, following redirections, feeding the body to `sink`, all
    /// within `timeoutMs`. libcurl on Linux, WinHTTP on Windows. On failure `why` says
    /// what happened ("HTTP 404", the system's text ...).
    HttpStatus (*httpGet)(const char* url, int timeoutMs, const HttpSink& sink, std::string& why);
};

/// The process's internet services.
InternetServices& Internet();

} // namespace fileio::platform
