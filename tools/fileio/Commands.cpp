// Commands.cpp - info, dump, check and convert, and what every command shares.

#include "Commands.h"

#include "ProjectWriter.h"
#include "References.h"
#include "Text.h"

#include <algorithm>
#include <cstdio>

namespace fileio::tool {

namespace {

/// The section whose Version field is the file's version.
constexpr std::string_view kFileInfo = "FILEINFO";
constexpr std::string_view kVersionField = "Version";
/// Outline text is handed to standard output in pieces of about this size.
constexpr std::size_t kOutlineFlush = 1 << 16;
/// The indentation of one level of the outline.
constexpr std::size_t kIndent = 2;

std::string OffsetText(unsigned long long offset) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llx", offset);
    return text;
}

std::string_view Bytes(const MemoryStream& stream, unsigned long long begin,
                       unsigned long long end) {
    return std::string_view(reinterpret_cast<const char*>(stream.GetData()) + begin, end - begin);
}

/// The worse of two exit statuses.
int Worse(int a, int b) {
    return std::max(a, b);
}

/// The components of a structure of floats as a JSON array.
template <class T> void WriteFloats(JsonWriter& json, const T& value) {
    const float* floats = reinterpret_cast<const float*>(&value);
    json.BeginArray();
    for (std::size_t i = 0; i < sizeof(T) / sizeof(float); ++i)
        json.Number(floats[i]);
    json.EndArray();
}

void WriteJsonValue(JsonWriter& json, const Value& value) {
    switch (KindOf(value)) {
    case Kind::Bool:
        json.Bool(std::get<bool>(value));
        break;
    case Kind::Int:
        json.Number(std::get<int>(value));
        break;
    case Kind::Float:
        json.Number(std::get<float>(value));
        break;
    case Kind::Double:
        json.Number(std::get<double>(value));
        break;
    case Kind::Text:
        json.String(std::get<::String>(value).View());
        break;
    case Kind::Vector:
        WriteFloats(json, std::get<::Vector>(value));
        break;
    case Kind::Quaternion:
        WriteFloats(json, std::get<::Quaternion>(value));
        break;
    case Kind::Color:
        WriteFloats(json, std::get<RGBFloat>(value));
        break;
    case Kind::Matrix:
        json.BeginArray();
        for (const Vector4& row : std::get<Matrix44>(value).row)
            WriteFloats(json, row);
        json.EndArray();
        break;
    case Kind::Time:
        json.Number(std::get<::Time>(value).GetTicks());
        break;
    case Kind::Range: {
        const TimeRange& range = std::get<TimeRange>(value);
        json.BeginArray();
        json.Number(range.start.GetTicks());
        json.Number(range.end.GetTicks());
        json.EndArray();
        break;
    }
    }
}

// ---- info ---------------------------------------------------------------------------------

/// What info tells of a file: its top-level sections and its version.
class InfoVisitor : public ProjectVisitor {
public:
    void Section(const SectionEvent& section, const SectionPath& path) override {
        if (path.Depth() == 1)
            CountTopLevel(section.word);
    }
    void SkippedSection(const SectionEvent& section, const SectionPath& path) override {
        if (path.Depth() == 0)
            CountTopLevel(section.word);
    }
    void Field(const FieldEvent& field, const SectionPath& path) override {
        if (m_version.empty() && field.value != nullptr && path.Depth() > 0 &&
            path.Frames().back().word == kFileInfo && field.label.text == kVersionField)
            m_version = ValueText(*field.value);
    }

    /// The top-level section words in the order they first come, with their counts.
    std::vector<std::pair<std::string, int>> topLevel;
    [[nodiscard]] const std::string& Version() const { return m_version; }

private:
    void CountTopLevel(std::string_view word) {
        auto entry = std::find_if(topLevel.begin(), topLevel.end(),
                                  [&](const auto& known) { return known.first == word; });
        if (entry == topLevel.end())
            topLevel.emplace_back(std::string(word), 1);
        else
            ++entry->second;
    }

    std::string m_version;
};

std::string InfoText(const InputFile& file, const MemoryStream& stream, const InfoVisitor& info,
                     const WalkCounts& counts) {
    std::string topLevel;
    for (const auto& [word, count] : info.topLevel) {
        topLevel += (topLevel.empty() ? "" : ", ") + Printable(word);
        if (count > 1)
            topLevel += " (" + std::to_string(count) + ")";
    }
    std::string text = Printable(file.shown) + "\n";
    const auto row = [&](const char* name, const std::string& value) {
        char label[16];
        std::snprintf(label, sizeof label, "  %-11s", name);
        text += label + value + "\n";
    };
    row("form", FormName(stream));
    row("version", info.Version().empty() ? "-" : Printable(info.Version()));
    row("size", std::to_string(stream.GetLength()) + " bytes");
    row("sections", std::to_string(counts.sections));
    row("fields", std::to_string(counts.fields));
    row("top level", topLevel.empty() ? "-" : topLevel);
    if (info.Errors() > 0)
        row("problems", std::to_string(info.Errors()) + " ('fileio check' tells them)");
    return text;
}

void InfoJson(JsonWriter& json, const InputFile& file, const MemoryStream& stream,
              const InfoVisitor& info, const WalkCounts& counts) {
    json.Key("file");
    json.String(file.shown);
    json.Key("form");
    json.String(FormName(stream));
    json.Key("version");
    if (info.Version().empty())
        json.Null();
    else
        json.String(info.Version());
    json.Key("size");
    json.Number(stream.GetLength());
    json.Key("sections");
    json.Number(counts.sections);
    json.Key("fields");
    json.Number(counts.fields);
    json.Key("topLevel");
    json.BeginArray();
    for (const auto& [word, count] : info.topLevel) {
        json.BeginObject();
        json.Key("section");
        json.String(word);
        json.Key("count");
        json.Number(count);
        json.EndObject();
    }
    json.EndArray();
    json.Key("errors");
    json.Number(info.Errors());
}

// ---- dump -----------------------------------------------------------------------------------

/// The outline of dump --tree: one line per section and field, indented by depth.
class OutlineVisitor : public ProjectVisitor {
public:
    OutlineVisitor(const MemoryStream& in, Output& output) : m_in(in), m_output(output) {}
    ~OutlineVisitor() override { m_output.Data(m_text); }

    void Section(const SectionEvent&, const SectionPath& path) override {
        Line(path.Depth() - 1, Printable(path.Last()));
    }
    void SkippedSection(const SectionEvent& section, const SectionPath& path) override {
        Line(path.Depth(), Printable(section.word) + "  (unknown section, skipped)");
    }
    void Field(const FieldEvent& field, const SectionPath& path) override {
        std::string line = Printable(field.label.text) + " = ";
        if (field.value != nullptr)
            line += Printable(ValueText(*field.value));
        else
            line += Printable(Bytes(m_in, field.valueBegin, field.valueEnd)) +
                    (field.rule == nullptr ? "  (unknown field)" : "  (bad value)");
        Line(path.Depth(), line);
    }

private:
    void Line(std::size_t depth, const std::string& text) {
        m_text.append(depth * kIndent, ' ');
        m_text += text;
        m_text += '\n';
        if (m_text.size() >= kOutlineFlush) {
            m_output.Data(m_text);
            m_text.clear();
        }
    }

    const MemoryStream& m_in;
    Output& m_output;
    std::string m_text;
};

/// The outline as JSON: nested "items", each a section or a field.
class JsonOutlineVisitor : public ProjectVisitor {
public:
    JsonOutlineVisitor(const MemoryStream& in, JsonWriter& json) : m_in(in), m_json(json) {}

    void Section(const SectionEvent& section, const SectionPath& path) override {
        BeginSection(section, path.Frames().back().index);
        m_json.Key("items");
        m_json.BeginArray();
    }
    void EndSection(const SectionEvent&, const SectionPath&) override {
        m_json.EndArray();
        m_json.EndObject();
    }
    void SkippedSection(const SectionEvent& section, const SectionPath&) override {
        BeginSection(section, -1);
        m_json.Key("skipped");
        m_json.Bool(true);
        m_json.EndObject();
    }
    void Field(const FieldEvent& field, const SectionPath&) override {
        m_json.BeginObject();
        m_json.Key("field");
        m_json.String(field.label.text);
        m_json.Key("offset");
        m_json.Number(field.offset);
        m_json.Key("kind");
        if (field.rule == nullptr)
            m_json.Null();
        else
            m_json.String(KindName(field.rule->kind));
        m_json.Key("value");
        if (field.value == nullptr)
            m_json.Null();
        else
            WriteJsonValue(m_json, *field.value);
        if (field.value == nullptr) {
            m_json.Key("text");
            m_json.String(Bytes(m_in, field.valueBegin, field.valueEnd));
        }
        m_json.EndObject();
    }

private:
    /// Opens a section's object: its word, its position (unless negative) and offset.
    void BeginSection(const SectionEvent& section, int index) {
        m_json.BeginObject();
        m_json.Key("section");
        m_json.String(section.word);
        if (index >= 0) {
            m_json.Key("index");
            m_json.Number(index);
        }
        m_json.Key("offset");
        m_json.Number(section.offset);
    }

    const MemoryStream& m_in;
    JsonWriter& m_json;
};

// ---- convert ----------------------------------------------------------------------------------

bool ConvertsToBinary(const CommandLine& line, const MemoryStream& in) {
    switch (line.form) {
    case TargetForm::Binary:
        return true;
    case TargetForm::Text:
        return false;
    case TargetForm::Other:
        break;
    }
    return in.IsAscii();
}

} // namespace

// ---- shared
// ---------------------------------------------------------------------------------------

std::vector<InputFile> InputFiles(const CommandLine& line) {
    std::vector<InputFile> files;
    for (const std::string& file : line.files)
        files.push_back(InputFile{file, AbsolutePath(file)});
    return files;
}

void BeginDocument(JsonWriter& json, const char* command) {
    json.BeginObject();
    json.Key("schema");
    json.Number(kJsonSchema);
    json.Key("command");
    json.String(command);
}

void WriteProblems(JsonWriter& json, const std::vector<Problem>& problems) {
    json.Key("problems");
    json.BeginArray();
    for (const Problem& problem : problems) {
        json.BeginObject();
        json.Key("offset");
        json.Number(problem.offset);
        json.Key("place");
        json.String(problem.place);
        json.Key("message");
        json.String(problem.message);
        json.Key("severity");
        json.String(problem.severity == Severity::Error ? "error" : "note");
        json.EndObject();
    }
    json.EndArray();
}

std::string ProblemLine(const std::string& shown, const Problem& problem) {
    std::string line = Printable(shown) + ": " + OffsetText(problem.offset) + ": ";
    if (!problem.place.empty())
        line += Printable(problem.place) + ": ";
    if (problem.severity == Severity::Note)
        line += "note: ";
    return line + Printable(problem.message);
}

void TellProblems(Output& output, const std::string& shown, const std::vector<Problem>& problems) {
    for (const Problem& problem : problems) {
        if (problem.severity == Severity::Error)
            output.Error(ProblemLine(shown, problem));
        else
            output.Note(ProblemLine(shown, problem));
    }
}

bool LoadInput(const InputFile& file, MemoryStream& stream, Output& output, std::string& why) {
    if (LoadProject(String(file.path), stream, why))
        return true;
    output.Error(Printable(file.shown) + ": " + why);
    return false;
}

WalkCounts Walk(MemoryStream& in, ProjectVisitor& visitor, const Output& output,
                const InputFile& file) {
    ProgressBar progress(output, Printable(file.shown));
    return WalkProject(in, visitor, &progress);
}

bool SaveFile(const std::string& path, std::string_view bytes) {
    FileStream out;
    if (!out.Open(String(path), FM_STORING))
        return false;
    out.Write(bytes.data(), bytes.size());
    out.Close();
    return !out.IsFailed();
}

// ---- the commands
// ----------------------------------------------------------------------------------

int RunInfo(const CommandLine& line, Output& output) {
    JsonWriter json(output.Out());
    if (line.json) {
        BeginDocument(json, "info");
        json.Key("files");
        json.BeginArray();
    }
    int status = kExitOk;
    bool first = true;
    for (const InputFile& file : InputFiles(line)) {
        MemoryStream stream;
        std::string why;
        const bool loaded = LoadInput(file, stream, output, why);
        InfoVisitor info;
        const WalkCounts counts = loaded ? Walk(stream, info, output, file) : WalkCounts{};
        status = Worse(status, !loaded ? kExitError : info.Errors() > 0 ? kExitProblems : kExitOk);
        if (line.json) {
            json.BeginObject();
            if (loaded) {
                InfoJson(json, file, stream, info, counts);
            } else {
                json.Key("file");
                json.String(file.shown);
                json.Key("error");
                json.String(why);
            }
            json.EndObject();
        } else if (loaded) {
            output.Data(Concat({first ? "" : "\n", InfoText(file, stream, info, counts)}));
            first = false;
        }
    }
    if (line.json) {
        json.EndArray();
        json.EndObject();
        json.Finish();
    }
    return status;
}

int RunDump(const CommandLine& line, Output& output) {
    const InputFile file = InputFiles(line).front();
    MemoryStream in;
    std::string why;
    JsonWriter json(output.Out());
    if (line.json)
        BeginDocument(json, "dump");
    if (!LoadInput(file, in, output, why)) {
        if (line.json) {
            json.Key("file");
            json.String(file.shown);
            json.Key("error");
            json.String(why);
            json.EndObject();
            json.Finish();
        }
        return kExitError;
    }
    std::vector<Problem> problems;
    if (line.json) {
        json.Key("file");
        json.String(file.shown);
        json.Key("form");
        json.String(FormName(in));
        json.Key("items");
        json.BeginArray();
        JsonOutlineVisitor outline(in, json);
        Walk(in, outline, output, file);
        json.EndArray();
        problems = outline.Problems();
        WriteProblems(json, problems);
        json.EndObject();
        json.Finish();
    } else if (line.tree) {
        OutlineVisitor outline(in, output);
        Walk(in, outline, output, file);
        problems = outline.Problems();
    } else {
        MemoryStream text;
        text.Open(FM_STORING);
        ProjectWriter writer(in, text);
        Walk(in, writer, output, file);
        // The canonical text is data for a file; on a terminal its bytes are made printable.
        const std::string_view bytes = Bytes(text, 0, text.GetLength());
        output.Data(output.OutIsTerminal() ? Printable(bytes, true) : std::string(bytes));
        problems = writer.Problems();
    }
    TellProblems(output, file.shown, problems);
    const bool bad = std::any_of(problems.begin(), problems.end(), [](const Problem& problem) {
        return problem.severity == Severity::Error;
    });
    return bad ? kExitProblems : kExitOk;
}

int RunCheck(const CommandLine& line, Output& output) {
    JsonWriter json(output.Out());
    if (line.json) {
        BeginDocument(json, "check");
        json.Key("files");
        json.BeginArray();
    }
    int status = kExitOk;
    for (const InputFile& file : InputFiles(line)) {
        MemoryStream stream;
        std::string why;
        const bool loaded = LoadInput(file, stream, output, why);
        ProjectVisitor check;
        if (loaded)
            Walk(stream, check, output, file);
        const bool bad = check.Errors() > 0;
        status = Worse(status, !loaded ? kExitError : bad ? kExitProblems : kExitOk);
        if (line.json) {
            json.BeginObject();
            json.Key("file");
            json.String(file.shown);
            if (loaded) {
                json.Key("form");
                json.String(FormName(stream));
                json.Key("size");
                json.Number(stream.GetLength());
                json.Key("status");
                json.String(bad ? "bad" : "OK");
                WriteProblems(json, check.Problems());
            } else {
                json.Key("status");
                json.String("unreadable");
                json.Key("error");
                json.String(why);
            }
            json.EndObject();
            continue;
        }
        if (!loaded)
            continue;
        std::string text;
        for (const Problem& problem : check.Problems())
            text += ProblemLine(file.shown, problem) + "\n";
        text += Printable(file.shown) + ": " +
                output.Paint(bad ? "bad" : "OK", bad ? Colour::Bad : Colour::Good) + "\n";
        output.Data(text);
    }
    if (line.json) {
        json.EndArray();
        json.EndObject();
        json.Finish();
    }
    return status;
}

int RunConvert(const CommandLine& line, Output& output) {
    const std::vector<InputFile> files = InputFiles(line);
    const InputFile& input = files[0];
    const InputFile& target = files[1];
    JsonWriter json(output.Out());
    if (line.json) {
        BeginDocument(json, "convert");
        json.Key("input");
        json.String(input.shown);
        json.Key("output");
        json.String(target.shown);
    }
    const auto finish = [&](int status, const char* error) {
        if (line.json) {
            if (error != nullptr) {
                json.Key("error");
                json.String(error);
            }
            json.EndObject();
            json.Finish();
        }
        return status;
    };
    MemoryStream in;
    std::string why;
    if (!LoadInput(input, in, output, why))
        return finish(kExitError, why.c_str());

    const bool binary = ConvertsToBinary(line, in);
    MemoryStream out;
    out.Open(binary ? FM_VARN | FM_BINARY : FM_VARN);
    ProjectWriter writer(in, out);
    const WalkCounts counts = Walk(in, writer, output, input);
    TellProblems(output, input.shown, writer.Problems());
    if (line.json) {
        json.Key("form");
        json.String(binary ? "binary" : "text");
        WriteProblems(json, writer.Problems());
    }
    if (!counts.complete) {
        output.Error(Printable(input.shown) +
                     ": not converted: the file cannot be read to its end");
        return finish(kExitProblems, "the file cannot be read to its end");
    }
    if (!SaveFile(target.path, Bytes(out, 0, out.GetLength())))
        return finish(kExitError, "the output cannot be saved");
    if (line.json) {
        json.Key("bytes");
        json.Number(out.GetLength());
    } else {
        output.Data(Printable(input.shown) + " -> " + Printable(target.shown) + ": " +
                    (binary ? "binary" : "text") + ", " + std::to_string(out.GetLength()) +
                    " bytes\n");
    }
    return finish(writer.Errors() > 0 ? kExitProblems : kExitOk, nullptr);
}

} // namespace fileio::tool
