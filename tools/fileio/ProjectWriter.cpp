// ProjectWriter.cpp - the canonical copy of a walked file.

#include "ProjectWriter.h"

namespace fileio::tool {

void ProjectWriter::Section(const SectionEvent& section, const SectionPath&) {
    const std::string word(section.word);
    m_out << Header(section.id, word.c_str()) << nl;
}

void ProjectWriter::EndSection(const SectionEvent& section, const SectionPath&) {
    const std::string word(section.word);
    m_out << EndHeader(section.id, word.c_str()) << nl;
}

void ProjectWriter::SkippedSection(const SectionEvent& section, const SectionPath& path) {
    CarryOver(section.offset, section.end, section.offset, path.Place(section.word));
}

void ProjectWriter::Field(const FieldEvent& field, const SectionPath& path) {
    if (field.value == nullptr) {
        CarryOver(field.offset, field.valueEnd, field.offset, path.Place(field.label.text));
        return;
    }
    if (m_out.IsAscii()) {
        if (std::string problem = CheckTextFormCarries(*field.value); !problem.empty())
            Report(
                {field.offset, path.Place(field.label.text), std::move(problem), Severity::Error});
    }
    m_out << field.label;
    WriteValue(m_out, *field.value);
    m_out << nl;
}

void ProjectWriter::CarryOver(unsigned long long begin, unsigned long long end,
                              unsigned long long offset, std::string place) {
    if (m_in.IsBinary() || m_out.IsBinary()) {
        Report({offset, std::move(place), "left out: the binary form cannot carry it",
                Severity::Error});
        return;
    }
    const unsigned char* data = m_in.GetData();
    while (end > begin && (data[end - 1] == '\n' || data[end - 1] == '\r'))
        --end;
    m_out.Write(data + begin, end - begin);
    m_out << nl;
}

} // namespace fileio::tool
