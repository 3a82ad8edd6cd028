// ProjectReader.h - the walk over a project file: every section and field in file order,
// each field's value read with its typed reader, and every problem found on the way with its
// byte offset and its place in the tree.
//
// A place is written as the path of its sections and the field's word:
// "LIBRARY/MODELFILE[2]/MESH[0]/Color". A section below the top level carries its position
// among the sections of the same word in its parent, counted from 0; a top-level section
// carries it from the second of its word on ("MODELFILE", "MODELFILE[1]").
//
// What the walk does with what it does not know:
//   - a section whose word (text) or id (binary) is not in the vocabulary is skipped to its
//     end with VarnStream::SkipHeader, as a host skips it, and told as a note;
//   - a field the tool does not know is skipped in the text form (its value ends with its
//     line), with a note; in the binary form the size of its value is unknown, so the walk
//     stops there with an error.
// Errors make a file bad; notes do not.
#pragma once

#include "Fields.h"
#include "fileio/FileIO.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fileio::tool {

enum class Severity : unsigned char { Note, Error };

struct Problem {
    /// Where it was found: the byte offset of the token in the file.
    unsigned long long offset;
    /// The place in the tree (empty for the file as a whole).
    std::string place;
    std::string message;
    Severity severity;
};

/// The sections open at a point of the walk.
class SectionPath {
public:
    SectionPath();
    /// The place of the innermost section, or of its field `field` when given.
    [[nodiscard]] std::string Place(std::string_view field = {}) const;
    /// The innermost section's own part of the place ("MESH[3]"); empty at the top level.
    [[nodiscard]] std::string Last() const;
    /// How many sections are open.
    [[nodiscard]] std::size_t Depth() const { return m_depth; }

    /// How many sections of a word a section holds so far.
    struct Child {
        int id;
        /// Told apart by the word only when the id is -1.
        std::string word;
        int count;
    };
    struct Frame {
        std::string word;
        /// The header id; -1 when the word has none.
        int id;
        /// Position among the sections of the same word in the parent.
        int index;
        unsigned long long offset;
        std::vector<Child> children;
    };
    void Push(std::string_view word, int id, unsigned long long offset);
    void Pop() { --m_depth; }
    /// The file itself (never written in a place), then the open sections, outermost first.
    [[nodiscard]] std::span<const Frame> Frames() const { return {m_frames.data(), m_depth + 1}; }

private:
    static std::string Component(const Frame& frame, std::size_t depth);
    /// The frames of the sections opened so far; those past m_depth are kept for reuse.
    std::vector<Frame> m_frames;
    std::size_t m_depth = 0;
};

struct SectionEvent {
    std::string_view word;
    /// The header id (a label id for a section named by a label word); -1 when unknown.
    int id;
    unsigned long long offset;
    /// For a skipped section, the offset just past its end.
    unsigned long long end;
};

struct FieldEvent {
    /// The label as read: its word and id.
    const Label& label;
    /// The field as the tool knows it; null for an unknown field.
    const FieldRule* rule;
    /// The label's offset, and the bytes of the value: after the "=" up to the end of the
    /// line (text), after the label's id word (binary).
    unsigned long long offset, valueBegin, valueEnd;
    /// The value read; null when it was not read (an unknown field, a bad value).
    const Value* value;
};

/// What a walk tells. The path holds the open sections: for Section and EndSection the
/// section itself is its innermost one. Problems are collected here.
class ProjectVisitor {
public:
    virtual ~ProjectVisitor() = default;
    virtual void Section(const SectionEvent&, const SectionPath&) {}
    virtual void EndSection(const SectionEvent&, const SectionPath&) {}
    /// A section that was skipped whole (unknown word or id); the path is its parent's.
    virtual void SkippedSection(const SectionEvent&, const SectionPath&) {}
    virtual void Field(const FieldEvent&, const SectionPath&) {}
    /// Collects the problem.
    virtual void Report(Problem problem);

    [[nodiscard]] const std::vector<Problem>& Problems() const { return m_problems; }
    [[nodiscard]] int Errors() const { return m_errors; }

private:
    std::vector<Problem> m_problems;
    int m_errors = 0;
};

/// Told how far a walk has come.
class WorkMeter {
public:
    virtual ~WorkMeter() = default;
    virtual void Advance(unsigned long long done, unsigned long long total) = 0;
};

/// What a walk counted.
struct WalkCounts {
    unsigned long long sections = 0;
    unsigned long long fields = 0;
    /// The walk reached the end of the data (it stops at a token it cannot read past).
    bool complete = true;
};

/// The most errors a walk reports; it stops after them.
inline constexpr int kMaxErrors = 100;
/// The most notes a walk reports; it goes on without telling the others.
inline constexpr int kMaxNotes = 100;

/// Reads `in` (opened for loading, at its start) to its end, telling `visitor` what it finds.
WalkCounts WalkProject(MemoryStream& in, ProjectVisitor& visitor, WorkMeter* meter = nullptr);

/// Reads the file at `path` into `stream` for a walk. False with the reason in `why` when
/// it cannot be read ("no such file", "is a folder", "cannot be read").
bool LoadProject(const ::String& path, MemoryStream& stream, std::string& why);
/// Takes a copy of the bytes of a file for a walk, as LoadProject does.
void OpenProject(const void* data, unsigned long long size, MemoryStream& stream);

/// "binary", or "text" (the form `stream` was opened in).
[[nodiscard]] const char* FormName(const VarnStream& stream);

} // namespace fileio::tool
