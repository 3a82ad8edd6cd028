// StreamTestSupport.h - helpers for the stream tests: streams over literal bytes, the bytes
// a stream holds, and a transport that reads through the base class's byte-by-byte token
// readers.
#pragma once

#include "fileio/stream/MemoryStream.h"

#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

namespace streamtest {

/// The bytes a memory stream holds.
inline std::string Bytes(const MemoryStream& stream) {
    return std::string(reinterpret_cast<const char*>(stream.GetData()),
                       static_cast<std::size_t>(stream.GetLength()));
}

/// Bytes given as numbers: Raw({0x50, 0x01}).
inline std::string Raw(std::initializer_list<int> bytes) {
    std::string out;
    for (int b : bytes)
        out += static_cast<char>(b);
    return out;
}

/// The bytes as hex pairs, for messages: "50 01 00 80".
inline std::string Hex(std::string_view bytes) {
    std::string out;
    char pair[4];
    for (unsigned char b : bytes) {
        std::snprintf(pair, sizeof pair, out.empty() ? "%02X" : " %02X", b);
        out += pair;
    }
    return out;
}

/// Opens `stream` for loading on a copy of `bytes`.
inline void Load(MemoryStream& stream, std::string_view bytes, FileMode mode = FM_LOADING,
                 float version = 13.0f) {
    stream.Open(bytes.data(), bytes.size(), mode | FM_LOADING);
    stream.SetVersion(version);
}

/// A storing stream in the text form (version 13.0) or the binary form.
inline void Store(MemoryStream& stream, bool binary) {
    stream.Open(binary ? FM_BINARY : FM_STORING);
    stream.SetVersion(13.0f);
}

/// A memory stream whose token readers are the base class's byte-by-byte definitions, as a
/// transport without a faster way would use them; its peeks are the base class's too.
class ByteWiseStream : public MemoryStream {
public:
    bool ReadLine(MemoryStream& line) override { return VarnStream::ReadLine(line); }
    bool ReadLine(String& line) override { return VarnStream::ReadLine(line); }
    void ParseString(String& out) override { VarnStream::ParseString(out); }
    void ParseToken(char* out, char delimiter) override { VarnStream::ParseToken(out, delimiter); }
    void ParseToken(String& out) override { VarnStream::ParseToken(out); }
    bool IsHeader() override { return VarnStream::IsHeader(); }
    bool IsHeaderFromAnyVersion() override { return VarnStream::IsHeaderFromAnyVersion(); }
    bool IsLabel() override { return VarnStream::IsLabel(); }
    using VarnStream::ParseToken;

protected:
    const char* ParseScalarToken(char (&scratch)[256]) override {
        return VarnStream::ParseScalarToken(scratch);
    }
};

} // namespace streamtest
