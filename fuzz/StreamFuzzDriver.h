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
#include "fileio/FileIO.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

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

/// What a run observed: after each step the position, the failed and end states and a
/// digest of everything read.
using Trace = std::vector<std::uint64_t>;

/// Mixes the bytes of a value into the digest.
template <class T> void Mix(std::uint64_t& digest, const T& value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    for (unsigned char b : bytes)
        digest = (digest ^ b) * 1099511628211ULL;
}

inline void MixText(std::uint64_t& digest, const char* text) {
    for (; *text != '\0'; ++text)
        Mix(digest, *text);
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
        std::uint64_t digest = 14695981039346656037ULL;
        auto readHeader = [&] {
            Header header;
            stream >> header;
            Mix(digest, header.id);
            MixText(digest, header.text);
            if ((op & 0x100) != 0)
                Mix(digest, stream.SkipHeader(header));
        };
        auto readField = [&](unsigned kind) {
            Label label;
            stream >> label;
            Mix(digest, label.id);
            MixText(digest, label.text);
            Mix(digest, ReadTypedValue(stream, kind == 0 ? static_cast<unsigned>(label.id) : kind));
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
            MixText(digest, token.Get() != nullptr ? token.Get() : "");
            Mix(digest, stream.DidPassEOL());
            break;
        }
        case 4:
            if ((op & 0x100) != 0)
                stream.ReadPastEOL();
            else
                stream.SkipWhite();
            break;
        case 5:
            Mix(digest, ReadTypedValue(stream, op >> 8));
            break;
        case 6:
            Mix(digest, stream.ReadLine(line));
            Mix(digest, line.GetLength());
            break;
        case 7: {
            char token[255];
            stream.ParseToken(token, static_cast<char>(op >> 8));
            MixText(digest, token);
            break;
        }
        case 8:
            Mix(digest, stream.SkipPast((op & 0x100) != 0 ? kActive : kModelFileEnd));
            break;
        default: {
            const String text = stream.ReadString(static_cast<char>(op >> 8));
            MixText(digest, text.Get() != nullptr ? text.Get() : "");
            break;
        }
        }
        Mix(digest, stream.IsFailed());
        Mix(digest, stream.GetPos());
        trace.push_back(digest);
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
    const float version = (selector & 4) != 0 ? 13.0f : 5.0f;
    MemoryStream memory;
    memory.Open(bytes.data(), bytes.size(), mode);
    ByteWiseStream byteWise;
    byteWise.OpenOn(bytes, mode);
    if (!binary && (selector & 2) == 0) {
        memory.SetVersion(version);
        byteWise.SetVersion(version);
    }
    if (Run(memory, selector, bytes.size()) != Run(byteWise, selector, bytes.size())) {
        std::fprintf(stderr, "the memory stream and the byte-wise transport differ\n");
        std::abort();
    }
}

} // namespace streamfuzz
