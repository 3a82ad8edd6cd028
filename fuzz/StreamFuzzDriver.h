// StreamFuzzDriver.h - drives a stream reader over fuzzer input: tokens, peeks, skips and
// every typed value, in an order chosen by the input.
//
// Input layout: the first byte chooses the suite-file bit, the text generation and the seed of
// the operation order; the rest is the stream's data. The same operations run over the memory
// stream and over the byte-wise transport, whose window meets its edge at every byte, and the
// two must observe exactly the same. Every step either consumes a byte or the driver reads
// one, so an input of n bytes takes at most n steps and finishes quickly.
#pragma once

#include "../tests/support/ByteWiseStream.h"
#include "../tests/support/FieldValues.h"
#include "FuzzSupport.h"
#include "fileio/FileIO.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace streamfuzz {

/// The ids SkipPast looks for: the label "Active" and the end of "MODELFILE".
inline const unsigned kActive = static_cast<unsigned>(GetLabelIDFromText("Active"));
inline const unsigned kModelFileEnd =
    static_cast<unsigned>(GetHeaderIDFromText("MODELFILE") | fileio::kEndHeaderBit);

/// Reads one value of the kind `kind` chooses; returns its sum (FieldValues.h).
inline double ReadTypedValue(VarnStream& stream, unsigned kind) {
    return fileio::test::ReadValue(
        stream, static_cast<fileio::test::ValueKind>(kind % fileio::test::kValueKindCount));
}

/// What a run observed: after each step everything read, the failed state and the position,
/// as bytes.
using Trace = std::string;

/// Adds the bytes of a value to the trace.
template <class T> void Record(Trace& trace, const T& value) {
    trace.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// Adds a text (null reads as empty) and its end to the trace.
inline void RecordText(Trace& trace, const char* text) {
    trace.append(text != nullptr ? text : "").push_back('\0');
}

/// Runs the operations that `selector` seeds over a stream opened on the data.
inline Trace Run(VarnStream& stream, std::uint8_t selector, std::size_t size) {
    std::uint32_t state = 0x9E3779B9u ^ selector;
    auto next = [&state] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    Trace trace;
    MemoryStream line;
    for (std::size_t step = 0; step <= size && !stream.VirtualEof(); ++step) {
        const unsigned long long before = stream.GetPos();
        const std::uint32_t op = next();
        auto readHeader = [&] {
            Header header;
            stream >> header;
            Record(trace, header.id);
            RecordText(trace, header.text);
            if ((op & 0x100) != 0)
                Record(trace, stream.SkipHeader(header));
        };
        auto readField = [&](unsigned kind) {
            Label label;
            stream >> label;
            Record(trace, label.id);
            RecordText(trace, label.text);
            Record(trace,
                   ReadTypedValue(stream, kind == 0 ? static_cast<unsigned>(label.id) : kind));
        };
        switch (op % 10) {
        case 0:
            if (stream.IsHeader() || stream.IsHeaderFromAnyVersion())
                readHeader();
            else if (stream.IsLabel())
                readField(0);
            break;
        case 1:
            readField(op >> 8 | 1);
            break;
        case 2:
            readHeader();
            break;
        case 3: {
            String token;
            stream.ParseToken(token);
            RecordText(trace, token.Get());
            Record(trace, stream.DidPassEOL());
            break;
        }
        case 4:
            if ((op & 0x100) != 0)
                stream.ReadPastEOL();
            else
                stream.SkipWhite();
            break;
        case 5:
            Record(trace, ReadTypedValue(stream, op >> 8));
            break;
        case 6:
            Record(trace, stream.ReadLine(line));
            Record(trace, line.GetLength());
            break;
        case 7: {
            char token[255];
            stream.ParseToken(token, static_cast<char>(op >> 8));
            RecordText(trace, token);
            break;
        }
        case 8:
            Record(trace, stream.SkipPast((op & 0x100) != 0 ? kActive : kModelFileEnd));
            break;
        default: {
            const String text = stream.ReadString(static_cast<char>(op >> 8));
            RecordText(trace, text.Get());
            break;
        }
        }
        Record(trace, stream.IsFailed());
        Record(trace, stream.GetPos());
        if (stream.GetPos() == before && !stream.VirtualEof()) {
            char c;
            stream >> c; // make progress
        }
    }
    return trace;
}

/// Runs the same operations over the input on the memory stream and on the byte-wise
/// transport, and stops the process when the two read the same bytes differently.
inline void Drive(const std::uint8_t* data, std::size_t size, bool binary) {
    if (size == 0)
        return;
    const std::uint8_t selector = data[0];
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const FileMode mode = FM_LOADING | (binary ? FM_BINARY : FM_STORING) |
                          ((selector & 2) != 0 ? FM_VARN : FM_STORING);
    MemoryStream memory;
    memory.Open(bytes.data(), bytes.size(), mode);
    ByteWiseStream byteWise;
    byteWise.OpenOn(bytes, mode);
    if (!binary && (selector & 2) == 0) {
        const float version = (selector & 4) != 0 ? 13.0f : 5.0f;
        memory.SetVersion(version);
        byteWise.SetVersion(version);
    }
    // The memory stream and the byte-wise transport read the same bytes alike.
    fuzz::Require(Run(memory, selector, bytes.size()) == Run(byteWise, selector, bytes.size()));
}

} // namespace streamfuzz
