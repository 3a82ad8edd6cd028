// Fields.h - the fields the tool knows, and the one typed read, write and check of each kind
// of value they carry.
//
// The binary form stores no types: a field's value is as many bytes as its kind takes, so a
// reader must know the kind of every field it meets. The table in Fields.cpp is that
// knowledge: label word -> kind, and whether the value names a file (a file reference).
// Every subcommand reads, writes and checks values through the functions here.
//
// File references are text values in one of two forms, told apart by the value itself:
//   - a plain universal path ("Maps/skin.png", "C:/Users/ann/Robot/Maps/skin.png"),
//     relative to the project's folder where it lies below or beside it, read with
//     String::GetAbsolutePath(true) and written with String::GetRelativePath;
//   - a match name: the same path within double quotes ("\"Models/arm.mdl\""), read and
//     written with the match-name functions (GetMatchNameAbsoluteFromFile,
//     GetMatchNameRelativeForFile).
// Either separator is accepted on reading.
#pragma once

#include "fileio/FileIO.h"

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace fileio::tool {

/// The kinds of value the known fields carry, in the order of Value's alternatives.
enum class Kind : unsigned char {
    Bool,
    Int,
    Float,
    Double,
    Text,
    Vector,
    Quaternion,
    Color,
    Matrix,
    Time,
    Range,
};

/// One value of any kind; its index is its Kind.
using Value = std::variant<bool, int, float, double, ::String, ::Vector, ::Quaternion, RGBFloat,
                           Matrix44, ::Time, TimeRange>;

[[nodiscard]] inline Kind KindOf(const Value& value) {
    return static_cast<Kind>(value.index());
}

/// A field the tool knows.
struct FieldRule {
    const char* word;
    Kind kind;
    /// The value names a file.
    bool reference;
};

/// The known fields by label id (null for a label the tool does not know), for FindField.
[[nodiscard]] const std::vector<const FieldRule*>& FieldsById();
/// The known field of a label id; null for a field the tool does not know.
[[nodiscard]] inline const FieldRule*
FindField(int labelId, const std::vector<const FieldRule*>& byId = FieldsById()) {
    const auto index = static_cast<std::size_t>(labelId);
    return index < byId.size() ? byId[index] : nullptr;
}
/// Every known field, in the table's order.
[[nodiscard]] std::span<const FieldRule> KnownFields();
/// The kind's name as the tool prints it: "bool", "int", "float", "double", "text",
/// "vector", "quaternion", "color", "matrix", "time", "range".
[[nodiscard]] const char* KindName(Kind kind);

/// The bytes a value of `kind` takes in the binary form; for a text, its 16-bit count (the
/// characters follow).
[[nodiscard]] inline unsigned BinarySize(Kind kind) {
    constexpr unsigned kSizes[] = {1, 4, 4, 8, 2, 12, 16, 12, 64, 8, 16};
    static_assert(std::size(kSizes) == std::variant_size_v<Value>);
    return kSizes[static_cast<std::size_t>(kind)];
}

/// Where a value of the text form lies: it starts just after its "=" and ends with its line.
struct ValueExtent {
    /// Just past its last word (0 when it has none): trailing blanks are left out.
    std::size_t end = 0;
    /// The end of its line: its first CR or LF, or the end of the text.
    std::size_t lineEnd = 0;
};

/// Where the value at the start of `text` (which may run on past its line) lies.
[[nodiscard]] ValueExtent MeasureValue(std::string_view text);

/// Checks the text form of the value at the start of `text` (which may run on past its
/// line) before it is read, and tells in `extent` where it lies: the number of words and
/// the form of each. Returns the problem, or an empty text when the value reads as written:
/// "2 of 3 values", "4 values, 3 expected", "'abc' is not a number", "'3000000000' is out
/// of range", "'yes' is not TRUE or FALSE", "'1:a' is not a time". Only the form of a
/// decimal number is looked at here (a word is converted once, by the typed reader):
/// CheckValueRange tells afterwards of one its type cannot hold. A text value is one word:
/// more than one, or none, is a problem ("the text form cannot carry an empty text or one
/// with white space"), because the suite's reader takes the next word of the file in
/// their place.
[[nodiscard]] std::string CheckValueText(Kind kind, std::string_view text, ValueExtent& extent);

/// After a value was read from `text`: the word that its type cannot hold ("'1e99' is out
/// of range": read as an infinity, though not written as one); empty when there is none.
[[nodiscard]] std::string CheckValueRange(const Value& value, std::string_view text);

/// Why the text form cannot carry `value` (an empty text, or one holding white space);
/// empty when it can.
[[nodiscard]] std::string CheckTextFormCarries(const Value& value);

/// Reads a value of `kind` into `value` with the stream's typed reader.
void ReadValue(VarnStream& in, Kind kind, Value& value);
/// Writes `value` with the stream's typed writer (no separator before or after).
void WriteValue(VarnStream& out, const Value& value);

/// The value as the text form writes it ("1.5 -2 3", "TRUE", "1:1.1"); a text as it is,
/// "&" unescaped.
[[nodiscard]] std::string ValueText(const Value& value);

} // namespace fileio::tool
