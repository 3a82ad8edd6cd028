// StreamFuzzDriver.h - drives a stream reader over fuzzer input: tokens, peeks, skips and
// every typed value, in an order chosen by the input.
//
// Input layout: the first byte chooses the transport (the memory stream, or the byte-wise
// stream that runs the base class's readers), the text generation and the seed of the operation
// order; the rest is the stream's data. Every step either consumes a byte or the driver reads one,
// so an input of n bytes takes at most n steps and finishes quickly.
#pragma once

#include "../tests/support/ByteWiseStream.h"
#include "fileio/FileIO.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace streamfuzz {

/// Reads one value of the kind `kind` chooses.
inline void ReadTypedValue(VarnStream& stream, unsigned kind) {
    switch (kind % 24) {
    case 0: {
        char v;
        stream >> v;
        break;
    }
    case 1: {
        unsigned char v;
        stream >> v;
        break;
    }
    case 2: {
        short v;
        stream >> v;
        break;
    }
    case 3: {
        int v;
        stream >> v;
        break;
    }
    case 4: {
        long v;
        stream >> v;
        break;
    }
    case 5: {
        unsigned long v;
        stream >> v;
        break;
    }
    case 6: {
        long long v;
        stream >> v;
        break;
    }
    case 7: {
        unsigned long long v;
        stream >> v;
        break;
    }
    case 8: {
        float v;
        stream >> v;
        break;
    }
    case 9: {
        double v;
        stream >> v;
        break;
    }
    case 10: {
        bool v;
        stream >> v;
        break;
    }
    case 11: {
        String v;
        stream >> v;
        break;
    }
    case 12: {
        Vector v;
        stream >> v;
        break;
    }
    case 13: {
        Matrix44 v;
        stream >> v;
        break;
    }
    case 14: {
        Time v;
        stream >> v;
        break;
    }
    case 15: {
        TimeRange v;
        stream >> v;
        break;
    }
    case 16: {
        COleDateTime v;
        stream >> v;
        break;
    }
    case 17: {
        CTime v;
        stream >> v;
        break;
    }
    case 18: {
        ColorBuf v;
        stream >> v;
        break;
    }
    case 19: {
        PatchID v;
        stream >> v;
        break;
    }
    case 20: {
        // A block with room for the largest colour table.
        std::vector<std::uint32_t> block((40 + 256 * 4) / 4, 0);
        stream >> *reinterpret_cast<tagBITMAPINFO*>(block.data());
        break;
    }
    case 21: {
        HICON v = nullptr;
        stream >> v;
        break;
    }
    case 22: {
        unsigned int schema;
        stream.LoadRuntimeClass(&schema);
        break;
    }
    default: {
        String v;
        stream.ParseString(v);
        break;
    }
    }
}

/// Runs the reader over the input in the given form.
inline void Drive(const std::uint8_t* data, std::size_t size, bool binary) {
    if (size == 0)
        return;
    const std::uint8_t selector = data[0];
    ++data;
    --size;
    ByteWiseStream byteWise;
    MemoryStream memory;
    VarnStream& stream = (selector & 1) != 0 ? static_cast<VarnStream&>(byteWise) : memory;
    const FileMode mode = FM_LOADING | (binary ? FM_BINARY : FM_STORING) |
                          ((selector & 2) != 0 ? FM_VARN : FM_STORING);
    if ((selector & 1) != 0)
        byteWise.OpenOn(std::string_view(reinterpret_cast<const char*>(data), size), mode);
    else
        memory.Open(data, size, mode);
    if (!binary && (selector & 2) == 0)
        stream.SetVersion((selector & 4) != 0 ? 13.0f : 5.0f);

    std::uint32_t state = 0x9E3779B9u ^ selector;
    auto next = [&state] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    MemoryStream line;
    for (std::size_t step = 0; step <= size && !stream.VirtualEof(); ++step) {
        const unsigned long long before = stream.GetPos();
        const std::uint32_t op = next();
        switch (op % 10) {
        case 0: {
            if (stream.IsHeader() || stream.IsHeaderFromAnyVersion()) {
                Header header;
                stream >> header;
                if ((op & 0x100) != 0)
                    stream.SkipHeader(header);
            } else if (stream.IsLabel()) {
                Label label;
                stream >> label;
                ReadTypedValue(stream, static_cast<unsigned>(label.id));
            }
            break;
        }
        case 1: {
            Label label;
            stream >> label;
            ReadTypedValue(stream, op >> 8);
            break;
        }
        case 2: {
            Header header;
            stream >> header;
            if ((op & 0x100) != 0)
                stream.SkipHeader(header);
            break;
        }
        case 3: {
            String token;
            stream.ParseToken(token);
            break;
        }
        case 4:
            if ((op & 0x100) != 0)
                stream.ReadPastEOL();
            else
                stream.SkipWhite();
            break;
        case 5:
            ReadTypedValue(stream, op >> 8);
            break;
        case 6:
            stream.ReadLine(line);
            break;
        case 7: {
            char token[255];
            stream.ParseToken(token, static_cast<char>(op >> 8));
            break;
        }
        case 8:
            stream.SkipPast((op & 0x100) != 0 ? 4046u : 336u | 0x20000000u);
            break;
        default:
            stream.ReadString(static_cast<char>(op >> 8));
            break;
        }
        stream.IsFailed();
        if (stream.GetPos() == before && !stream.VirtualEof()) {
            char c;
            stream >> c; // make progress
        }
    }
}

} // namespace streamfuzz
