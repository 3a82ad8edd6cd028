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
// Failure. Nothing throws. Transports record a short read in the failed bit, which IsFailed
// reads and clears in one call. Every scan stops at the end of the data, so no input makes a
// reader loop for ever, and every buffer is bounded: a header text keeps at most 79
// characters, a delimited token at most 254.
//
// Thread safety: a stream is used by one thread at a time. Text number and bool reading share
// one library-wide scratch token, so only one thread at a time may read text numbers.
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

    // ---- the transport (derived classes) -------------------------------------------------
    // The token readers below (ReadLine, ParseString, ParseToken) are declared pure but have a
    // byte-by-byte definition here, written with ReadC, Seek and GetPos only, which a transport
    // without a faster way may call explicitly (VarnStream::ParseToken(out)).

    /// Reads up to count bytes; returns how many were read (0 at the end).
    virtual unsigned long long ReadC(void* buffer, unsigned long long count) = 0;
    /// Reads count bytes; a transport that cannot deliver them all may set the failed bit.
    virtual void Read(void* buffer, long count) = 0;
    /// Writes count bytes.
    virtual void Write(const void* data, unsigned long long count) = 0;
    virtual void Flush() = 0;
    virtual void Close() = 0;
    /// Reads the next line into `line` (replacing its contents), line end included: in text a
    /// line ends after LF, CR LF or a lone CR; in binary a line is one 32-bit token word (or
    /// what is left of the data). Returns false, reading nothing, at the end of the data.
    virtual bool ReadLine(MemoryStream& line) = 0;
    /// The same into a String (a NUL byte in the line ends the String's text).
    virtual bool ReadLine(String& line) = 0;
    /// Reads a string value. Text: as ParseToken(String&), one white-space-delimited token
    /// with no quoting. Binary: a one-byte count, then that many bytes; a count larger than
    /// the data left gives the empty string and sets the failed bit.
    virtual void ParseString(String& out) = 0;
    /// Text: reads bytes up to `delimiter` (consumed, not kept) or the end of the data into
    /// `out`, a buffer of 255 bytes: at most 254 bytes are kept, then a NUL; the bytes beyond
    /// are consumed up to the delimiter and dropped. REQUIRES: out has room for 255 bytes.
    virtual void ParseToken(char* out, char delimiter) = 0;
    /// Text: skips " ", "\t", "\n", "\r"; takes the bytes up to the next of those; then skips
    /// spaces and tabs and then CR and LF bytes. DidPassEOL tells afterwards whether a line end
    /// was skipped (the token was the last on its line). Advances the progress meter.
    virtual void ParseToken(String& out) = 0;
    /// Moves the position (see SeekMode). No bounds check.
    virtual void Seek(long long offset, SeekMode mode) = 0;
    virtual unsigned long long GetPos() = 0;
    /// At the end of the data.
    virtual bool VirtualEof() = 0;

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

    // ---- token reading helpers -----------------------------------------------------------

    /// ParseToken with a delimiter into a zeroed 255-byte buffer, assigned to out.
    void ParseToken(String& out, char delimiter);
    /// Reads bytes up to `delimiter` (consumed, not kept) or the end of the data.
    String ReadString(char delimiter);
    /// Skips " ", "\t", "\n", "\r" up to the next other byte (a NUL stops too), the end of
    /// the data, or 255 bytes: the byte that stopped the scan is read again next.
    void SkipWhite();
    /// Skips to the start of the next line: past the next run of CR and LF bytes (any mix
    /// counts as one line end), reading at most 255 bytes in all.
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

    // ---- framework class identities -------------------------------------------------------

    /// Reads a class identity written by StoreRuntimeClass: stores its schema number in
    /// *schema (when schema is not null) and returns the registered class of that name, or
    /// null when the name is unknown, 64 bytes or longer, or cut short.
    const RuntimeClass* LoadRuntimeClass(unsigned int* schema);
    /// Writes the class's schema number and the length of its name (both 16-bit), then the
    /// name's bytes. Meant for binary streams: in text the two numbers run together.
    void StoreRuntimeClass(const RuntimeClass& runtimeClass);

    // ---- mode ------------------------------------------------------------------------------

    [[nodiscard]] FileMode GetMode() const { return m_mode; }
    void SetMode(FileMode mode) { m_mode = mode; }
    [[nodiscard]] bool IsLoading() const { return (m_mode & FM_LOADING) != 0; }
    [[nodiscard]] bool IsStoring() const { return !IsLoading(); }
    [[nodiscard]] bool IsBinary() const { return (m_mode & FM_BINARY) != 0; }
    [[nodiscard]] bool IsAscii() const { return !IsBinary(); }
    [[nodiscard]] bool IsByteSwap() const { return (m_mode & FM_BYTESWAP) != 0; }
    [[nodiscard]] bool IsAppend() const { return (m_mode & FM_APPEND) != 0; }
    /// Returns the failed bit and clears it: after one failure, true once, then false.
    bool IsFailed();
    void OnFailed() { m_mode = m_mode | FM_FAILED; }
    void OffFailed() { m_mode = m_mode & ~FM_FAILED; }
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

    /// The format version of the text form (13.0 and above: angle brackets).
    [[nodiscard]] float GetVersion() const { return m_version; }
    void SetVersion(float version) { m_version = version; }
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
    /// Reads a header or end header (see the class comment for both forms). Text, square
    /// form: an end header's text keeps its "END"; angle form: it keeps its "/". The word is
    /// looked up as a header word first, then as a label word (label words may open
    /// sections); an end header's id carries bit 29; an unknown word gives id -1. In text the
    /// white space after the header is skipped (in both generations), so that the next
    /// token starts at the position.
    VarnStream& operator>>(Header& header);
    /// Reads a label: text, the word up to "=" (white space before it is skipped); binary,
    /// the id word with bit 30 cleared.
    VarnStream& operator>>(Label& label);

    // ---- storage of stream objects ----------------------------------------------------------

    /// Stream objects allocated with new take their memory from the library's counted
    /// allocation (PlatformAlloc).
    static void* operator new(std::size_t size);
    static void operator delete(void* p) noexcept;

protected:
    /// Reads one white-space-delimited token exactly as ParseToken(String&) does, for the
    /// number and bool readers. Returns it NUL-terminated: in `scratch` when it fits, else in
    /// the library's shared file token. A transport may override this to avoid a String.
    virtual const char* ParseScalarToken(char (&scratch)[256]);

    /// Starts the loading progress display for the file `path` (called by openers unless the
    /// don't-progress bit is set).
    void InitProgress(const String& path);
    /// Ends it and restores an outer display.
    void UnInitProgress();
    /// The suite-file marker, for openers of a stream with the Varn bit. Loading reads the
    /// first byte: "B" sets the binary bit (and stays read unless markerStaysInData), "<"
    /// sets version 13.0, and any byte but "B" is read again. Storing in binary writes "B".
    /// Then clears the failed bit and, with the append bit, moves to the end.
    void HandleVarnMarker(bool markerStaysInData);

    /// The data of a transport whose bytes lie in one block of memory (MemoryStream keeps
    /// its buffer, position, length and capacity here). The value readers and writers and
    /// the scans copy through it directly when it holds what they need, and call the
    /// virtual transport otherwise; a transport without a block leaves it empty. A
    /// transport that has one must not override ReadC, Read, Write, Seek or GetPos.
    struct Block {
        unsigned char* data = nullptr;
        unsigned long long position = 0;
        unsigned long long length = 0;
        unsigned long long capacity = 0;
    };

    String m_savedStatusText;
    unsigned long long m_totalLength = 0;
    unsigned long long m_nextMeterPosition = 0;
    int m_meterStep = 0;
    FileMode m_mode = FM_STORING;
    bool m_ownsProgressControl = false;
    bool m_passedEOL = false;
    bool m_lastTokenWasHeader = false;
    bool m_lastTokenWasLabel = false;
    bool m_writeStringCounts = true;
    bool m_displaying = false;
    bool m_progressInitialised = false;
    float m_version = 5.0f;
    String m_fileName;
    unsigned long long m_headerPosition = 0;
    Block m_block;

private:
    /// Writes bytes: straight into the block when it has room, else through Write.
    void PutBytes(const void* bytes, std::size_t count) {
        if (count == 0)
            return;
        if (m_block.position <= m_block.capacity && m_block.capacity - m_block.position >= count &&
            m_block.data != nullptr) {
            std::memcpy(m_block.data + m_block.position, bytes, count);
            m_block.position += count;
            if (m_block.position > m_block.length)
                m_block.length = m_block.position;
        } else {
            Write(bytes, count);
        }
    }
    /// Reads exactly count bytes: straight from the block when it holds them, else through
    /// Read (whose shortage is the transport's to report).
    void GetBytes(void* bytes, std::size_t count) {
        if (m_block.position <= m_block.length && m_block.length - m_block.position >= count &&
            m_block.data != nullptr) {
            std::memcpy(bytes, m_block.data + m_block.position, count);
            m_block.position += count;
        } else {
            Read(bytes, static_cast<long>(count));
        }
    }
    template <class T> void WriteBinary(const T& value) { PutBytes(&value, sizeof value); }
    template <class T> void ReadBinary(T& value) { GetBytes(&value, sizeof value); }
    /// Up to count bytes at the position, without moving it: in the block when the stream
    /// has one, else read into scratch (count bytes of room) and the position put back.
    std::string_view Peek(char* scratch, std::size_t count);
    /// Moves the position forward by count bytes.
    void Advance(std::size_t count);
    /// The position, without a virtual call for a block.
    unsigned long long Position() { return m_block.data != nullptr ? m_block.position : GetPos(); }

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
    void ReadHeaderText(Header& header);
    void ReadHeaderBinary(Header& header);
    bool PeekWord(unsigned int& word);
    bool IsTextHeaderNext(bool anyVersion);
    bool SkipHeaderText(const Header& header);
    bool SkipHeaderBinary(const Header& header);
    bool SkipPastBinary(unsigned int id);
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

/// Frees the shared scratch token of the text number readers (at library shutdown).
FILEIO_API void FreeVarnFileToken();
