// Json.h - the tool's JSON writer: one document, written as it is built.
//
// Strings are bytes: a valid UTF-8 sequence is written as it is, every control byte (below
// 0x20, and 0x7F) as an escape, and every byte that is not part of a valid UTF-8 sequence
// as \u00XX, so that any text a file holds gives a valid document. Numbers that JSON cannot
// write (infinities, NaN) are written as null. The writer places the commas and the colons;
// it does not check that keys and values alternate.
//
//     JsonWriter json(stdout);
//     json.BeginObject();
//     json.Key("schema"); json.Number(1);
//     json.Key("files"); json.BeginArray(); json.String("robot.prj"); json.EndArray();
//     json.EndObject();
//     json.Finish();                     // {"schema":1,"files":["robot.prj"]} and "\n"
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace fileio::tool {

class JsonWriter {
public:
    /// A writer that hands its text to `file` as it grows; null keeps it all for Text().
    explicit JsonWriter(std::FILE* file = nullptr) : m_file(file) {}
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    void BeginObject();
    void EndObject();
    void BeginArray();
    void EndArray();
    /// The key of the next member of the open object.
    void Key(std::string_view key);
    void String(std::string_view text);
    void Number(long long value);
    void Number(unsigned long long value);
    void Number(int value) { Number(static_cast<long long>(value)); }
    /// The shortest text that reads back as `value`; null when it is not finite.
    void Number(double value);
    /// As above, with the shortest text of the float.
    void Number(float value);
    void Bool(bool value);
    void Null();

    /// Ends the document with "\n" and hands the rest of the text on.
    void Finish();
    /// The text written so far (when no file was given).
    [[nodiscard]] const std::string& Text() const { return m_text; }

private:
    /// Before a value: the comma after an earlier one, unless a key came just before.
    void Separate();
    void Raw(std::string_view text);
    /// The shortest decimal text of `value` (null for a float that is not finite).
    template <class T> void WriteNumber(T value);

    std::FILE* m_file;
    std::string m_text;
    /// One entry per open object or array: whether it holds a value yet.
    std::vector<bool> m_hasValue;
    bool m_afterKey = false;
};

/// Appends `text` as a JSON string, quotes included (see the escaping above).
void AppendJsonString(std::string& out, std::string_view text);

} // namespace fileio::tool
