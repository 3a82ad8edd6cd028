// FileStream.h - the stream whose transport is a disk file, and the search for missing
// files.
//
// Loading. A file that does not exist is searched for before the open fails: in the
// remembered file and folder aliases, and then by asking the user to locate it (through
// the dialog provider, DialogProvider.h), unless the don't-ask bit forbids questions. The
// user's pick is remembered as aliases for the rest of the process, so a project whose
// hundred files moved with their folder asks only once. The caller of Open(String&, ...)
// sees the name the file was found under.
//
// Storing. The file is never written in place: the stream writes a temporary file beside
// the target (its name is the target's with a unique ending beginning ".vrn"; a symbolic
// link is followed, so the link stays and its target is replaced), and Close flushes it to
// the disk and renames it over the target in one atomic step. A crash, a full disk or a
// failing network share therefore never destroys the file that was there: a save either
// replaces it whole or leaves it byte for byte as it was. When a write, the flush or the
// rename fails, Close removes the temporary file, tells the user the system's reason
// through MessageRequest, and leaves the failed bit set, so that a host can tell after
// Close whether the save happened:
//
//     FileStream out;
//     if (out.Open(String("robot.prj"), FM_VARN)) {
//         out << Header(GetHeaderIDFromText("MODELFILE")) << nl;   // ...
//         out.Close();
//         if (out.IsFailed()) { /* the old robot.prj is untouched */ }
//     }
//
// A read-only target fails the open at once (before any temporary file is made) with the
// message of string resource 61732 naming the file. With the append bit the old contents
// are copied into the temporary file first and the stream stands at their end.
//
// Aliases, the failed list and the cancel-all flag are process-wide, unlocked, and belong
// to the host's main thread, since the search can show a dialog. Alias comparisons ignore
// case. A path written on one platform and read on the other ("C:\Work\Robot\arm.mdl" on
// Linux) goes through the same search: aliases are how such a project opens there.
#pragma once

#include "fileio/Export.h"
#include "fileio/stream/VarnStream.h"

class FILEIO_API FileStream : public VarnStream {
public:
    FileStream();
    /// Closes the stream, clears the failed list of missing files (each load starts with
    /// an empty one) and destroys the side-information stream.
    ~FileStream() override;

    /// Opens `name` for loading or storing as `mode` says (see above). Loading a missing
    /// file searches for it as FindAliasAsk does (silently, with the don't-ask bit: a
    /// missing file then fails at once), and `name` becomes the name it was found under,
    /// or the name the user last gave when the search failed. A file found that cannot be
    /// opened is tried once more. False, with the failed bit set, when the file cannot be
    /// opened or (storing) the temporary file cannot be made; a read-only target fails
    /// with a message and the failed bit clear. Starts the progress display when loading
    /// unless the don't-progress bit is set; with the Varn bit reads or writes the suite
    /// file's marker.
    bool Open(String& name, FileMode mode);
    /// The same on a copy of the name.
    bool Open(const String& name, FileMode mode);
    /// Ends the progress display, closes the side-information stream and the file, and for
    /// a storing stream replaces the target with what was written (see above). Does
    /// nothing when the stream is not open.
    void Close() override;
    /// The temporary file a storing stream writes (empty otherwise).
    [[nodiscard]] const String& GetTemporaryName() const { return m_temporaryName; }

    /// For a file under version control, the stream of its ".vinfo" companion file beside
    /// it (opened once, with this stream's mode and the don't-ask bit; null when the
    /// stream is not open or the companion cannot be opened); for any other file, the
    /// stream itself.
    VarnStream* GetInfoStream() override;

    // ---- missing files (process-wide) -------------------------------------------------------

    /// Remembers that the file `from` is now `to` (newest first).
    static void AddFileAlias(const String& from, const String& to);
    /// Remembers that the folder `from` is now the folder `to`, and also the shorter pair
    /// that their common ending implies: "C:\Work\Robot\Maps\" now "E:\Backup\Robot\Maps\"
    /// also teaches "C:\Work\" now "E:\Backup\". The ending is compared byte for byte from
    /// the end; the levels removed are the separators among its last characters, counted
    /// over as many positions as the ending is long, ending at the text's terminating NUL
    /// (so the ending's first character is not looked at). "\" counts on every platform,
    /// "/" too on Linux. No shorter pair is learnt when a side would be left empty.
    static void AddPathAlias(const String& from, const String& to);
    /// The newest file alias from `name`: `name` becomes its target (which need not
    /// exist); true. False, `name` unchanged, when there is none.
    static bool FindFileAlias(String& name);
    /// The newest file alias whose source, without folder and suffix, is `name`: `name`
    /// becomes the alias's whole target; true.
    static bool FindFileAliasNameOnly(String& name);
    /// The newest folder alias for `folder`: from that folder itself, or from a folder above
    /// it (the part below is kept). `folder` becomes the replacement; true.
    static bool FindPathAlias(String& folder);
    /// The silent search: false for a name in the failed list; true for a file that exists
    /// (unchanged) or has a file alias (`name` becomes its target); else, with a folder
    /// alias, `name` becomes the file in the replacement folder (even when that does not
    /// exist) and the result is whether it exists.
    static bool FindAlias(String& name);
    /// The silent search, then the user: the file handler is told of the missing file and
    /// may forbid asking; the locate dialog (title from string resource 1, the file's type
    /// and "All Files" in the filter, starting in the nearest existing folder of the name)
    /// is not shown once the user chose "cancel all". A refusal puts the name in the failed
    /// list and gives false; a pick replaces `name`, is learnt as a file alias when the
    /// file's own name changed and as a folder alias when its folder did, and gives true.
    static bool FindAliasAsk(String& name);
    /// The name is in the failed list (ignoring case).
    static bool IsInFailedList(const String& name);
    static void ClearFailedList();
    /// Clears the "cancel all" choice; the library never clears it by itself.
    static void ResetCancelAll();
    static bool HasFileAliases();
    static void FreeFileAliases();
    static void FreePathAliases();

protected:
    // The transport: a buffer over the file, read-only when loading, write-only when storing.
    bool Refill(Window& window) override;
    unsigned long long MakeRoom(Window& window, unsigned long long count) override;
    void Reposition(Window& window, unsigned long long offset) override;
    unsigned long long DataLength(const Window& window) override;
    void Commit(Window& window) override;

private:
    struct File;
    bool OpenForLoading(String& name);
    bool OpenForStoring(const String& name);
    /// Records the first failure of a write to the file, with the system's reason.
    void WriteFailed();
    void CloseInfoStream();

    File* m_file = nullptr;
    String m_temporaryName;
    FileStream* m_infoStream = nullptr;
};

/// True when the file's first token is a header whose id (end bit included) is headerId.
/// The file is opened as a suite file for loading (mode FM_LOADING | FM_VARN: a missing
/// file is searched for) and closed again.
FILEIO_API bool IsFileOfType(const String& path, int headerId);
/// True when the file's first token is a header of any kind.
FILEIO_API bool IsFileOfTypeVarn(const String& path);
