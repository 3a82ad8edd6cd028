// StreamProject.h - a sample project for the stream tests: nested sections holding a field of
// every common kind, written by the typed writers and read back by the typed readers.
#pragma once

#include "StreamTestSupport.h"
#include "support/FieldValues.h"

#include <bit>
#include <cstdint>
#include <map>

namespace streamtest {

using fileio::test::ValueKind;

/// The labels of the project's fields and the kind of value each carries.
inline const std::map<int, ValueKind>& ProjectFields() {
    static const std::map<int, ValueKind> fields = [] {
        const std::pair<const char*, ValueKind> words[] = {
            {"Name", ValueKind::Text},        {"Active", ValueKind::Bool},
            {"Position", ValueKind::Vector},  {"Rotate", ValueKind::Quaternion},
            {"Time", ValueKind::Time},        {"Matrix", ValueKind::Matrix},
            {"Scale", ValueKind::Float},      {"Value", ValueKind::Double},
            {"Type", ValueKind::Int},         {"Range", ValueKind::Range},
            {"Color", ValueKind::ColorBytes}, {"Notes", ValueKind::Date},
        };
        std::map<int, ValueKind> byId;
        for (const auto& [word, kind] : words)
            byId[GetLabelIDFromText(word)] = kind;
        return byId;
    }();
    return fields;
}

inline void WriteFields(VarnStream& out, int seed) {
    for (const auto& [id, kind] : ProjectFields()) {
        out << Label(id);
        fileio::test::WriteValue(out, kind, seed++);
        out << nl;
    }
}

/// A model holding fields, then `meshes` meshes that each hold fields and a nested mesh of
/// fields, then more fields: 2 + 2 x meshes groups of fields.
inline void WriteProject(VarnStream& out, int meshes) {
    const int model = GetHeaderIDFromText("MODELFILE"), mesh = GetHeaderIDFromText("MESH");
    out << Header(model) << nl;
    WriteFields(out, 1);
    for (int m = 0; m < meshes; ++m) {
        out << Header(mesh) << nl;
        WriteFields(out, 20 + m);
        out << Header(mesh) << nl;
        WriteFields(out, 40 + m);
        out << EndHeader(mesh) << nl << EndHeader(mesh) << nl;
    }
    WriteFields(out, 60);
    out << EndHeader(model) << nl;
}

/// The bytes of a project as the memory stream writes it, a suite file in either form.
inline std::string ProjectBytes(bool binary, int meshes) {
    MemoryStream memory;
    memory.Open(binary ? FM_VARN | FM_BINARY : FM_VARN);
    WriteProject(memory, meshes);
    return Bytes(memory);
}

struct Outcome {
    bool finished = false; // the loop ended within its step limit
    bool failed = false;
    bool atEnd = false;
    int labels = 0;        // fields read with their value
    std::uint64_t sum = 0; // the bits of the sum of every id and value read
    unsigned long long position = 0;
    bool operator==(const Outcome&) const = default;
};

/// Reads a stream with the typed readers, driven by the project's fields, until the failed
/// bit or the end. Every step consumes at least one byte, so a stream of `length` bytes takes
/// at most length + 2 steps.
inline Outcome ReadProject(VarnStream& stream, unsigned long long length) {
    Outcome outcome;
    double sum = 0;
    for (unsigned long long step = 0; step <= length + 2; ++step) {
        if (stream.HasFailed() || stream.VirtualEof()) {
            outcome.finished = true;
            break;
        }
        if (stream.IsBinary() ? stream.IsHeader() : stream.IsHeaderFromAnyVersion()) {
            Header header;
            stream >> header;
            sum += header.id;
            continue;
        }
        Label label;
        stream >> label;
        const auto kind = ProjectFields().find(label.id);
        if (kind != ProjectFields().end()) {
            sum += fileio::test::ReadValue(stream, kind->second);
            ++outcome.labels;
        }
    }
    outcome.failed = stream.IsFailed();
    outcome.atEnd = stream.VirtualEof();
    outcome.sum = std::bit_cast<std::uint64_t>(sum);
    outcome.position = stream.GetPos();
    return outcome;
}

} // namespace streamtest
