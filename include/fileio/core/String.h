// String.h - the library's owned 8-bit text string.
//
// A String is exactly one pointer to a NUL-terminated byte buffer taken from the string
// pool (AllocString/FreeString). Bytes are taken as they are: no encoding is imposed.
//
// Two empty states exist and are kept apart on purpose:
//   - null: the pointer is null. This is the canonical empty string; operations that
//     produce empty text by design leave the pointer null.
//   - empty buffer: a non-null pointer whose first byte is NUL (String('\0'),
//     String(p, 0), String(0, 0)).
// Both are IsEmpty(), but equality and ordering tell them apart: null orders before every
// non-null string and is not equal to an empty buffer.
//
// Comparison is case-insensitive throughout (ASCII letters only; bytes of 0x80 and above
// compare as they are); only Compare() can be asked to respect case. The searching text
// operations (Find, ReverseFind, Replace) ignore case the same way; RemoveAll matches bytes
// exactly.
//
// Number texts never depend on the process's locale: the decimal point is always ".", and
// the conversions back read "." whatever the locale says (see "conversions to numbers").
//
// Copies always duplicate the text: there is no sharing, no reference count, and the
// "move" operations copy and leave their source untouched.
//
// Thread safety: a String is not synchronised. Distinct strings may be used on different
// threads (the string pool locks each allocation and release).
//
// Example:
//   String name("Bone12");
//   name.GetNumberSuffix();          // 12
//   String(0.1f);                    // "0.100000001"
//   String("0.5").Str_atod();        // 0.5, in any locale
#pragma once

#include "fileio/Export.h"
#include "fileio/core/Vectors.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

class Time;
enum TimeUnit : int;

class FILEIO_API String {
public:
    // ---- construction -------------------------------------------------------------------

    /// The null string.
    String() noexcept : m_str(nullptr) {}
    /// A copy of other's text. Copying allocates only for a length of 1 or more, so both
    /// null and an empty buffer copy to null.
    String(const String& other);
    /// Copies like the copy constructor and leaves `other` untouched.
    String(String&& other);
    /// Null pointer or "" gives null; otherwise a copy of the text.
    String(const char* text);
    /// Always allocates room for n bytes and copies exactly n bytes from p (embedded NULs
    /// too): n = 0 gives a non-null empty buffer. A negative n counts as 0; a null p leaves
    /// the buffer zeroed.
    String(const char* p, int n);
    /// One character: always allocates, so String('\0') is a non-null empty buffer.
    String(char c);
    String(unsigned char c);
    /// n copies of c, terminated; always allocates (n <= 0 gives an empty buffer).
    String(char c, int n);
    /// A zeroed buffer of n + 1 bytes: empty text with room for n characters to be written
    /// through Get(). The second argument is ignored. A negative n counts as 0.
    String(int n, int);
    /// size() 0 gives null; otherwise a copy of size() bytes.
    String(const std::string& text);

    // Numbers and vectors convert implicitly, as host code expects.

    /// Integers: plain decimal digits, "-" for negative values, no padding or grouping; the
    /// most negative value of each type is exact ("-9223372036854775808").
    String(short value);
    String(unsigned short value);
    String(int value);
    String(unsigned int value);
    String(long value);
    String(unsigned long value);
    String(long long value);
    String(unsigned long long value);
    /// "%.9g" (enough digits for every float to read back exactly): 0.1f -> "0.100000001",
    /// 1e10f -> "1e+10", -0.0f -> "-0". Infinities are "inf" and "-inf"; a quiet NaN is
    /// "nan" or "-nan", except the default indeterminate NaN (sign set, only the top
    /// mantissa bit set), which is "-nan(ind)"; a signalling NaN is "nan(snan)" or
    /// "-nan(snan)".
    String(float value);
    /// "%.17g" with the same special spellings: 0.1 -> "0.10000000000000001", 0.5 -> "0.5".
    String(double value);
    /// "%.*f" with min(decimals, 9) digits after the point (a negative count means 6), then,
    /// only when the text has a ".", trailing zeros and a trailing "." removed:
    /// String(0.125f, 2) is "0.12" (ties go to even on the exact binary value).
    String(float value, int decimals);
    /// As above with min(decimals, 17): String(2.0, 2) is "2", String(100.0, 0) is "100".
    String(double value, int decimals);
    /// Components as floats ("%.9g"), joined by one space, in member order: "1 0.5".
    String(const Vector2& v);
    String(const Vector& v);
    String(const RGBFloat& c);
    String(const RotateEuler& r);
    String(const Vector4& v);
    String(const Quaternion& q);
    String(const RGBAFloat& c);

    /// Frees the buffer.
    ~String();

    // ---- assignment ---------------------------------------------------------------------

    /// Self-assignment does nothing; otherwise frees the old buffer and copies.
    String& operator=(const String& other);
    String& operator=(String&& other);
    /// Replaces the text with a copy as String(const char*) makes it. The copy is made
    /// before the old buffer is freed, so a pointer into this string's own text works.
    String& operator=(const char* text);
    String& operator=(const unsigned char* text);
    String& operator=(const std::string& text);
    /// Frees the old buffer; if p is non-null and n >= 1 copies n bytes, else leaves null.
    void Set(const char* p, int n);

    // ---- access -------------------------------------------------------------------------

    /// The buffer, which may be null.
    [[nodiscard]] char* Get() const noexcept { return m_str; }
    /// The text length (0 for null).
    [[nodiscard]] unsigned long long GetLength() const noexcept;
    /// The text length as int (texts longer than INT_MAX report INT_MAX).
    [[nodiscard]] int GetLength_Int() const noexcept;
    /// Null or first byte NUL.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_str == nullptr || m_str[0] == '\0'; }
    [[nodiscard]] bool IsNotEmpty() const noexcept { return !IsEmpty(); }
    /// The byte at i, or NUL for the null string. No bounds check.
    char operator[](int i) const noexcept { return m_str ? m_str[i] : '\0'; }
    /// A view of the text (empty for null).
    [[nodiscard]] std::string_view View() const noexcept {
        return m_str ? std::string_view(m_str) : std::string_view();
    }

    // ---- appending and removing -----------------------------------------------------------

    /// Appends s (nothing happens when s is empty; a null left side stays null then).
    /// Appending a string to itself works.
    String& operator+=(const String& s);
    /// Appends one character; NUL changes nothing.
    String& operator+=(char c);
    /// Removes every non-overlapping occurrence of pattern (exact bytes), left to right, and
    /// returns the count. An empty pattern or text removes nothing and returns 0; removing
    /// everything leaves an empty buffer. "abcab".RemoveAll("ab") gives "c" and returns 2.
    int RemoveAll(const String& pattern);

    // ---- conversions to numbers -----------------------------------------------------------
    // The C runtime's conversions as they behave in the "C" locale, whatever the process's
    // locale is:
    //   - leading white space (space, \t, \n, \v, \f, \r) is skipped, then an optional sign;
    //   - parsing stops at the first character that does not fit, and what was read so far
    //     counts ("12abc" -> 12, "1e" -> 1, "1e+" -> 1); a text without a number (also null,
    //     "", "-", "." and "abc") gives 0.
    // Integers are decimal. Widths follow the Windows data model on every platform:
    //   - Str_atoi and Str_atol give a 32-bit value, clamped to [-2147483648, 2147483647]
    //     on overflow as a 32-bit strtol clamps;
    //   - Str_atoul gives a 32-bit unsigned value with strtoul's rules: a "-" negates modulo
    //     2^32 ("-1" -> 4294967295), and a magnitude above 4294967295 gives 4294967295
    //     whatever the sign;
    //   - Str_atoll and Str_atoull follow the same rules with 64 bits.
    // Floating point (Str_atof as strtof, Str_atod as strtod) reads decimal numbers with an
    // optional "e" exponent, hexadecimal numbers ("0x1.8p3" is 12), and, ignoring case,
    // "inf", "infinity", "nan" and "nan(chars)". Results are correctly rounded. Overflow
    // gives +-infinity (HUGE_VAL); underflow gives the correctly rounded tiny value, or a
    // zero of the text's sign. A numeric "nan(n)" sets the NaN's payload as glibc does;
    // "nan(snan)" gives a signalling NaN and "-nan(ind)" the default indeterminate NaN. So
    // every text the number constructors write reads back to the same value; a NaN comes
    // back with its sign and its kind (quiet or signalling), its payload is not written.

    [[nodiscard]] int Str_atoi() const noexcept;
    [[nodiscard]] long Str_atol() const noexcept;
    [[nodiscard]] long long Str_atoll() const noexcept;
    [[nodiscard]] unsigned long Str_atoul() const noexcept;
    [[nodiscard]] unsigned long long Str_atoull() const noexcept;
    [[nodiscard]] float Str_atof() const noexcept;
    [[nodiscard]] double Str_atod() const noexcept;

    // ---- comparison -----------------------------------------------------------------------
    // Case-insensitive (as _stricmp: both bytes lowered, then compared as unsigned); null
    // orders before everything, including an empty buffer:
    //   ==  both null: true; one null: false; else equal ignoring case.
    //   <   left null: true exactly when right is non-null; right null: false.
    //   <=  left null: true; right null: false.   >, >= mirror < and <=.

    friend FILEIO_API bool operator==(const String& a, const String& b) noexcept;
    friend FILEIO_API bool operator!=(const String& a, const String& b) noexcept;
    friend FILEIO_API bool operator<(const String& a, const String& b) noexcept;
    friend FILEIO_API bool operator<=(const String& a, const String& b) noexcept;
    friend FILEIO_API bool operator>(const String& a, const String& b) noexcept;
    friend FILEIO_API bool operator>=(const String& a, const String& b) noexcept;

    /// A stricter equality: false when either string is empty (two empty strings are not
    /// equal), false when the lengths differ, else byte equality (caseSensitive) or equality
    /// after tolower.
    [[nodiscard]] bool Compare(const String& other, bool caseSensitive) const noexcept;

    // ---- storage of String objects themselves ---------------------------------------------

    /// String objects allocated with new live in the string pool too.
    static void* operator new(std::size_t size);
    static void operator delete(void* p) noexcept;
    /// Construction in storage the caller provides, as the global placement form.
    static void* operator new(std::size_t, void* where) noexcept { return where; }
    static void operator delete(void*, void*) noexcept {}

    // ---- searching --------------------------------------------------------------------------
    // Indices are byte offsets. Letters match ignoring case (ASCII). An empty pattern or a
    // NUL character is never found. No input reads outside the text.

    /// The first index >= start (negative counts as 0) where c occurs, or -1.
    [[nodiscard]] int Find(char c, int start = 0) const noexcept;
    /// The first index >= start where pattern begins, or -1. "Scene.PRJ".Find(".prj") is 5.
    [[nodiscard]] int Find(const String& pattern, int start = 0) const noexcept;
    /// The last index <= start where c occurs, or -1. A negative start (the default) or one
    /// past the end searches from the last character.
    [[nodiscard]] int ReverseFind(char c, int start = -1) const noexcept;
    /// The last index <= start where pattern begins, or -1; start as for ReverseFind(char).
    [[nodiscard]] int ReverseFind(const String& pattern, int start = -1) const noexcept;

    // ---- parts ------------------------------------------------------------------------------
    // Counts are clamped to the text; an empty result is null.

    /// The first count characters ("Bone12".Left(4) is "Bone").
    [[nodiscard]] String Left(int count) const;
    /// The last count characters ("Bone12".Right(2) is "12").
    [[nodiscard]] String Right(int count) const;
    /// count characters from first (a negative count means "to the end"; a negative first
    /// counts as 0): "abcdef".Mid(2, 3) is "cde", "abcdef".Mid(4) is "ef".
    [[nodiscard]] String Mid(int first, int count = -1) const;
    /// The next token at or after position: delimiters at position are skipped, the token
    /// runs to the next delimiter (any byte of `delimiters`, matched exactly) or the end,
    /// and position moves just past that delimiter. When no token is left the result is
    /// null and position becomes -1 (also for a position that is negative or past the end).
    /// Example: over "C:/a//b" with ":/": "C", "a", "b", then null with position -1.
    [[nodiscard]] String Tokenize(const String& delimiters, int& position) const;

    // ---- changing the text in place -----------------------------------------------------------
    // Each returns the string itself. A result with no text leaves the string null.

    /// Replaces every non-overlapping occurrence of oldText (ignoring case), left to right,
    /// with newText (which may be empty) and returns the count. An empty oldText replaces
    /// nothing.
    int Replace(const String& oldText, const String& newText);
    /// Removes leading / trailing / both white space (space, \t, \n, \v, \f, \r).
    String& TrimLeft();
    String& TrimRight();
    String& Trim();
    /// Removes leading / trailing / both bytes that occur in characters (matched exactly).
    String& TrimLeft(const String& characters);
    String& TrimRight(const String& characters);
    String& Trim(const String& characters);
    /// ASCII letters to upper / lower case; other bytes stay.
    String& MakeUpper() noexcept;
    String& MakeLower() noexcept;

    // ---- XML escapes ----------------------------------------------------------------------------

    /// Turns the escapes "&amp;", "&lt;", "&gt;", "&quot;", "&apos;" and the numeric forms
    /// "&#NN;" / "&#xHH;" (a byte 1 to 255, at most 8 digits) back into their characters
    /// and returns how many it turned. Anything else, a malformed escape included, stays as
    /// it is. "A&#38;B" becomes "A&B".
    int ContractXMLEscapes();
    /// The inverse: "&", "<", ">", '"' and "'" become "&amp;", "&lt;", "&gt;", "&quot;"
    /// and "&apos;". Returns how many characters it escaped.
    int ExpandXMLEscapes();
    /// The text enclosed in double quotes (null gives "\"\"").
    [[nodiscard]] String Quote() const;

    // ---- display
    // -----------------------------------------------------------------------------------

    /// The text shortened to at most maxLength bytes for display. A text that fits is
    /// returned whole. A path keeps its leading folders (as many whole ones as fit, at
    /// least the first) and its file name, with "..." in place of the folders between:
    /// "C:\Projects\Robot\Parts\scene.prj" at 25 is "C:\Projects\...\scene.prj". Both "\"
    /// and "/" separate. When even the first folder and the name do not fit, the result is
    /// "..." followed by the end of the text; a maxLength below 4 gives the first maxLength
    /// bytes (null for 0 or less).
    [[nodiscard]] String GetAbbreviated(int maxLength) const;

    // ---- numbered names
    // -------------------------------------------------------------------------- A name's number
    // suffix is its run of trailing decimal digits, at most the last 9 (so it always fits an int):
    // "Bone12" has the suffix 12 after "Bone".

    /// The suffix's value, or -1 when the text does not end in a digit.
    [[nodiscard]] int GetNumberSuffix() const noexcept;
    /// The text before the suffix ("Bone12" -> "Bone", "Bone" -> "Bone", "12" -> null).
    [[nodiscard]] String GetWithoutNumberSuffix() const;
    /// The next name in the numbered sequence: the suffix plus 1, keeping its width with
    /// leading zeros: "Bone" -> "Bone1", "Bone12" -> "Bone13", "Bone007" -> "Bone008",
    /// "Bone99" -> "Bone100".
    [[nodiscard]] String GetNextNumberedName() const;
    /// The first name after this one in the numbered sequence that does not equal (ignoring
    /// case) any name in taken: with "Bone1" and "bone2" taken, "Bone" gives "Bone3".
    [[nodiscard]] String GetNextFreeName(std::span<const String> taken) const;

    // ---- times (core/Time.h)

    /// Reads a time written in a unit at a rate (the text forms of Time::ToString). A
    /// leading "-" negates the result. The text is cut at every ":" into fields, each read
    /// as strtof reads (garbage gives 0); the last field is frames, the one before seconds,
    /// the one before that minutes, and earlier ones fall off. In SMPTE, digits typed
    /// without separators carry: a frame field of 100 or more (1000 or more at 100 fps and
    /// above) gives its hundreds (thousands) to the seconds, and seconds of 100 or more give
    /// their hundreds to the minutes, so at 30 fps "250" is 2 s 50 frames and "11015" is
    /// 1 min 10 s 15 frames. In CELLS the frame is the cell minus 1 (minus 0 with
    /// zeroBasedCells). Never fails; the process's locale plays no part.
    [[nodiscard]] Time ToTime(int fps, TimeUnit unit, bool zeroBasedCells) const;

    // ---- paths (path/) ----------------------------------------------------------------------
    // The string is a path. Decomposition reads both separators ("\" and "/") on every
    // platform; what joins or converts writes the platform's own ("\" on Windows, "/" on
    // Linux). Each member returns a new String unless it says otherwise.

    /// The folder part: the text up to and including the last separator, empty when there
    /// is none. "C:\a\b.mdl" -> "C:\a\"; a path that ends in a separator is kept whole.
    [[nodiscard]] String GetPathOnly() const;
    /// The name after the last separator: "C:\a\b.mdl" -> "b.mdl".
    [[nodiscard]] String GetNameOnly() const;
    /// The name without its suffix: "C:\a\b.tar.gz" -> "b.tar".
    [[nodiscard]] String GetNameOnlyWithoutSuffix() const;
    /// The suffix of the name, without its dot: "C:\a\b.tar.gz" -> "gz"; empty when the
    /// name has no ".".
    [[nodiscard]] String GetSuffixOnly() const;
    /// `folder` and `name` joined by exactly one native separator (the folder's trailing and
    /// the name's leading separators dropped). An empty folder gives the name; an empty name
    /// gives the folder with one trailing separator.
    [[nodiscard]] static String CombineNameToPath(const String& folder, const String& name);
    /// Collapses every run of separators in place to its first character, keeping the two
    /// leading ones of a network path ("\\server" or "//server"). Returns the number of
    /// characters removed.
    int FindAndRemoveDoubleSeparators();
    /// The one-character string ".".
    [[nodiscard]] static String Point();
    /// The folder of the running program, without a trailing separator; empty when the
    /// system cannot tell.
    [[nodiscard]] static String GetAppPath();
    /// The program's folder and `name` joined as CombineNameToPath joins them.
    [[nodiscard]] static String AddNameToExeDirectory(const String& name);

    /// The path in universal form, relative to the base path (SetBasePath) where the two
    /// share a leading component: with the base "C:/Projects/Robot/",
    /// "C:\Projects\Robot\Parts\arm.mdl" gives "Parts/arm.mdl",
    /// "C:\Projects\Shared\sky.tga" gives "../Shared/sky.tga" and "D:\sky.tga" stays
    /// "D:/sky.tga". The base folder itself gives "."; the base folder without its trailing
    /// separator gives an empty string.
    /// Without a base path, the universal form. An empty string stays empty.
    [[nodiscard]] String GetRelativePath() const;
    /// The universal (relative or absolute) path resolved to a native absolute path against
    /// the base folder: the match base when `useMatchBase`, else the base (the two are equal
    /// unless the library sets them apart). "." gives the base folder with a trailing
    /// separator. Resolution makes the base folder the process's current directory when
    /// that folder exists, and leaves it so. A path that cannot be resolved comes back in
    /// native form; without a base path, the path in native form.
    [[nodiscard]] String GetAbsolutePath(bool useMatchBase) const;
    /// The same against the base folder, with no failure trace, and without the final
    /// conversion to native form of GetAbsolutePath(bool): "." gives the base folder in
    /// universal form.
    [[nodiscard]] String GetAbsolutePath() const;
    /// The universal form of the path's network form (GetUNCFileName), not made relative.
    [[nodiscard]] String GetNonRelativePath() const;
    /// A path on a volume of a Macintosh file server (one that contains "MACSERVER/" and
    /// "Volumes/VOL/") as the path of the network share named VOL in capitals, found among
    /// the mapped drives (network mounts on Linux): "\\server\VOL/rest". Any other path,
    /// or when no drive is connected to that share, unchanged.
    [[nodiscard]] String GetServerFileName() const;
    /// The network form of a local path: "\\host\share\rest" for a path within a folder
    /// this machine shares, else the mapped drive's connection in place of the drive
    /// ("//server/share/rest" for a path below a network mount on Linux). Drive-letter
    /// paths, paths that begin with two separators and paths that cannot be converted come
    /// back unchanged.
    [[nodiscard]] String GetUNCFileName() const;
    /// A copy in which a ":" in the second position becomes "-" ("C:\Data\" ->
    /// "C-\Data\"), for use as a share-like name.
    [[nodiscard]] String NetSharePlaceHolder() const;
    /// The path quoted, as the file-reference fields write it; empty stays empty.
    [[nodiscard]] String GetFileNamesMatchName() const;
    /// A quoted native name (C:\a\b.mdl within double quotes) as a quoted universal name
    /// relative to the base path, for writing. A string without a double quote comes back
    /// unchanged.
    [[nodiscard]] String GetMatchNameRelativeForFile() const;
    /// A quoted universal name read from a file as a quoted native absolute name, resolved
    /// against the match base. A string without a double quote comes back unchanged.
    [[nodiscard]] String GetMatchNameAbsoluteFromFile() const;

    // ---- log file (handlers/)

    /// The full name of the log file that the host's log handler writes: the application's
    /// folder followed by "\tollan.log" on Windows and by "/tollan.log" on Linux. Computed
    /// on the first call; the same text for the rest of the process's life.
    static String GetLogFileName();

private:
    /// A new pool buffer holding text, or null when text is empty.
    static char* CopyOf(std::string_view text);
    /// Frees the current buffer and takes buffer (which may be null) in its place.
    void Install(char* buffer) noexcept;
    /// Removes leading (left) and / or trailing (right) bytes that occur in characters.
    String& TrimCharacters(std::string_view characters, bool left, bool right);

    char* m_str;
};

/// The concatenation of a and b; null when both are empty.
FILEIO_API String operator+(const String& a, const String& b);
FILEIO_API String operator+(const String& a, const char* b);
FILEIO_API String operator+(const char* a, const String& b);
