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
// Comparison is case-insensitive throughout (ASCII letters); only Compare() can be asked
// to respect case. Number texts never depend on the process's locale: the decimal point is
// always ".", and the conversions back read "." whatever the locale says.
//
// Copies always duplicate the text: there is no sharing, no reference count, and the
// "move" operations copy and leave their source untouched.
//
// Thread safety: a String is not synchronised. Distinct strings may be used on different
// threads (the string pool locks each allocation and release).
#pragma once

#include "fileio/Export.h"
#include "fileio/core/Vectors.h"

#include <cstddef>
#include <string>
#include <string_view>

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
    /// Always allocates room for n bytes and copies exactly n bytes from p (which is not
    /// tested): n = 0 gives a non-null empty buffer. REQUIRES: n >= 0.
    String(const char* p, int n);
    /// One character: always allocates, so String('\0') is a non-null empty buffer.
    String(char c);
    String(unsigned char c);
    /// n copies of c.
    String(char c, int n);
    /// A zeroed buffer of n + 1 bytes: empty text with room for n characters to be written
    /// through Get(). The second argument is ignored.
    String(int n, int);
    /// size() 0 gives null; otherwise a copy of size() bytes.
    String(const std::string& text);

    // Numbers and vectors convert implicitly, as host code expects.

    /// Integers: plain decimal digits, "-" for negative values, no padding or grouping.
    String(short value);
    String(unsigned short value);
    String(int value);
    String(unsigned int value);
    String(long value);
    String(unsigned long value);
    String(long long value);
    String(unsigned long long value);
    /// "%.9g": 0.1f -> "0.100000001", 1e10f -> "1e+10", -0.0f -> "-0". Infinities are "inf"
    /// and "-inf"; NaNs are "nan", "-nan", "-nan(ind)" (the default indeterminate NaN) and
    /// "nan(snan)" / "-nan(snan)" (signalling).
    String(float value);
    /// "%.17g": 0.1 -> "0.10000000000000001", 0.5 -> "0.5".
    String(double value);
    /// Fixed notation with min(decimals, 9) digits after the point, then (only when the text
    /// has a ".") trailing zeros and a trailing "." removed: String(0.125f, 2) is "0.12".
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
    /// Frees the old buffer first, then copies as String(const char*). Assigning a pointer
    /// into this string's own buffer is not supported.
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
    /// Removes every non-overlapping occurrence of pattern, left to right, and returns the
    /// count. An empty pattern or text removes nothing and returns 0.
    int RemoveAll(const String& pattern);

    // ---- conversions to numbers -----------------------------------------------------------
    // Decimal, leading white space skipped, parsing stops at the first character that does
    // not fit, a text without a number gives 0: the C runtime's conversions in the "C" locale.
    // Widths follow the Windows data model on every platform: Str_atoi and Str_atol give a
    // 32-bit value (clamped as a 32-bit strtol clamps), Str_atoul a 32-bit unsigned value.

    [[nodiscard]] int Str_atoi() const noexcept;
    [[nodiscard]] long Str_atol() const noexcept;
    [[nodiscard]] long long Str_atoll() const noexcept;
    [[nodiscard]] unsigned long Str_atoul() const noexcept;
    [[nodiscard]] unsigned long long Str_atoull() const noexcept;
    [[nodiscard]] float Str_atof() const noexcept;
    [[nodiscard]] double Str_atod() const noexcept;

    // ---- comparison -----------------------------------------------------------------------
    // Case-insensitive; null orders before everything, including an empty buffer.

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

    // ---- text operations ------------------------------------------------------------------
    // (declared below by the string text operations)

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
    /// The text enclosed in double quotes (an empty string gives two quote characters).
    [[nodiscard]] String Quote() const;
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

private:
    char* m_str;
};
