// HiveFile.h - the text form of the settings hive kept in a file (the Linux settings store).
//
// The file is meant to be read and, with care, edited by a person. It is a list of lines,
// ended by "\n" (a "\r" before it is tolerated):
//
//     ; Settings of the Varn, Inc. applications, kept by FileIO.
//
//     [Software\Varn, Inc.\Animator\Options]
//     AutoSave=ON
//     Last Folder=/home/ann/projects
//     Greeting=Hello%0Aworld
//
//     [SOFTWARE\Varn, Inc.\Folders v19.5 64bit]
//     Plugins=/opt/varn/plugins;/home/ann/plugins
//
// - "[key]" starts the values of a key: the key's path from the user's root, its names
//   separated by "\". Keys and value names compare without regard to ASCII case, as the
//   registry compares them; a key's parents need no lines of their own.
// - "name=value" is a value of the key above it: the name runs to the first "=", the value
//   to the line's end. Blanks around the name and the value are not part of them.
// - Blank lines and lines starting with ";" or "#" are kept as they are.
// - Escaping: "%HH" (two hex digits) stands for the byte 0xHH. The writer escapes "%",
//   every byte below 0x20, 0x7F and every byte of 0x80 or above (so the file is plain
//   ASCII and line ends inside a text cannot break a line), and a blank at either end of
//   a text. In names it also escapes "=", "[", "]", ";" and "#"; in key names "[" and "]".
//   The reader accepts unescaped bytes of 0x80 or above as they are.
// - Every other line is damage (a "[" line without its "]", a line without "=", a bad
//   "%" escape, an escaped NUL, a value above the first key or below a damaged "[" line):
//   it is skipped when reading, kept byte for byte when the file is written back, and
//   listed by Damage().
//
// A value added to a key goes after the last value (or damaged) line of the key's first
// block; a key that has no block yet gets one at the end of the file, after a blank line.
// Where a key or a name occurs more than once (a hand edit), the first occurrence is the
// one read and changed; removing a value removes all its occurrences.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace fileio::platform {

/// A parsed hive file. Not synchronised: one thread at a time.
class HiveDocument {
public:
    /// A line that could not be read: its 1-based number and its bytes (without line end).
    struct DamagedLine {
        std::size_t number;
        std::string text;
    };

    /// Parses `text`; never fails. An empty text gives a document holding only the file's
    /// opening comment.
    explicit HiveDocument(std::string_view text);

    /// Finds value `name` of `key`. True, with `value` set, when it is there.
    bool Find(std::string_view key, std::string_view name, std::string& value) const;
    /// Sets value `name` of `key` to `value`, adding the key's block when needed. An
    /// existing value keeps the case of its stored name. Returns false (and changes
    /// nothing) when the value already holds exactly that text.
    /// REQUIRES: NormalizeKeyPath(key) is not empty; no NUL in name or value.
    bool Set(std::string_view key, std::string_view name, std::string_view value);
    /// Removes every line of value `name` of `key`. True when a line was removed.
    bool Remove(std::string_view key, std::string_view name);
    /// Removes the blocks of `key` and of every key below it, with all their lines. True
    /// when a block was removed.
    bool RemoveKey(std::string_view key);

    /// The file's text: every line followed by "\n"; unchanged lines are byte-identical to
    /// the text parsed.
    [[nodiscard]] std::string Text() const;
    /// The lines that could not be read, in file order.
    [[nodiscard]] std::vector<DamagedLine> Damage() const;

private:
    enum class Kind { Blank, Comment, Key, Value, Damaged };
    struct Line {
        Kind kind;
        std::string raw;   // the bytes of the line, without its line end
        std::string key;   // Key: the normalised key; Value: the key it belongs to
        std::string name;  // Value only
        std::string value; // Value only
    };

    /// Reads one line; `currentKey` is the key of the block the line is in, and follows
    /// the key lines read.
    static Line Parse(std::string raw, std::string& currentKey);
    static std::string FormatValueLine(std::string_view name, std::string_view value);
    static std::string FormatKeyLine(std::string_view key);
    std::size_t EndOfBlock(std::size_t keyLine) const;

    std::vector<Line> m_lines;
};

/// The escape of `text` as the hive file writes it (see above). `extra` lists the bytes
/// escaped in this position besides those escaped everywhere.
std::string EscapeHiveText(std::string_view text, std::string_view extra);

} // namespace fileio::platform
