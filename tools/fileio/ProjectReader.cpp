// ProjectReader.cpp - the walk over a project file in its two forms.

#include "ProjectReader.h"

#include "Text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace fileio::tool {

namespace {

// The binary form's token bits (the id word of a header, end header or label).
constexpr unsigned kHeaderBit = 0x80000000u;
constexpr unsigned kLabelBit = 0x40000000u;
constexpr unsigned kEndBit = static_cast<unsigned>(fileio::kEndHeaderBit);
constexpr unsigned kNoToken = 0xFFFFFFFFu;
constexpr unsigned kIdMask = ~(kHeaderBit | kLabelBit | kEndBit);
constexpr unsigned kTokenSize = 4;

/// The text generation whose brackets open a header: 13.0 and above "<" and ">".
constexpr float kAngleVersion = 13.0f;
/// The square generation's end headers: "[END" word "]".
constexpr std::string_view kSquareEnd = "END";

/// The meter is told of the walk's progress every this many tokens.
constexpr unsigned kMeterSteps = 4096;
/// A line quoted in a problem is cut to this many bytes.
constexpr std::size_t kQuotedLine = 40;

bool IsWhite(unsigned char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string Hex(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", value);
    return text;
}

class Walker {
public:
    Walker(MemoryStream& in, ProjectVisitor& visitor, WorkMeter* meter)
        : m_in(in), m_visitor(visitor), m_meter(meter),
          m_data(reinterpret_cast<const char*>(in.GetData())), m_length(in.GetLength()) {}

    WalkCounts Run() {
        if (m_in.IsBinary())
            RunBinary();
        else
            RunText();
        // Every section opened is closed for the visitor, so that what it builds is whole;
        // after a token the walk could not read past, the sections left open are no news.
        while (m_path.Depth() > 0) {
            const unsigned long long offset = m_path.Frames().back().offset;
            if (!m_stopped)
                Error(offset, m_path.Place(), "not closed: the data end");
            CloseInnermost(offset);
        }
        if (m_counts.sections == 0 && !m_stopped)
            Error(m_length, "", "no section: not a file of the suite");
        if (m_meter != nullptr)
            m_meter->Advance(m_length, m_length);
        m_counts.complete = !m_stopped;
        return m_counts;
    }

private:
    // ---- the text form -----------------------------------------------------------------------

    void RunText() {
        m_open = m_in.GetVersion() >= kAngleVersion ? '<' : '[';
        m_close = m_open == '<' ? '>' : ']';
        while (!m_stopped) {
            // The stream's white-space skip stops after 255 bytes: it is asked again.
            m_in.SkipWhite();
            const unsigned long long at = m_in.GetPos();
            if (at >= m_length)
                break;
            if (IsWhite(static_cast<unsigned char>(m_data[at])))
                continue;
            Meter(at);
            if (m_data[at] == m_open) {
                TextHeader(at);
                continue;
            }
            const unsigned long long equals = Find(at, '=');
            if (equals < m_length && m_data[equals] == '=') {
                TextField(at, equals + 1);
            } else {
                Error(at, m_path.Place(),
                      Concat({"not a section or a field: ", QuotedLine(at, equals)}));
                m_in.Seek(static_cast<long long>(equals), SM_BEGIN);
            }
        }
    }

    /// The offset of the first `wanted` byte of the line from `at` on, or of the line's end
    /// (its first CR or LF, or the end of the data) when the line has none.
    unsigned long long Find(unsigned long long at, char wanted) const {
        while (at < m_length && m_data[at] != wanted && m_data[at] != '\n' && m_data[at] != '\r')
            ++at;
        return at;
    }

    /// The line from `at` to `end`, quoted for a problem.
    std::string QuotedLine(unsigned long long at, unsigned long long end) const {
        const std::string_view line(m_data + at, end - at);
        return Concat({"'", line.substr(0, kQuotedLine), line.size() > kQuotedLine ? "...'" : "'"});
    }

    /// Reads the header whose line starts at `at`, where the stream stands; leaves the
    /// stream where the walk goes on.
    void TextHeader(unsigned long long at) {
        const unsigned long long close = Find(at, m_close);
        if (close == m_length || m_data[close] != m_close) {
            Error(at, m_path.Place(),
                  Concat({"a section without its '", std::string_view(&m_close, 1),
                          "': ", QuotedLine(at, close)}));
            m_in.Seek(static_cast<long long>(close), SM_BEGIN);
            return;
        }
        Header& header = m_header;
        m_in >> header;
        // The reader stops after the bracket (angle: and the white space after it), or after
        // 255 bytes of a longer word.
        if (m_in.GetPos() <= close)
            m_in.Seek(static_cast<long long>(close + 1), SM_BEGIN);
        std::string_view word(header.text);
        bool end = false;
        if (m_open == '<' && !word.empty() && word[0] == '/') {
            end = true;
            word.remove_prefix(1);
        } else if (m_open == '[' && word.size() >= kSquareEnd.size() &&
                   word.substr(0, kSquareEnd.size()) == kSquareEnd) {
            end = true;
            word.remove_prefix(kSquareEnd.size());
        }
        const int id = header.id == -1 ? -1 : header.id & ~fileio::kEndHeaderBit;
        // The reader looks the word up as a header word, then as a label word: -1 is neither.
        if (end)
            CloseSection(word, id, at);
        else
            OpenSection(header, word, id, at, header.id != -1);
    }

    /// Reads the field whose line starts at `at`, where the stream stands, its value at
    /// `valueBegin` (after the "="); leaves the stream at the end of its line or after it.
    void TextField(unsigned long long at, unsigned long long valueBegin) {
        m_in >> m_label;
        ++m_counts.fields;
        const FieldRule* rule = FindField(m_label.id, m_fields);
        const std::string_view rest(m_data + valueBegin, m_length - valueBegin);
        ValueExtent extent;
        std::string problem;
        if (rule == nullptr)
            extent = MeasureValue(rest);
        else
            problem = CheckValueText(rule->kind, rest, extent);
        FieldEvent event{m_label, rule, at, valueBegin, valueBegin + extent.end, nullptr};
        if (rule == nullptr) {
            Note(
                at, [&] { return m_path.Place(m_label.text); },
                "unknown field: its value is skipped");
        } else if (!problem.empty()) {
            Error(at, m_path.Place(m_label.text), problem);
        } else {
            // The words were counted: the reader takes exactly them and the line's end.
            ReadValue(m_in, rule->kind, m_value);
            const std::string range = CheckValueRange(m_value, rest.substr(0, extent.end));
            if (range.empty())
                event.value = &m_value;
            else
                Error(at, m_path.Place(m_label.text), range);
            m_visitor.Field(event, m_path);
            return;
        }
        m_visitor.Field(event, m_path);
        m_in.Seek(static_cast<long long>(valueBegin + extent.lineEnd), SM_BEGIN);
    }

    // ---- the binary form ---------------------------------------------------------------------

    void RunBinary() {
        while (!m_stopped) {
            const unsigned long long at = m_in.GetPos();
            if (at >= m_length)
                break;
            Meter(at);
            if (m_length - at < kTokenSize) {
                Stop(at, m_path.Place(),
                     "the data end inside a token: " + std::to_string(m_length - at) + " of " +
                         std::to_string(kTokenSize) + " bytes");
                break;
            }
            const unsigned word = Word32(at);
            if (word != kNoToken && (word & kHeaderBit) != 0)
                BinaryHeader(at, word);
            else if (word != kNoToken && (word & kLabelBit) != 0)
                BinaryField(at);
            else
                Stop(at, m_path.Place(), Hex(word) + " is not a section or a field token");
        }
    }

    unsigned Word32(unsigned long long at) const {
        unsigned char bytes[kTokenSize];
        std::memcpy(bytes, m_data + at, kTokenSize);
        return static_cast<unsigned>(bytes[0]) | static_cast<unsigned>(bytes[1]) << 8 |
               static_cast<unsigned>(bytes[2]) << 16 | static_cast<unsigned>(bytes[3]) << 24;
    }

    void BinaryHeader(unsigned long long at, unsigned word) {
        Header& header = m_header;
        m_in >> header;
        const int id = static_cast<int>(word & kIdMask);
        const bool known = IsKnownSection(id, (word & kLabelBit) != 0, header);
        const std::string unknown = known ? std::string() : Concat({"#", std::to_string(id)});
        const std::string_view name = known ? std::string_view(header.text) : unknown;
        if ((word & kEndBit) != 0)
            CloseSection(name, id, at);
        else
            OpenSection(header, name, id, at, known);
    }

    /// Whether a binary section id has a word: a label id in header position (the label
    /// bit set) by the label vocabulary, any other id by the header vocabulary and then the
    /// label vocabulary, as the header reader names it. Each id is looked up once.
    bool IsKnownSection(int id, bool labelWord, const Header& header) {
        const auto lookUp = [&] {
            return labelWord ? GetLabelTextFromID(id, nullptr)
                             : GetHeaderIDFromText(header.text) == id ||
                                   GetLabelIDFromText(header.text) == id;
        };
        const auto index = static_cast<std::size_t>(id);
        if (index >= kKnownSectionsCached)
            return lookUp();
        std::vector<signed char>& known = m_knownSections[labelWord ? 1 : 0];
        if (index >= known.size())
            known.resize(index + 1, kNotLookedUp);
        if (known[index] == kNotLookedUp)
            known[index] = lookUp() ? 1 : 0;
        return known[index] != 0;
    }

    void BinaryField(unsigned long long at) {
        m_in >> m_label;
        ++m_counts.fields;
        const unsigned long long valueBegin = at + kTokenSize;
        const FieldRule* rule = FindField(m_label.id, m_fields);
        const auto place = [&] { return m_path.Place(m_label.text); };
        if (rule == nullptr) {
            Stop(at, place(),
                 "unknown field (id " + std::to_string(m_label.id) +
                     "): the binary form does not tell the size of its value, so the rest of "
                     "the file cannot be read");
            return;
        }
        unsigned long long size = BinarySize(rule->kind);
        const unsigned long long left = m_length - valueBegin;
        if (rule->kind == Kind::Text && left >= size)
            size += static_cast<unsigned char>(m_data[valueBegin]) |
                    static_cast<unsigned>(static_cast<unsigned char>(m_data[valueBegin + 1])) << 8;
        if (left < size) {
            Stop(at, place(),
                 "the data end inside the value: " + std::to_string(left) + " of " +
                     std::to_string(size) + " bytes");
            return;
        }
        ReadValue(m_in, rule->kind, m_value);
        if (rule->kind == Kind::Bool && static_cast<unsigned char>(m_data[valueBegin]) > 1)
            Error(at, place(),
                  "a truth value of " +
                      std::to_string(static_cast<unsigned char>(m_data[valueBegin])) +
                      ", 0 or 1 expected");
        m_visitor.Field(FieldEvent{m_label, rule, at, valueBegin, valueBegin + size, &m_value},
                        m_path);
    }

    // ---- sections ----------------------------------------------------------------------------

    void OpenSection(const Header& header, std::string_view word, int id, unsigned long long at,
                     bool known) {
        ++m_counts.sections;
        if (known) {
            m_path.Push(word, id, at);
            m_visitor.Section(SectionEvent{word, id, at, at}, m_path);
            return;
        }
        const auto place = [&] { return m_path.Place(word); };
        const unsigned long long after = m_in.GetPos();
        if (m_in.SkipHeader(header)) {
            Note(at, place, "unknown section: skipped");
            m_visitor.SkippedSection(SectionEvent{word, id, at, m_in.GetPos()}, m_path);
            return;
        }
        // Without its end the section cannot be skipped: it is read like a known one.
        m_in.Seek(static_cast<long long>(after), SM_BEGIN);
        Error(at, place(), "unknown section without an end");
        m_path.Push(word, id, at);
        m_visitor.Section(SectionEvent{word, id, at, at}, m_path);
    }

    void CloseSection(std::string_view word, int id, unsigned long long at) {
        const auto& frames = m_path.Frames();
        const auto matches = [&](const SectionPath::Frame& frame) {
            return (id != -1 && frame.id == id) || EqualsIgnoringCase(frame.word, word);
        };
        std::size_t match = frames.size();
        for (std::size_t i = frames.size(); i-- > 1;) {
            if (matches(frames[i])) {
                match = i;
                break;
            }
        }
        const auto end = [&] { return Concat({"</", word, ">"}); };
        if (match == frames.size()) {
            Error(at, m_path.Place(), Concat({end(), " closes no open section"}));
            return;
        }
        while (m_path.Depth() > match) {
            Error(m_path.Frames().back().offset, m_path.Place(),
                  Concat({"not closed before ", end()}));
            CloseInnermost(at);
        }
        CloseInnermost(at);
    }

    void CloseInnermost(unsigned long long at) {
        const auto& frame = m_path.Frames().back();
        m_visitor.EndSection(SectionEvent{frame.word, frame.id, frame.offset, at}, m_path);
        m_path.Pop();
    }

    // ---- problems and progress -----------------------------------------------------------------

    void Error(unsigned long long at, std::string place, std::string message) {
        if (m_stopped)
            return;
        m_visitor.Report({at, std::move(place), std::move(message), Severity::Error});
        if (m_visitor.Errors() >= kMaxErrors)
            Stop(m_in.GetPos(), "", "too many problems: the rest of the file is not read");
    }

    /// An error after which the file cannot be read on.
    void Stop(unsigned long long at, std::string place, std::string message) {
        if (!m_stopped)
            m_visitor.Report({at, std::move(place), std::move(message), Severity::Error});
        m_stopped = true;
    }

    /// A note, its place made only when it is told (`place` gives it).
    template <class Place> void Note(unsigned long long at, Place place, const char* message) {
        if (++m_notes > kMaxNotes) {
            if (m_notes == kMaxNotes + 1)
                m_visitor.Report({at, "", "more notes are left out", Severity::Note});
            return;
        }
        m_visitor.Report({at, place(), message, Severity::Note});
    }

    void Meter(unsigned long long at) {
        if (m_meter != nullptr && ++m_steps % kMeterSteps == 0)
            m_meter->Advance(at, m_length);
    }

    MemoryStream& m_in;
    ProjectVisitor& m_visitor;
    WorkMeter* m_meter;
    const char* m_data;
    unsigned long long m_length;
    const std::vector<const FieldRule*>& m_fields = FieldsById();
    SectionPath m_path;
    WalkCounts m_counts;
    // The tokens and the value are read into the same objects each time.
    Header m_header;
    Label m_label;
    Value m_value;
    /// Per binary section id (header words, label words): 1 known, 0 unknown.
    static constexpr signed char kNotLookedUp = -1;
    /// Ids from here on (no word has one) are looked up without keeping the answer.
    static constexpr std::size_t kKnownSectionsCached = 1 << 13;
    std::vector<signed char> m_knownSections[2];
    char m_open = '<';
    char m_close = '>';
    unsigned m_steps = 0;
    int m_notes = 0;
    bool m_stopped = false;
};

} // namespace

// ---- the path ---------------------------------------------------------------------------------

SectionPath::SectionPath() : m_frames(1, Frame{{}, -1, 0, 0, {}}) {}

void SectionPath::Push(std::string_view word, int id, unsigned long long offset) {
    auto& children = m_frames[m_depth].children;
    auto child = std::find_if(children.begin(), children.end(), [&](const Child& known) {
        return known.id == id && (id != -1 || known.word == word);
    });
    if (child == children.end()) {
        children.push_back(Child{id, std::string(word), 0});
        child = children.end() - 1;
    }
    const int index = child->count++;
    if (++m_depth == m_frames.size())
        m_frames.emplace_back();
    Frame& frame = m_frames[m_depth];
    frame.word.assign(word);
    frame.id = id;
    frame.index = index;
    frame.offset = offset;
    frame.children.clear();
}

std::string SectionPath::Component(const Frame& frame, std::size_t depth) {
    if (depth == 1 && frame.index == 0)
        return frame.word;
    return frame.word + "[" + std::to_string(frame.index) + "]";
}

std::string SectionPath::Place(std::string_view field) const {
    std::string place;
    for (std::size_t depth = 1; depth <= m_depth; ++depth) {
        if (!place.empty())
            place += '/';
        place += Component(m_frames[depth], depth);
    }
    if (!field.empty()) {
        if (!place.empty())
            place += '/';
        place += field;
    }
    return place;
}

std::string SectionPath::Last() const {
    return m_depth == 0 ? std::string() : Component(m_frames[m_depth], m_depth);
}

// ---- the visitor and the walk
// ---------------------------------------------------------------------

void ProjectVisitor::Report(Problem problem) {
    if (problem.severity == Severity::Error)
        ++m_errors;
    m_problems.push_back(std::move(problem));
}

WalkCounts WalkProject(MemoryStream& in, ProjectVisitor& visitor, WorkMeter* meter) {
    return Walker(in, visitor, meter).Run();
}

namespace {

/// A text file is of the angle generation when its first line that starts with a bracket
/// starts with "<", even when that is not its first byte (the opener looks at the first
/// byte only): white space or a field may come first.
void SettleGeneration(MemoryStream& stream) {
    if (stream.IsBinary() || stream.GetVersion() >= kAngleVersion)
        return;
    const unsigned char* data = stream.GetData();
    const unsigned long long length = stream.GetLength();
    bool lineStart = true;
    for (unsigned long long at = 0; at < length; ++at) {
        const unsigned char c = data[at];
        if (lineStart && (c == '<' || c == '[')) {
            if (c == '<')
                stream.SetVersion(kAngleVersion);
            return;
        }
        if (c == '\n' || c == '\r')
            lineStart = true;
        else if (c != ' ' && c != '\t')
            lineStart = false;
    }
}

constexpr FileMode kLoadMode = FM_LOADING | FM_VARN | FM_DONTASK | FM_DONTPROGRESS;

} // namespace

bool LoadProject(const ::String& path, MemoryStream& stream, std::string& why) {
    if (DirExists(path)) {
        why = "is a folder";
        return false;
    }
    if (!FileExists(path)) {
        why = "no such file";
        return false;
    }
    if (!stream.Open(path, kLoadMode)) {
        why = "cannot be read";
        return false;
    }
    SettleGeneration(stream);
    return true;
}

void OpenProject(const void* data, unsigned long long size, MemoryStream& stream) {
    stream.Open(data, size, kLoadMode);
    SettleGeneration(stream);
}

const char* FormName(const VarnStream& stream) {
    return stream.IsBinary() ? "binary" : "text";
}

} // namespace fileio::tool
