// VarnStream.h - the base of every stream that reads and writes the suite's files.
//
// A suite file is a tree of sections. A section opens with a Header token, holds fields (a
// Label followed by its value) and nested sections, and closes with the matching EndHeader.
// Every file exists in two forms, chosen by the stream's binary mode bit:
//
// Text ("ascii") form. A header is a bracketed word on its own line, a label is a word
// followed by "=", values are written in decimal and words separated by single spaces:
//
//     <MODELFILE>
//     Active=TRUE
//     </MODELFILE>
//
//   The writer always uses angle brackets. The reader also takes the older square form,
//   "[MODELFILE]" ... "[ENDMODELFILE]", chosen by the version field: 13.0 and above is the
//   angle form, below it the square form; 5.0 (the default) means "not yet known".
//
// Binary form. Tokens are 32-bit little-endian id words: a header is its id with bit 31
// (0x80000000) set, an end header also has bit 29 (0x20000000), a label has bit 30
// (0x40000000). Values are their bytes in memory order, little-endian, with no separators.
// Sizes are those of the Windows data model on every platform: a long is 4 bytes in a file
// even where long has 64 bits. The example above is, after the file marker "B":
//
//     50 01 00 80   CE 0F 00 40   01   50 01 00 A0
//
// A suite file ("Varn file") starts with a marker that its opener reads: "B" for the binary
// form; a text file starting with "<" is of the angle generation (version 13.0).
//
// Value encoding. Each value type has one text and one binary form (the operators below):
//
//   type                          text                          binary
//   char                          the raw byte                  1 byte
//   signed/unsigned char          decimal                       1 byte
//   short, unsigned short         decimal                       2 bytes
//   int, long, unsigned (long)    decimal                       4 bytes
//   long long, unsigned long long decimal                       8 bytes
//   float, double                 String's "%.9g" / "%.17g"     4 / 8 bytes
//   bool, StreamBOOL              "TRUE" / "FALSE"              1 byte, 0 or 1
//   String                        the text, "&" as "&#38;"      16-bit count, then the text
//   Vector ... Matrix44           components, one " " between   the components' bytes
//   Time                          "m:s:f.ticks" (see below)     8 bytes of ticks
//
// Text numbers are read one white-space-delimited token at a time with the C runtime's
// conversions in the "C" locale (int, long and unsigned int as a 32-bit strtol, unsigned long
// as a 32-bit strtoul, 64-bit types as strtoll / strtoull, float as strtof, double as strtod);
// a token that is not a number reads as 0 and nothing is reported. Bool tokens "on", "true"
// and "1" (any case) read as true, everything else as false.
//
// Failure. Nothing throws. The failed bit records a failure: a counted string or bitmap table
// that the data cannot hold, a write the transport cannot take. IsFailed reads and clears it
// in one call; HasFailed only reads it. Reading past the end is not a failure: ReadC returns
// fewer bytes, Read copies what is there, and VirtualEof tells the end. Every scan stops at
// the end of the data, so no input makes a reader loop for ever, and every buffer is bounded:
// a header text keeps at most 79 characters, a delimited token at most 254.
//
// Transports. A stream's bytes are carried by its transport (a memory block, a file, a
// socket): a derived class implements the small protected interface at the end of the class
// and nothing else. Everything above it (bytes, tokens, peeks, skips, values, progress) is
// written once here, so that two transports cannot read the same bytes differently.
//
// Thread safety: a stream is used by one thread at a time. A text token longer than the
// transport's window is read into one library-wide scratch token, so only one thread at a
// time may read text numbers from a stream other than a memory stream.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"
#include "fileio/core/Time.h"
#include "fileio/core/Vectors.h"
#include "fileio/stream/BitmapTypes.h"
#include "fileio/stream/DateTypes.h"
#include "fileio/stream/RuntimeClass.h"
#include "fileio/stream/StreamBOOL.h"
#include "fileio/stream/Token.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

class MemoryStream;

namespace fileio::detail {
/// The text generation a version stands for (see SetVersion).
enum class TextGeneration : unsigned char;
} // namespace fileio::detail

/// The mode byte of a stream. GetMode returns it and SetMode replaces it whole.
enum FileMode : unsigned char {
    FM_STORING = 0x00,
    /// Loading; clear means storing.
    FM_LOADING = 0x01,
    /// Binary form; clear means the text form.
    FM_BINARY = 0x02,
    /// The binary data are in the other byte order. Carried for the transport; the value
    /// encoders do not consult it.
    FM_BYTESWAP = 0x04,
    /// After opening, position at the end.
    FM_APPEND = 0x08,
    /// An operation failed. Read and cleared by IsFailed.
    FM_FAILED = 0x10,
    /// One of the suite's own files, whose first byte tells its form.
    FM_VARN = 0x20,
    /// No questions to the user during this transfer.
    FM_DONTASK = 0x40,
    /// No progress display for this transfer.
    FM_DONTPROGRESS = 0x80,
};

constexpr FileMode operator|(FileMode a, FileMode b) {
    return static_cast<FileMode>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr FileMode operator&(FileMode a, FileMode b) {
    return static_cast<FileMode>(static_cast<unsigned>(a) & static_cast<unsigned>(b));
}
constexpr FileMode operator~(FileMode a) {
    return static_cast<FileMode>(~static_cast<unsigned>(a) & 0xFFu);
}

/// How Seek counts its offset.
enum SeekMode : int {
    /// The position becomes the offset.
    SM_BEGIN = 0,
    /// The position becomes length - offset (counted back from the end).
    SM_END = 1,
    /// The offset is added to the position.
    SM_CURRENT = 2,
};

class FILEIO_API VarnStream {
public:
    /// A manipulator: writes its separator (see nl, sp, tab ...) and returns the stream.
    typedef VarnStream& (*Manipulator)(VarnStream&);

    /// All flags clear (storing, text), version 5.0, binary string counts on.
    VarnStream();
    virtual ~VarnStream();
    VarnStream(const VarnStream&) = delete;
    VarnStream& operator=(const VarnStream&) = delete;

    // ---- bytes ---------------------------------------------------------------------------

    /// Reads up to count bytes; returns how many were read (0 at the end).
    unsigned long long ReadC(void* buffer, unsigned long long count);
    /// Reads count bytes, or what is left of the data when there are fewer: the end is not
    /// reported (VirtualEof tells it). A count of 0 or less reads nothing.
    void Read(void* buffer, long count);
    /// Writes count bytes at the position, extending the data past its end. When the
    /// transport cannot take them the failed bit is set and the rest is dropped.
    void Write(const void* data, unsigned long long count);
    /// Hands what was written to the carrier (a file's system buffers).
    void Flush();
    /// Closes the stream: ends the progress display and whatever the transport holds open.
    virtual void Close() = 0;
    /// Moves the position (see SeekMode). No bounds check: a position past the end reads
    /// nothing.
    void Seek(long long offset, SeekMode mode);
    [[nodiscard]] unsigned long long GetPos() const;
    /// At (or past) the end of the data.
    bool VirtualEof() { return Available() == 0 && IsPastData(); }

    // ---- tokens ----------------------------------------------------------------------------

    /// Reads the next line into `line` (replacing its contents; its position 0), line end
    /// included: in text a line ends after LF, CR LF or a lone CR; in binary a line is one
    /// 32-bit token word (or what is left of the data). Returns false, reading nothing, at
    /// the end of the data.
    bool ReadLine(MemoryStream& line);
    /// The same into a String (a NUL byte in the line ends the String's text).
    bool ReadLine(String& line);
    /// Reads a string value. Text: as ParseToken(String&), one white-space-delimited token
    /// with no quoting. Binary: a one-byte count, then that many bytes; a count larger than
    /// the data left gives the empty string and sets the failed bit.
    void ParseString(String& out);
    /// Reads bytes up to `delimiter` (consumed, not kept) or the end of the data into `out`,
    /// a buffer of 255 bytes: at most 254 bytes are kept, then a NUL; the bytes beyond are
    /// consumed up to the delimiter and dropped. REQUIRES: out has room for 255 bytes.
    void ParseToken(char* out, char delimiter);
    /// Skips " ", "\t", "\n", "\r"; takes the bytes up to the next of those; then skips
    /// spaces and tabs and then CR and LF bytes. DidPassEOL tells afterwards whether a line
    /// end was skipped (the token was the last on its line). Advances the progress meter.
    void ParseToken(String& out);
    /// ParseToken with a delimiter into a zeroed 255-byte buffer, assigned to out.
    void ParseToken(String& out, char delimiter);
    /// Reads bytes up to `delimiter` (consumed, not kept) or the end of the data.
    String ReadString(char delimiter);
    /// Skips " ", "\t", "\n", "\r" up to the next other byte (a NUL stops too), the end of
    /// the data, or 255 bytes: the byte that stopped the scan is read again next.
    void SkipWhite();
    /// Skips to the start of the next line: reads up to the first CR or LF, then on while
    /// the bytes are CR or LF (any mix counts as one line end), noting the position before
    /// each, and goes back to the last position noted. At most 255 bytes are read in all:
    /// a run of line ends that reaches the limit leaves the stream before its last byte.
    void ReadPastEOL();
    /// True when the last token read by ParseToken(String&) was the last on its line.
    [[nodiscard]] bool DidPassEOL() const { return m_passedEOL; }
    /// Skips to just past the end of the section that `header` opened (the stream stands just
    /// after that header). Text: line by line, counting nested sections of the same name; the
    /// stream stands at the start of the line after the end header. Binary: byte by byte, up
    /// to the first end token of the header's id (no nesting), or for "Plugin Properties" the
    /// word 0xC0000A85. Returns false, back where it started, when the end is not found.
    bool SkipHeader(const Header& header);
    /// Skips forward past the next header, end header or label whose id is `id` (an end
    /// header's id carries bit 29). Text: line by line; the stream stands at the start of the
    /// following line. Binary: byte by byte, past the token word. False at the end of data.
    bool SkipPast(unsigned int id);
    /// Text: the characters, then "\n". Binary: a 16-bit count (length modulo 65536), then the
    /// characters, whatever IsWriteStringCounts says.
    void WriteLine(const String& line);

    // ---- peeks and side information ------------------------------------------------------

    /// Does a header token come next? Text: skips white space, then looks for "[" (version
    /// below 13.0) or "<" (13.0 and above). Binary: the next 32-bit word has bit 31 set.
    /// The position is left where the peek found it (after any skipped white space).
    virtual bool IsHeader();
    /// As IsHeader, except that in text while the version is still 5.0 (not yet known) both
    /// "<" and "[" count.
    virtual bool IsHeaderFromAnyVersion();
    /// Does a label come next? Text: skips white space, then scans for "=" before any line
    /// end. Binary: the next 32-bit word has bit 30 set.
    virtual bool IsLabel();
    /// The stream that carries side information for this one; here the stream itself.
    virtual VarnStream* GetInfoStream();
    /// Advances the loading-progress meter when the position has passed its next mark. Does
    /// nothing between InitProgress and UnInitProgress: streams whose progress InitProgress
    /// started are advanced by their transport, not here.
    virtual void SetStatusMeter();

    // ---- framework class identities -------------------------------------------------------

    /// Reads a class identity written by StoreRuntimeClass: stores its schema number in
    /// *schema (when schema is not null) and returns the registered class of that name, or
    /// null when the name is unknown, 64 bytes or longer, or cut short.
    const RuntimeClass* LoadRuntimeClass(unsigned int* schema);
    /// Writes the class's schema number and the length of its name (both 16-bit), then the
    /// name's bytes. Meant for binary streams: in text the two numbers run together.
    void StoreRuntimeClass(const RuntimeClass& runtimeClass);

    // ---- mode ------------------------------------------------------------------------------

    /// The mode byte, the failed bit included.
    [[nodiscard]] FileMode GetMode() const { return m_failed ? m_mode | FM_FAILED : m_mode; }
    /// Replaces the mode byte whole, the failed bit included.
    void SetMode(FileMode mode) {
        m_mode = mode & ~FM_FAILED;
        m_failed = (mode & FM_FAILED) != 0;
    }
    [[nodiscard]] bool IsLoading() const { return (m_mode & FM_LOADING) != 0; }
    [[nodiscard]] bool IsStoring() const { return !IsLoading(); }
    [[nodiscard]] bool IsBinary() const { return (m_mode & FM_BINARY) != 0; }
    [[nodiscard]] bool IsAscii() const { return !IsBinary(); }
    [[nodiscard]] bool IsByteSwap() const { return (m_mode & FM_BYTESWAP) != 0; }
    [[nodiscard]] bool IsAppend() const { return (m_mode & FM_APPEND) != 0; }
    /// Returns the failed bit and clears it: after one failure, true once, then false.
    bool IsFailed() {
        const bool failed = m_failed;
        m_failed = false;
        return failed;
    }
    /// The failed bit, left as it is.
    [[nodiscard]] bool HasFailed() const { return m_failed; }
    void OnFailed() { m_failed = true; }
    void OffFailed() { m_failed = false; }
    void OnBinary() { m_mode = m_mode | FM_BINARY; }
    /// Does nothing: a stream leaves binary mode only through SetMode.
    void OnAscii() {}
    [[nodiscard]] bool IsVarn() const { return (m_mode & FM_VARN) != 0; }
    [[nodiscard]] bool IsDontAsk() const { return (m_mode & FM_DONTASK) != 0; }
    [[nodiscard]] bool IsDontProgress() const { return (m_mode & FM_DONTPROGRESS) != 0; }
    [[nodiscard]] bool IsWriteStringCounts() const { return m_writeStringCounts; }
    /// Off: binary Strings are written without their count (and with "&" escaped), for
    /// callers that know the length when reading back.
    void SetWriteStringCounts(bool on) { m_writeStringCounts = on; }

    /// The format version of the text form.
    [[nodiscard]] float GetVersion() const { return m_version; }
    /// Sets the version, which chooses the text generation the readers expect: 13.0 and
    /// above the angle form, below it the square form, exactly 5.0 "not yet known" (read as
    /// the square form, except that IsHeaderFromAnyVersion takes either bracket).
    void SetVersion(float version);
    /// The path of the open file (empty when none).
    [[nodiscard]] const String& GetFileName() const { return m_fileName; }
    /// The position at which the last binary header or label token began.
    [[nodiscard]] unsigned long long GetHeaderPosition() const { return m_headerPosition; }
    /// Set when the last binary token was read as a header or label.
    [[nodiscard]] bool WasLastTokenHeader() const { return m_lastTokenWasHeader; }
    /// Set when the last binary token read was a label (also one in header position).
    [[nodiscard]] bool WasLastTokenLabel() const { return m_lastTokenWasLabel; }

    // ---- writing values --------------------------------------------------------------------

    VarnStream& operator<<(Manipulator manipulator) { return manipulator(*this); }
    /// The raw byte, in both forms.
    VarnStream& operator<<(char value);
    VarnStream& operator<<(signed char value) { return WriteInteger(value); }
    VarnStream& operator<<(unsigned char value) { return WriteInteger(value); }
    VarnStream& operator<<(short value) { return WriteInteger(value); }
    VarnStream& operator<<(unsigned short value) { return WriteInteger(value); }
    VarnStream& operator<<(int value) { return WriteInteger(value); }
    /// Four bytes in binary: the value must fit in 32 bits.
    VarnStream& operator<<(long value);
    VarnStream& operator<<(unsigned int value) { return WriteInteger(value); }
    /// Four bytes in binary: the value must fit in 32 bits.
    VarnStream& operator<<(unsigned long value);
    VarnStream& operator<<(long long value) { return WriteInteger(value); }
    VarnStream& operator<<(unsigned long long value) { return WriteInteger(value); }
    VarnStream& operator<<(float value) {
        if (IsBinary())
            WriteBinary(value);
        else
            WriteTextFloat(value);
        return *this;
    }
    VarnStream& operator<<(double value) {
        if (IsBinary())
            WriteBinary(value);
        else
            WriteTextDouble(value);
        return *this;
    }
    VarnStream& operator<<(bool value);
    VarnStream& operator<<(StreamBOOL value);
    /// Text: the characters with every "&" written as "&#38;". Binary: with string counts on, a
    /// 16-bit count (length modulo 65536) and the characters; with them off, the characters
    /// only, "&" escaped as in text.
    VarnStream& operator<<(const String& value);
    /// The characters, never escaped; in binary preceded by a 16-bit count when counts are on.
    VarnStream& operator<<(const char* value);
    VarnStream& operator<<(const std::string& value);
    VarnStream& operator<<(const Vector2& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const Vector& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const Rotate& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const Vector4& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const Quaternion& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const RGBFloat& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const ColorBuf& value);
    VarnStream& operator<<(const PatchID& value);
    VarnStream& operator<<(const Matrix33& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const Matrix34& value) { return WriteFloatComposite(value); }
    VarnStream& operator<<(const Matrix44& value) { return WriteFloatComposite(value); }
    /// Text: [-][minutes:][seconds:]frames[.ticks] at 30 frames of 4500 ticks per second
    /// (4500 ticks is "1", 139500 is "1:1", 4501 is "1.1"). The two sentinels Time::MIN and
    /// Time::MAX are written as 0, in both forms.
    VarnStream& operator<<(const Time& value);
    VarnStream& operator<<(const TimeRange& value);
    VarnStream& operator<<(const COleDateTime& value);
    VarnStream& operator<<(const CTime& value);
    VarnStream& operator<<(const tagBITMAPFILEHEADER& value);
    VarnStream& operator<<(const tagBITMAPINFOHEADER& value);
    /// The header, then BitmapColorCount(header) colours, which the caller's block holds.
    VarnStream& operator<<(const tagBITMAPINFO& value);
    /// The icon's colour image and mask (Windows only; elsewhere writes nothing and sets the
    /// failed bit).
    VarnStream& operator<<(HICON icon);
    /// Text: "<" text ">". Binary: the id with bit 31 set. No line end follows.
    VarnStream& operator<<(const Header& header);
    /// Text: "</" text ">". Binary: the id with bits 31 and 29 set.
    VarnStream& operator<<(const EndHeader& header);
    /// Text: text "=". Binary: the id with bit 30 set.
    VarnStream& operator<<(const Label& label);

    // ---- reading values --------------------------------------------------------------------

    VarnStream& operator>>(char& value);
    VarnStream& operator>>(signed char& value) { return ReadInteger(value); }
    VarnStream& operator>>(unsigned char& value) { return ReadInteger(value); }
    VarnStream& operator>>(short& value) { return ReadInteger(value); }
    VarnStream& operator>>(unsigned short& value) { return ReadInteger(value); }
    VarnStream& operator>>(int& value) { return ReadInteger(value); }
    VarnStream& operator>>(long& value);
    /// Text: a 32-bit strtol, so a token above 2147483647 reads as 2147483647.
    VarnStream& operator>>(unsigned int& value) { return ReadInteger(value); }
    VarnStream& operator>>(unsigned long& value);
    VarnStream& operator>>(long long& value) {
        if (IsBinary())
            ReadBinary(value);
        else
            value = ReadTextInt64();
        return *this;
    }
    VarnStream& operator>>(unsigned long long& value) {
        if (IsBinary())
            ReadBinary(value);
        else
            value = ReadTextUnsigned(~0ULL);
        return *this;
    }
    VarnStream& operator>>(float& value) {
        if (IsBinary())
            ReadBinary(value);
        else
            value = ReadTextFloat();
        return *this;
    }
    VarnStream& operator>>(double& value) {
        if (IsBinary())
            ReadBinary(value);
        else
            value = ReadTextDouble();
        return *this;
    }
    VarnStream& operator>>(bool& value);
    VarnStream& operator>>(StreamBOOL& value);
    /// Text: ParseString, then each "&#38;" becomes "&" again. Binary: a 16-bit count and
    /// that many bytes, always (whatever IsWriteStringCounts says); a count larger than the
    /// data left gives the empty string and sets the failed bit.
    VarnStream& operator>>(String& value);
    VarnStream& operator>>(Vector2& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(Vector& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(Rotate& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(Vector4& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(Quaternion& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(RGBFloat& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(ColorBuf& value);
    VarnStream& operator>>(PatchID& value);
    VarnStream& operator>>(Matrix33& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(Matrix34& value) { return ReadFloatComposite(value); }
    VarnStream& operator>>(Matrix44& value) { return ReadFloatComposite(value); }
    /// Text: one token; a leading "-" negates; the numbers between ":" and "." fill the fields
    /// minutes:seconds:frames.ticks from the right. Without a ".", a last number of 30 or more
    /// is taken as ticks rather than frames: "45" is 45 ticks, "15" is 15 frames.
    VarnStream& operator>>(Time& value);
    VarnStream& operator>>(TimeRange& value);
    VarnStream& operator>>(COleDateTime& value);
    VarnStream& operator>>(CTime& value);
    VarnStream& operator>>(tagBITMAPFILEHEADER& value);
    VarnStream& operator>>(tagBITMAPINFOHEADER& value);
    /// The header, then its colour table into the caller's block, which must have room for
    /// BitmapColorCount(header) colours. A header announcing more than 256 colours sets the
    /// failed bit and reads no table.
    VarnStream& operator>>(tagBITMAPINFO& value);
    /// Reads an icon's form and creates the icon (Windows only; elsewhere the form is read
    /// past, the icon is null and the failed bit is set).
    VarnStream& operator>>(HICON& icon);
    /// Reads a header or end header (see the class comment for both forms). Text: one byte
    /// (the bracket), then in the square generation the word up to "]" (an end header's
    /// text keeps its "END"; the stream stands just after the "]"), in the angle generation
    /// the word up to ">", at most 255 bytes (an end header's text keeps its "/"), and then
    /// the white space after it is skipped. The word is looked up as a header word first,
    /// then as a label word (label words may open sections); an end header's id carries
    /// bit 29; an unknown word gives id -1. Binary: the id word; a label word in header
    /// position gives id -1 and the label's text; the word 0xFFFFFFFF gives id -1 and
    /// leaves the last-token-was-label flag as it was.
    VarnStream& operator>>(Header& header);
    /// Reads a label: text, the bytes up to "=" as they are (white space included: callers
    /// skip it first with IsLabel or SkipWhite); binary, the id word with bit 30 cleared.
    VarnStream& operator>>(Label& label);

    // ---- storage of stream objects ----------------------------------------------------------

    /// Stream objects allocated with new take their memory from the library's counted
    /// allocation (PlatformAlloc).
    static void* operator new(std::size_t size);
    static void operator delete(void* p) noexcept;

protected:
    // ---- for openers ---------------------------------------------------------------------

    /// Records the path of the open file (empty for none).
    void SetFileName(const String& path) { m_fileName = path; }
    /// Records the length of the data the progress display measures.
    void SetTotalLength(unsigned long long length) { m_progress.totalLength = length; }
    [[nodiscard]] unsigned long long GetTotalLength() const { return m_progress.totalLength; }
    /// Where the progress meter next advances.
    void SetNextMeterPosition(unsigned long long position) {
        m_progress.nextMeterPosition = position;
    }
    /// Starts the loading progress display for the file `path` (called by openers unless the
    /// don't-progress bit is set).
    void InitProgress(const String& path);
    /// Ends it and restores an outer display.
    void UnInitProgress();
    /// Advances the progress meter when the position has reached its next mark, whether or
    /// not InitProgress started the display.
    void AdvanceMeter();
    /// The suite-file marker, for openers of a stream with the Varn bit, at the start of the
    /// data. Loading reads the first byte: "B" sets the binary bit and stays read (the data
    /// begin after the marker), "<" sets version 13.0, and any byte but "B" is read again.
    /// Storing in binary writes "B". Every transport's opener calls this one function.
    void ApplySuiteFileMarker();

    // ---- the transport ---------------------------------------------------------------------
    // A transport shows the stream a window onto its bytes: a run of memory holding the bytes
    // around the position. The stream reads, writes and scans inside the window directly and
    // calls the transport only at the window's edges. A memory stream's window is its whole
    // block; a file's is its buffer.

    struct Window {
        /// The window's bytes: data[0] is the byte at the stream offset `origin`.
        unsigned char* data = nullptr;
        /// The stream offset of data[0].
        unsigned long long origin = 0;
        /// The position, counted from origin; it may lie past length (a seek past the end).
        unsigned long long position = 0;
        /// How many bytes of data hold the stream's bytes (can be read).
        unsigned long long length = 0;
        /// How many bytes of data can be written.
        unsigned long long capacity = 0;
        /// Set by every write into the window; the transport clears it when it has kept the
        /// written bytes.
        bool dirty = false;
    };

    /// Reading reached the end of the window's bytes (position >= length): make the window
    /// show the bytes at the position and return true, or return false at the end of the
    /// data, the window's bytes unchanged.
    virtual bool Refill(Window& window) = 0;
    /// Writing found room for fewer than `count` bytes at the position: make room and return
    /// how many bytes fit at the position now (enough for all of them when it can, at least
    /// 1), or 0 when the transport cannot write.
    virtual unsigned long long MakeRoom(Window& window, unsigned long long count) = 0;
    /// The position moves to `offset`, outside the window's bytes: move the window there.
    virtual void Reposition(Window& window, unsigned long long offset) = 0;
    /// The length of the data, counted from offset 0 (Seek from the end, VirtualEof).
    virtual unsigned long long DataLength(const Window& window) = 0;
    /// Flush: hand the window's written bytes to the carrier.
    virtual void Commit(Window& window) = 0;

    /// The window, for the transport's own members (its openers, its block's accessors).
    Window& TransportWindow() { return m_window; }
    [[nodiscard]] const Window& TransportWindow() const { return m_window; }

private:
    // ---- bytes through the window ------------------------------------------------------------

    /// The position as a stream offset.
    [[nodiscard]] unsigned long long Position() const {
        return m_window.origin + m_window.position;
    }
    /// Bytes that can be read from the window without the transport.
    [[nodiscard]] unsigned long long Available() const {
        return m_window.position < m_window.length ? m_window.length - m_window.position : 0;
    }
    /// Writes bytes: straight into the window when it has room, else through Write.
    void PutBytes(const void* bytes, std::size_t count) {
        if (count == 0)
            return;
        if (m_window.position <= m_window.capacity &&
            m_window.capacity - m_window.position >= count) {
            std::memcpy(m_window.data + m_window.position, bytes, count);
            m_window.position += count;
            if (m_window.position > m_window.length)
                m_window.length = m_window.position;
            m_window.dirty = true;
        } else {
            Write(bytes, count);
        }
    }
    /// Reads count bytes: straight from the window when it holds them, else through ReadC
    /// (what is left of the data; the rest of `bytes` stays as it was).
    void GetBytes(void* bytes, std::size_t count) {
        if (Available() >= count) {
            std::memcpy(bytes, m_window.data + m_window.position, count);
            m_window.position += count;
        } else {
            ReadC(bytes, count);
        }
    }
    /// Moves the position to a stream offset.
    void MoveTo(unsigned long long offset);
    /// The position is at or past the end of the data (the transport's length).
    bool IsPastData();
    /// Up to count bytes at the position, without moving it: in the window when it holds
    /// them, else read into `scratch` (count bytes of room) and the position put back.
    std::string_view Peek(char* scratch, std::size_t count);
    /// Asks the transport for the bytes at the position; false at the end of the data.
    bool RefillWindow();
    /// The next byte without taking it, or -1 at the end of the data.
    int PeekByte() {
        if (Available() == 0 && !RefillWindow())
            return -1;
        return m_window.data[m_window.position];
    }
    /// The next byte, or -1 at the end of the data.
    int NextByte() {
        const int c = PeekByte();
        if (c >= 0)
            ++m_window.position;
        return c;
    }

    template <class T> void WriteBinary(const T& value) { PutBytes(&value, sizeof value); }
    template <class T> void ReadBinary(T& value) { GetBytes(&value, sizeof value); }

    // ---- the scanner (Scanner.cpp) -------------------------------------------------------

    /// Reads one white-space-delimited token as ParseToken(String&) does and returns it:
    /// inside the window when it lies there, else in `spill`.
    std::string_view ScanToken(std::string& spill);
    /// The token for the number and bool readers, valid until the next read: inside the
    /// window, or in the library-wide scratch token when it crossed the window's edge.
    std::string_view ScalarToken();
    /// The next line as ReadLine defines it, valid until the next read: inside the window,
    /// or in `spill`. False at the end of the data.
    bool NextLine(std::string& spill, std::string_view& line);
    /// When the window holds `delimiter` within `limit` bytes of the position: `word` is the
    /// bytes before it, the position moves past it, true. Else false, nothing read.
    bool TakeFromWindow(char delimiter, std::size_t limit, std::string_view& word);
    bool IsTextHeaderNext(bool anyVersion);
    bool PeekWord(unsigned int& word);
    void ReadHeaderText(Header& header);
    void ReadHeaderBinary(Header& header);
    bool SkipHeaderText(const Header& header);
    bool SkipHeaderBinary(const Header& header);
    bool SkipPastText(unsigned int id);
    bool SkipPastBinary(unsigned int id);

    // ---- the encoder (Encoding.cpp) ----------------------------------------------------------

    void WriteBinaryCount(std::size_t length);
    /// Reads count bytes as a string's text; a shortage gives the empty string and sets
    /// the failed bit.
    void ReadCountedText(String& value, std::size_t count);
    void WriteCharacters(const char* text, std::size_t length, bool escape);

    // The value operators copy a binary value inline; the text forms are out of line.
    void WriteTextSigned(long long value);
    void WriteTextUnsigned(unsigned long long value);
    void WriteTextFloat(float value);
    void WriteTextDouble(double value);
    void WriteTextFloats(const float* values, int count);
    /// A token read as a 32-bit strtol reads it.
    long long ReadTextInt32();
    long long ReadTextInt64();
    /// A token read as strtoul reads it for an unsigned type whose largest value is max.
    unsigned long long ReadTextUnsigned(unsigned long long max);
    float ReadTextFloat();
    double ReadTextDouble();
    void ReadTextFloats(float* values, int count);

    /// The integers that are their own bytes in binary and decimal in text.
    template <class T> VarnStream& WriteInteger(T value) {
        if (IsBinary())
            WriteBinary(value);
        else if constexpr (static_cast<T>(-1) < 0)
            WriteTextSigned(value);
        else
            WriteTextUnsigned(value);
        return *this;
    }
    /// Those of them that read a 32-bit strtol in text.
    template <class T> VarnStream& ReadInteger(T& value) {
        if (IsBinary())
            ReadBinary(value);
        else
            value = static_cast<T>(ReadTextInt32());
        return *this;
    }
    /// The structures of floats: their floats in member order, without padding.
    template <class T> VarnStream& WriteFloatComposite(const T& value) {
        static_assert(sizeof(T) % sizeof(float) == 0);
        if (IsBinary())
            WriteBinary(value);
        else
            WriteTextFloats(reinterpret_cast<const float*>(&value),
                            static_cast<int>(sizeof(T) / sizeof(float)));
        return *this;
    }
    template <class T> VarnStream& ReadFloatComposite(T& value) {
        if (IsBinary())
            ReadBinary(value);
        else
            ReadTextFloats(reinterpret_cast<float*>(&value),
                           static_cast<int>(sizeof(T) / sizeof(float)));
        return *this;
    }

    // ---- state ---------------------------------------------------------------------------------

    /// The loading progress display (Progress.cpp).
    struct Progress {
        String savedStatusText;
        unsigned long long totalLength = 0;
        unsigned long long nextMeterPosition = 0;
        int meterStep = 0;
        bool ownsControl = false;
        bool displaying = false;
        bool initialised = false;
    };

    Window m_window;
    /// The mode bits without the failed bit, which m_failed holds.
    FileMode m_mode = FM_STORING;
    bool m_failed = false;
    bool m_writeStringCounts = true;
    float m_version;
    fileio::detail::TextGeneration m_generation;
    bool m_passedEOL = false;
    bool m_lastTokenWasHeader = false;
    bool m_lastTokenWasLabel = false;
    unsigned long long m_headerPosition = 0;
    String m_fileName;
    Progress m_progress;
};

// ---- manipulators ----------------------------------------------------------------------------
// Separators for the text form. The plain ones write nothing in binary; the "b" ones (spb,
// tabb) write their byte in binary too. nlb writes exactly what nl writes.

/// Text: "\n". Binary: nothing.
FILEIO_API VarnStream& nl(VarnStream& stream);
/// The same as nl.
FILEIO_API VarnStream& nlb(VarnStream& stream);
/// Text: " ". Binary: nothing.
FILEIO_API VarnStream& sp(VarnStream& stream);
/// " " in both forms.
FILEIO_API VarnStream& spb(VarnStream& stream);
/// Text: "\t". Binary: nothing.
FILEIO_API VarnStream& tab(VarnStream& stream);
/// "\t" in both forms.
FILEIO_API VarnStream& tabb(VarnStream& stream);

/// The number of colours in a bitmap's colour table: biClrUsed when it is not 0, else
/// 2 to the power biBitCount for 1, 4 and 8 bits per pixel, else 0.
FILEIO_API unsigned int BitmapColorCount(const tagBITMAPINFOHEADER& header);

/// Frees the library-wide scratch token of the text readers (at library shutdown).
FILEIO_API void FreeVarnFileToken();
