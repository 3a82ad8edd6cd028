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
struct FieldSpec {
    const char* word;
    Kind kind;
    /// The value names a file.
    bool reference;
};

/// The known field of a label id; null for a field the tool does not know.
[[nodiscard]] const FieldSpec* FindField(int labelId);
/// Every known field, in the table's order.
[[nodiscard]] std::span<const FieldSpec> KnownFields();
/// The kind's name as the tool prints it: "bool", "int", "float", "double", "text",
/// "vector", "quaternion", "color", "matrix", "time", "range".
[[nodiscard]] const char* KindName(Kind kind);

/// The bytes a value of `kind` takes in the binary form; for a text, its 16-bit count (the
/// characters follow).
[[nodiscard]] unsigned BinarySize(Kind kind);

/// Checks the text form of a value (the text after the "=" up to the line end) before it is
/// read: the number of words and the form of each. Returns the problem, or an empty text
/// when the value reads as written: "2 of 3 values", "4 values, 3 expected", "'abc' is not
/// a number", "'3000000000' is out of range", "'yes' is not TRUE or FALSE", "'1:a' is not a
/// time". A text value is one word: more than one, or none, is a problem ("the text form
/// cannot carry an empty text or one with white space"), because the suite's reader takes
/// the next word of the file in their place.
[[nodiscard]] std::string CheckValueText(Kind kind, std::string_view text);

/// Why the text form cannot carry `value` (an empty text, or one holding white space);
/// empty when it can.
[[nodiscard]] std::string CheckTextFormCarries(const Value& value);

/// Reads a value of `kind` with the stream's typed reader.
[[nodiscard]] Value ReadValue(VarnStream& in, Kind kind);
/// Writes `value` with the stream's typed writer (no separator before or after).
void WriteValue(VarnStream& out, const Value& value);

/// The value as the text form writes it ("1.5 -2 3", "TRUE", "1:1.1"); a text as it is,
/// "&" unescaped.
[[nodiscard]] std::string ValueText(const Value& value);

} // namespace fileio::tool
