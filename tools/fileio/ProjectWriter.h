// ProjectWriter.h - writes a walked file in the text or the binary form: the copy behind
// dump and convert.
//
// Every section and field is written with the stream's own writers, one token to a line in
// the text form, so the text a file gives is canonical: the same file in either form gives
// the same bytes. What the walk did not read is carried over only where the forms allow: an
// unknown field or section, or a value that does not read as its kind, of a text file is
// copied as it stands into text; it cannot be written in the binary form (an unknown word
// has no id, its value no kind) and is left out with an error. A text value that the text form
// cannot carry (empty, or holding white space) is written all the same, with an error.
#pragma once

#include "ProjectReader.h"

namespace fileio::tool {

class ProjectWriter : public ProjectVisitor {
public:
    /// Writes what a walk of `in` tells into `out` (opened for storing, in its form).
    ProjectWriter(const MemoryStream& in, VarnStream& out) : m_in(in), m_out(out) {}

    void Section(const SectionEvent& section, const SectionPath& path) override;
    void EndSection(const SectionEvent& section, const SectionPath& path) override;
    void SkippedSection(const SectionEvent& section, const SectionPath& path) override;
    void Field(const FieldEvent& field, const SectionPath& path) override;

private:
    /// Copies bytes of the input as they stand, when both are text; else reports them left out.
    void CarryOver(unsigned long long begin, unsigned long long end, unsigned long long offset,
                   std::string place);

    const MemoryStream& m_in;
    VarnStream& m_out;
};

} // namespace fileio::tool
