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

/// A header read in the text form names a word of the vocabulary.
bool IsKnownWord(std::string_view word) {
    const std::string text(word);
    return GetHeaderIDFromText(text.c_str()) != -1 || GetLabelIDFromText(text.c_str()) != -1;
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
        while (m_path.Depth() > 0 && !m_stopped) {
            const auto& frame = m_path.Frames().back();
            Error(frame.offset, m_path.Place(), "not closed: the data end");
            CloseInnermost(frame.offset);
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
        unsigned long long at = m_in.GetPos();
        while (!m_stopped) {
            while (at < m_length && IsWhite(static_cast<unsigned char>(m_data[at])))
                ++at;
            if (at >= m_length)
                break;
            Meter(at);
            const unsigned long long lineEnd = LineEnd(at);
            const std::string_view line(m_data + at, lineEnd - at);
            if (line[0] == m_open) {
                at = TextHeader(at, line);
            } else if (const std::size_t equals = line.find('=');
                       equals != std::string_view::npos) {
                TextField(at, lineEnd, at + equals + 1);
                at = lineEnd;
            } else {
                Error(at, m_path.Place(), "not a section or a field: " + QuotedLine(line));
                at = lineEnd;
            }
        }
    }

    /// Where the line that holds `at` ends: its first CR or LF, or the end of the data.
    unsigned long long LineEnd(unsigned long long at) const {
        const char* start = m_data + at;
        const std::size_t rest = static_cast<std::size_t>(m_length - at);
        const void* lf = std::memchr(start, '\n', rest);
        const std::size_t end =
            lf ? static_cast<std::size_t>(static_cast<const char*>(lf) - start) : rest;
        const void* cr = std::memchr(start, '\r', end);
        return at + (cr ? static_cast<std::size_t>(static_cast<const char*>(cr) - start) : end);
    }

    static std::string QuotedLine(std::string_view line) {
        return "'" + std::string(line.substr(0, kQuotedLine)) +
               (line.size() > kQuotedLine ? "...'" : "'");
    }

    /// Reads the header that opens `line`; returns where the walk goes on.
    unsigned long long TextHeader(unsigned long long at, std::string_view line) {
        const std::size_t close = line.find(m_close);
        if (close == std::string_view::npos) {
            Error(at, m_path.Place(),
                  std::string("a section without its '") + m_close + "': " + QuotedLine(line));
            return at + line.size();
        }
        m_in.Seek(static_cast<long long>(at), SM_BEGIN);
        Header header;
        m_in >> header;
        const unsigned long long after = at + close + 1;
        m_in.Seek(static_cast<long long>(after), SM_BEGIN);
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
        if (end)
            CloseSection(word, id, at);
        else
            OpenSection(header, word, id, at, IsKnownWord(word));
        return m_in.GetPos();
    }

    /// Reads the field whose line starts at `at`.
    void TextField(unsigned long long at, unsigned long long lineEnd,
                   unsigned long long valueBegin) {
        m_in.Seek(static_cast<long long>(at), SM_BEGIN);
        m_in >> m_label;
        unsigned long long valueEnd = lineEnd;
        while (valueEnd > valueBegin &&
               (m_data[valueEnd - 1] == ' ' || m_data[valueEnd - 1] == '\t'))
            --valueEnd;
        ++m_counts.fields;
        const FieldSpec* spec = FindField(m_label.id);
        FieldEvent event{m_label, spec, at, valueBegin, valueEnd, nullptr};
        if (spec == nullptr) {
            Note(at, m_path.Place(m_label.text), "unknown field: its value is skipped");
        } else if (const std::string problem = CheckValueText(
                       spec->kind, std::string_view(m_data + valueBegin, valueEnd - valueBegin));
                   !problem.empty()) {
            Error(at, m_path.Place(m_label.text), problem);
        } else {
            m_in.Seek(static_cast<long long>(valueBegin), SM_BEGIN);
            m_value = ReadValue(m_in, spec->kind);
            event.value = &m_value;
        }
        m_visitor.Field(event, m_path);
        m_in.Seek(static_cast<long long>(lineEnd), SM_BEGIN);
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
        Header header;
        m_in >> header;
        const int id = static_cast<int>(word & kIdMask);
        // A label word in header position names its section by the label vocabulary.
        const bool known = (word & kLabelBit) != 0 ? GetLabelTextFromID(id, nullptr)
                                                   : GetHeaderIDFromText(header.text) == id ||
                                                         GetLabelIDFromText(header.text) == id;
        const std::string name = known ? std::string(header.text) : "#" + std::to_string(id);
        if ((word & kEndBit) != 0)
            CloseSection(name, id, at);
        else
            OpenSection(header, name, id, at, known);
    }

    void BinaryField(unsigned long long at) {
        m_in >> m_label;
        ++m_counts.fields;
        const unsigned long long valueBegin = at + kTokenSize;
        const FieldSpec* spec = FindField(m_label.id);
        const std::string place = m_path.Place(m_label.text);
        if (spec == nullptr) {
            Stop(at, place,
                 "unknown field (id " + std::to_string(m_label.id) +
                     "): the binary form does not tell the size of its value, so the rest of "
                     "the file cannot be read");
            return;
        }
        unsigned long long size = BinarySize(spec->kind);
        const unsigned long long left = m_length - valueBegin;
        if (spec->kind == Kind::Text && left >= size)
            size += static_cast<unsigned char>(m_data[valueBegin]) |
                    static_cast<unsigned>(static_cast<unsigned char>(m_data[valueBegin + 1])) << 8;
        if (left < size) {
            Stop(at, place,
                 "the data end inside the value: " + std::to_string(left) + " of " +
                     std::to_string(size) + " bytes");
            return;
        }
        m_value = ReadValue(m_in, spec->kind);
        if (spec->kind == Kind::Bool && static_cast<unsigned char>(m_data[valueBegin]) > 1)
            Error(at, place,
                  "a truth value of " +
                      std::to_string(static_cast<unsigned char>(m_data[valueBegin])) +
                      ", 0 or 1 expected");
        m_visitor.Field(FieldEvent{m_label, spec, at, valueBegin, valueBegin + size, &m_value},
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
        const std::string place = m_path.Place(word);
        const unsigned long long after = m_in.GetPos();
        if (m_in.SkipHeader(header)) {
            Note(at, place, "unknown section: skipped");
            m_visitor.SkippedSection(SectionEvent{word, id, at, m_in.GetPos()}, m_path);
            return;
        }
        // Without its end the section cannot be skipped: it is read like a known one.
        m_in.Seek(static_cast<long long>(after), SM_BEGIN);
        Error(at, place, "unknown section without an end");
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
        const std::string end = "</" + std::string(word) + ">";
        if (match == frames.size()) {
            Error(at, m_path.Place(), end + " closes no open section");
            return;
        }
        while (m_path.Depth() > match) {
            Error(frames.back().offset, m_path.Place(), "not closed before " + end);
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

    void Note(unsigned long long at, std::string place, std::string message) {
        m_visitor.Report({at, std::move(place), std::move(message), Severity::Note});
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
    SectionPath m_path;
    WalkCounts m_counts;
    Label m_label;
    Value m_value;
    char m_open = '<';
    char m_close = '>';
    unsigned m_steps = 0;
    bool m_stopped = false;
};

} // namespace

// ---- the path ---------------------------------------------------------------------------------

SectionPath::SectionPath() {
    m_frames.push_back(Frame{{}, -1, 0, 0, {}});
}

void SectionPath::Push(std::string_view word, int id, unsigned long long offset) {
    auto& children = m_frames.back().children;
    auto count = std::find_if(children.begin(), children.end(),
                              [&](const auto& child) { return child.first == word; });
    if (count == children.end()) {
        children.emplace_back(std::string(word), 0);
        count = children.end() - 1;
    }
    m_frames.push_back(Frame{std::string(word), id, count->second++, offset, {}});
}

std::string SectionPath::Component(const Frame& frame, std::size_t depth) {
    if (depth == 1 && frame.index == 0)
        return frame.word;
    return frame.word + "[" + std::to_string(frame.index) + "]";
}

std::string SectionPath::Place(std::string_view field) const {
    std::string place;
    for (std::size_t depth = 1; depth < m_frames.size(); ++depth) {
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
    return Depth() == 0 ? std::string() : Component(m_frames.back(), Depth());
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

/// A text file whose first word opens a section in angle brackets is of the angle
/// generation even when white space comes before it (the opener looks at the first byte only).
void SettleGeneration(MemoryStream& stream) {
    if (stream.IsBinary() || stream.GetVersion() >= kAngleVersion)
        return;
    const unsigned char* data = stream.GetData();
    unsigned long long at = 0;
    while (at < stream.GetLength() && IsWhite(data[at]))
        ++at;
    if (at < stream.GetLength() && data[at] == '<')
        stream.SetVersion(kAngleVersion);
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
